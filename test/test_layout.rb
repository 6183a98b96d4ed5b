require_relative "test_helper"
require "json"

# The panel as a freshly built one looks: window, frames, texts and starting state.
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
    require "json"
    puts JSON.dump(state)
  RUBY

  def fresh
    @@fresh ||= begin
      out, err, status = run_ruby(FRESH)
      assert status.success?, err
      assert_empty err, "a panel in normal use prints nothing"
      JSON.parse(out.lines.last, symbolize_names: true)
    end
  end

  def by_text(views, text)
    views.find { |v| v[:text] == text } || flunk("no view shows #{text}")
  end

  def origin(view)
    view[:frame].first(2)
  end

  def size(view)
    view[:frame].last(2)
  end

  def test_window
    w = fresh[:window]
    assert w[:panel]
    assert_equal TEXTS["opt-window-title"], w[:title]
    assert_equal 3, w[:style], "titled and closable, nothing else"
    assert_equal [300.0, 400.0], w[:frame].first(2)
    assert_equal [420.0, 315.0], w[:content].last(2)
    assert w[:visible] && w[:key]
    assert_equal fresh[:modal], w[:level]
  end

  def test_header_row_and_buttons
    heading, tab_view, presets, ok, close = fresh[:content]
    assert_equal %w[NSTextField NSTabView NSComboBox NSButton NSButton], fresh[:content].map { |v| v[:class] }
    assert_equal [TEXTS["opt-preset-lbl"], [15.0, 287.0]], [heading[:text], origin(heading)]
    assert_equal [true, false], [heading[:bold], presets[:bold]], "the heading is bold"
    assert_equal [10.0, 38.0, 400.0, 240.0], tab_view[:frame]
    assert_equal [[110.0, 280.0, 290.0, 26.0], [], -1, false, true],
                 presets.values_at(:frame, :items, :selected, :editable, :enabled)
    assert_equal [[290.0, 0.0], "OK"], [origin(ok), ok[:text]]
    assert_equal [[350.0, 0.0], "Close"], [origin(close), close[:text]]
    assert(fresh[:content].all? { |v| v[:enabled] != false })
  end

  def test_tabs
    assert_equal [%w[tab1 Image], %w[tab2 Environment]],
                 fresh[:tabs].map { |t| [t[:identifier], t[:label]] }
    assert_equal [true, false], fresh[:tabs].map { |t| t[:selected] }
  end

  def test_image_tab
    views = fresh[:image]
    size_group, format_group, save_group = views.select { |v| v[:cells] }
    # The tab view fits the tab into its content area; radio groups keep their distance from the top.
    grown = fresh[:tabs].first[:frame][3] - 218.0
    assert_equal [10.0, 130.0 + grown, 180.0, 68.0], size_group[:frame]
    assert_equal [1, 0, 0], size_group[:cells].map { |c| c[:state] }
    assert_equal [210.0, 175.0 + grown], origin(format_group)
    assert_equal [1, 0, 0], format_group[:cells].map { |c| c[:state] }
    assert_equal [210.0, 80.0 + grown, 156.0, 18.0], save_group[:frame]
    assert_equal [1, 0], save_group[:cells].map { |c| c[:state] }
    assert(views.flat_map { |v| v[:cells] || [] }.all? { |c| c[:enabled] })

    combo = views.find { |v| v[:class] == "NSComboBox" }
    assert_equal [[65.0, 75.0, 115.0, 26.0], "Custom", 0, false, false],
                 combo.values_at(:frame, :text, :selected, :editable, :enabled)
    assert_equal ["Custom", "230 x 150", "640 x 480", "1024 x 768", "2048 x 1536", "3076 x 2034",
                  "4076 x 3304", "852 x 480", "1600 x 900", "1920 x 1080"], combo[:items]

    width, height, folder = views.select { |v| v[:class] == "NSTextField" && v[:text] == "" }
    assert_equal [[105.0, 47.0, 70.0, 22.0], false], width.values_at(:frame, :enabled)
    assert_equal [[105.0, 17.0, 70.0, 22.0], false], height.values_at(:frame, :enabled)
    assert_equal [[210.0, 20.0, 130.0, 22.0], false], folder.values_at(:frame, :enabled)
    assert_equal [[340.0, 10.0, 40.0, 40.0], false], by_text(views, "...").values_at(:frame, :enabled)
    transparency = by_text(views, TEXTS["opt-tab1-trans-cbox"])
    assert_equal [[210.0, 120.0], 0, true], [origin(transparency), transparency[:state], transparency[:enabled]]
    assert_equal [10.0, 180.0], origin(by_text(views, TEXTS["opt-tab1-image-size-lbl"]))
    assert_equal [205.0, 90.0], origin(by_text(views, TEXTS["opt-tab1-iml-lbl"]))
    assert_equal [190.0, 10.0, 10.0, 180.0], views.first[:frame]
  end

  def test_environment_tab
    views = fresh[:environment]
    boxes = %w[sol caus clay ib tc am].map { |k| by_text(views, TEXTS["opt-tab2-options-#{k}-lbl"]) }
    assert_equal [150.0, 125.0, 100.0, 75.0, 50.0, 25.0], boxes.map { |b| b[:frame][1] }
    assert(boxes.all? { |b| b[:frame][0] == 210.0 && b[:state] == 0 && b[:enabled] })

    background = views.find { |v| v[:cells] }
    assert_equal [15.0, 130.0, 180.0, 64.0], background[:frame]
    assert_equal [1, 0, 0], background[:cells].map { |c| c[:state] }

    sliders = views.select { |v| v[:class] == "NSSlider" }
    assert_equal [[80.0, 40.0, 100.0, 50.0], [80.0, 15.0, 100.0, 50.0]], sliders.map { |s| s[:frame] }
    assert(sliders.all? { |s| s.values_at(:value, :min, :max) == [50, 0.0, 100.0] })
    assert_equal [95.0, 0.0, 95.0, 30.0], by_text(views, TEXTS["opt-tab2-reset-btn"])[:frame]

    caching = fresh[:caching]
    assert_equal [TEXTS["opt-tab2-options-gc-lbl"], [210.0, 0.0], false, 0],
                 [caching[:text], origin(caching), caching[:in_window], caching[:state]]
    refute(views.any? { |v| v[:text] == TEXTS["opt-tab2-options-gc-lbl"] })
  end

  def test_ok_from_the_starting_state
    assert_equal [["preset_changed", [""]],
                  ["output_changed", ["viewport", "", "", "png", "model", "", ""]],
                  ["environment_changed", ["default", 0, 0, 0, 50, 50]],
                  ["options_changed", [0, 0, 0, 0]],
                  ["close", [1.0]]], fresh[:ok]
  end
end
