require_relative "test_helper"
require_relative "x_session"

# A person at the screen: the reference host runs a plugin on an X server of
# the test's own, and xdotool moves the pointer, presses, types and drags as a
# person would. The plugin tells where each control is from the panel itself.
class RealInputTest < Minitest::Test
  include XSession

  PLUGIN = (PLUGIN_PRELUDE + <<~RUBY).freeze
    # The folder field is enabled too: Tab must still go from Width to Height.
    panel.set_output_directory("custom", "/renders")
    panel.show
    # Each tab's controls are on the window only while it shows.
    driver.choose_tab(1)
    points = { "clay" => driver.screen_point(:clay, nil),
               "intensity" => driver.screen_point(:intensity, nil),
               "track" => driver.control(:intensity)[:drawn_in_window] }
    driver.choose_tab(0)
    points.update("fixed" => driver.screen_point(:size_mode, 1),
                  "width" => driver.screen_point(:width, nil),
                  "environment" => driver.screen_point(:tabs, 1),
                  "ok" => driver.screen_point(:ok, nil),
                  "close_box" => driver.screen_point(:close_box, nil))
    print_points(driver, points)
  RUBY

  def test_a_person_sets_size_options_and_brightness_and_presses_ok
    points = start_host
    click(points["fixed"])
    click(points["width"])
    xdotool("type", "--delay", "40", "1280")
    xdotool("key", "Tab")
    xdotool("type", "--delay", "40", "720")
    click(points["environment"], hold: 0.3)
    click(points["clay"])
    x, y = points["intensity"]
    # From the knob a little way, then past the track's right end.
    xdotool("mousemove", x, y, "mousedown", 1, "mousemove", x + 10, y,
            "mousemove", (x + points["track"][2] / 2 + 40).round, y, "mouseup", 1)
    click(points["ok"])

    events = events_until_close
    assert_equal %w[preset_changed output_changed environment_changed options_changed close], events.map(&:first)
    assert_equal %w[fixed 1280 720 png custom /renders], events.assoc("output_changed").last.first(6)
    assert_equal ["default", 1, 0, 0, 100, 50], events.assoc("environment_changed").last,
                 "Clay ticked and Intensity dragged to its end; Exposure untouched"
  end

  def test_the_close_box_closes_without_a_report
    click(start_host["close_box"])
    assert_equal [["close", [1.0]]], events_until_close
  end
end
