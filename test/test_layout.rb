require_relative "test_helper"
require "json"

# A freshly built panel as a user first meets it: window, texts, what is on
# and enabled, and what OK reports untouched. Where things are drawn is the
# business of test_layout_in_every_language.rb.
class LayoutTest < Minitest::Test
  include PanelTest

  FRESH = <<~RUBY
    d = OptionsPanelDriver
    w = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
    log = []
    obs = Object.new
    %w[preset_changed output_changed environment_changed options_changed close].each do |e|
      obs.define_singleton_method(e) { |pl| log << [e, pl] }
    end
    w.observe(obs)
    w.show
    state = { window: d.window_state, content: d.content_views, image: d.tab_views(0),
              environment: d.tab_views(1), tabs: d.tabs, caching: d.control(:caching),
              modal: d.modal_panel_level }
    d.click(:ok)
    state[:ok] = log
    puts JSON.dump(state)
  RUBY

  def fresh
    @@fresh ||= begin
      out, err, status = run_ruby("require 'json'\n" + FRESH)
      assert status.success?, err
      assert_empty err, "a panel in normal use prints nothing"
      JSON.parse(out.lines.last, symbolize_names: true)
    end
  end

  def test_window_header_and_tabs
    w = fresh[:window]
    assert_equal [true, TEXTS["opt-window-title"], 3, true, true, fresh[:modal]],
                 w.values_at(:panel, :title, :style, :visible, :key, :level), "a titled, closable panel in front"
    heading, _tabs, presets, ok, close = fresh[:content]
    assert_equal [TEXTS["opt-preset-lbl"], true, false], [heading[:text], heading[:bold], presets[:bold]]
    assert_equal [[], -1, false], presets.values_at(:items, :selected, :editable), "an empty, fixed list"
    assert_equal %w[OK Close], [ok[:text], close[:text]]
    assert(fresh[:content].all? { |v| v[:enabled] != false })
    assert_equal [["tab1", "Image", true], ["tab2", "Environment", false]],
                 fresh[:tabs].map { |t| t.values_at(:identifier, :label, :selected) }
  end

  def test_image_tab_starts_in_viewport_mode_with_png_and_the_model_location
    views = fresh[:image]
    assert_equal [[1, 0, 0], [1, 0, 0], [1, 0]], views.select { |v| v[:cells] }.map { |g| g[:cells].map { |c| c[:state] } }
    combo = views.find { |v| v[:class] == "NSComboBox" }
    assert_equal ["Custom", 0, false, false], combo.values_at(:text, :selected, :editable, :enabled)
    assert_equal ["Custom", "230 x 150", "640 x 480", "1024 x 768", "2048 x 1536", "3076 x 2034",
                  "4076 x 3304", "852 x 480", "1600 x 900", "1920 x 1080"], combo[:items]
    fields = views.select { |v| v[:class] == "NSTextField" && v[:text] == "" }
    assert_equal [false] * 3, fields.map { |f| f[:enabled] }, "width, height and folder start disabled"
    assert_equal false, views.find { |v| v[:text] == "..." }[:enabled]
    transparency = views.find { |v| v[:text] == TEXTS["opt-tab1-trans-cbox"] }
    assert_equal [0, true], transparency.values_at(:state, :enabled)
  end

  def test_environment_tab_starts_cleared_with_sliders_at_the_middle
    views = fresh[:environment]
    boxes = %w[sol caus clay ib tc am].map { |k| views.find { |v| v[:text] == TEXTS["opt-tab2-options-#{k}-lbl"] } }
    assert(boxes.all? { |b| b[:state] == 0 && b[:enabled] })
    assert_equal [1, 0, 0], views.find { |v| v[:cells] }[:cells].map { |c| c[:state] }
    assert_equal [[50, 0.0, 100.0]] * 2, views.select { |v| v[:class] == "NSSlider" }.map { |s| s.values_at(:value, :min, :max) }
    assert_equal [TEXTS["opt-tab2-options-gc-lbl"], false, 0], fresh[:caching].values_at(:text, :in_window, :state),
                 "the caching box exists but is never shown"
  end

  def test_ok_from_the_starting_state
    assert_equal [["preset_changed", [""]],
                  ["output_changed", ["viewport", "", "", "png", "model", "", ""]],
                  ["environment_changed", ["default", 0, 0, 0, 50, 50]],
                  ["options_changed", [0, 0, 0, 0]],
                  ["close", [1.0]]], fresh[:ok]
  end
end
