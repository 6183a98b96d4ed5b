require_relative "test_helper"
require_relative "x_session"

# A person at the screen: the reference host runs a plugin on an X server of
# the test's own, and xdotool moves the pointer, presses, types and drags as a
# person would. The plugin tells where each control is from the panel itself.
class RealInputTest < Minitest::Test
  include XSession

  # The folder field is enabled too: Tab must still go from Width to Height.
  # French texts: a wider window, with controls moved from where English has them.
  PLUGIN = in_french(PLUGIN_PRELUDE + "print_points(driver)\n").freeze

  def test_a_person_sets_size_options_and_brightness_and_presses_ok
    points = start_host
    assert_operator lit(points["viewport"]), :>, 2 * lit(points["fixed"]), "the chosen size mode's circle is filled"
    click(points["fixed"])
    click(points["width"])
    xdotool("type", "--delay", "40", "1280")
    xdotool("key", "Tab")
    xdotool("type", "--delay", "40", "720")
    # A click on the chosen mode leaves it chosen and the typed size as it is.
    click(points["fixed"])
    click(points["environment"], hold: 0.3)
    click(points["clay"])
    x, y, track = points["intensity"]
    # From the knob a little way, then past the track's right end.
    xdotool("mousemove", x, y, "mousedown", 1, "mousemove", x + 10, y,
            "mousemove", (x + track / 2 + 40).round, y, "mouseup", 1)
    click(points["ok"])

    events = events_until_close
    assert_equal %w[fixed 1280 720 png custom /renders], events.assoc("output_changed").last.first(6)
    assert_equal ["default", 1, 0, 0, 100, 50], events.assoc("environment_changed").last,
                 "Clay ticked and Intensity dragged to its end; Exposure untouched"
  end

  def test_the_close_box_closes_without_a_report
    click(start_host["close_box"])
    assert_equal [["close", [1.0]]], events_until_close
  end

  private

  # How many pixels of a radio cell's circle, at its left end, are white: a
  # chosen cell's circle is filled.
  def lit((x, y, width))
    pixels([x - width / 2 + 9, y, 14, 14]).bytes.each_slice(3).count { |rgb| rgb.sum > 700 }
  end
end
