require_relative "test_helper"
require "json"

# A freshly built panel as a user first meets it: window, what is on and
# enabled, and what OK reports untouched. Its texts are the business of
# test_text_table.rb, where things are drawn that of test_layout_in_every_language.rb.
class LayoutTest < Minitest::Test
  include PanelTest

  def test_a_fresh_panel_and_what_ok_reports_from_it
    out, err, status = run_ruby(<<~RUBY)
      require "json"
      d = OptionsPanelDriver
      w = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      log = []
      events = #{PanelTest::OK_EVENTS.inspect}
      w.observe(Class.new { events.each { |e| define_method(e) { |payload| log << [e, payload] } } }.new)
      w.show
      state = { window: d.window_state, content: d.content_views, image: d.tab_views(0),
                environment: d.tab_views(1), tabs: d.tabs, caching: d.control(:caching), modal: d.modal_panel_level }
      d.click(:ok)
      puts JSON.dump(state.merge(ok: log))
    RUBY
    assert_equal [true, ""], [status.success?, err], "a panel in normal use prints nothing"
    fresh = JSON.parse(out.lines.last, symbolize_names: true)

    assert_equal [true, 3, true, true, fresh[:modal]],
                 fresh[:window].values_at(:panel, :style, :visible, :key, :level), "a titled, closable panel in front"
    heading, _tabs, presets, = fresh[:content]
    assert_equal [true, false], [heading[:bold], presets[:bold]]
    assert_equal [[], -1, false], presets.values_at(:items, :selected, :editable), "an empty, fixed list"
    assert(fresh[:content].all? { |v| v[:enabled] != false }, "the header's controls are enabled")
    assert_equal [["tab1", true], ["tab2", false]], fresh[:tabs].map { |t| t.values_at(:identifier, :selected) }

    # The image tab starts in viewport mode with PNG and the model's location.
    image = fresh[:image]
    radios = image.select { |v| v[:cells] }.map { |g| g[:cells].map { |c| c[:state] } }
    assert_equal [[1, 0, 0], [1, 0, 0], [1, 0]], radios, "size, format and save location"
    combo = image.find { |v| v[:class] == "NSComboBox" }
    assert_equal ["Custom", 0, false, false], combo.values_at(:text, :selected, :editable, :enabled)
    assert_equal ["Custom", "230 x 150", "640 x 480", "1024 x 768", "2048 x 1536", "3076 x 2034",
                  "4076 x 3304", "852 x 480", "1600 x 900", "1920 x 1080"], combo[:items]
    fields = image.select { |v| (v[:class] == "NSTextField" && v[:text] == "") || v[:text] == "..." }
    assert_equal [false] * 4, fields.map { |f| f[:enabled] }, "width, height, folder and its button start disabled"
    assert_equal [0, true], image.find { |v| v[:text] == TEXTS["opt-tab1-trans-cbox"] }.values_at(:state, :enabled)

    # The environment tab starts cleared, with the sliders at the middle.
    views = fresh[:environment]
    boxes = %w[sol caus clay ib tc am].map { |k| views.find { |v| v[:text] == TEXTS["opt-tab2-options-#{k}-lbl"] } }
    assert(boxes.all? { |b| b[:state] == 0 && b[:enabled] }, "the options start off and enabled")
    assert_equal [1, 0, 0], views.find { |v| v[:cells] }[:cells].map { |c| c[:state] }
    sliders = views.select { |v| v[:class] == "NSSlider" }
    assert_equal [[50, 0.0, 100.0]] * 2, sliders.map { |s| s.values_at(:value, :min, :max) }, "intensity and exposure"
    assert_equal [false, 0], fresh[:caching].values_at(:in_window, :state), "the caching box is never shown"

    assert_equal [["preset_changed", [""]], ["output_changed", ["viewport", "", "", "png", "model", "", ""]],
                  ["environment_changed", ["default", 0, 0, 0, 50, 50]], ["options_changed", [0, 0, 0, 0]],
                  ["close", [1.0]]], fresh[:ok], "OK on the untouched panel"
  end
end
