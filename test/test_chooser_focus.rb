require_relative "test_helper"
require_relative "x_session"

# On a bare X server, with no window manager to hand the focus on, the panel
# must take the keys back itself when the folder chooser closes.
class ChooserFocusTest < Minitest::Test
  include XSession

  PLUGIN = (PLUGIN_PRELUDE + <<~RUBY).freeze
    panel.set_output_directory("custom", "/renders")
    panel.show
    print_points(driver, "folder_button" => driver.screen_point(:choose_folder, nil))
  RUBY

  def setup
    start_session("chooser-focus", PLUGIN)
  end

  def teardown
    end_session
  end

  def test_the_panel_has_the_keys_once_the_chooser_is_cancelled
    points = host_points(@plugin)
    xdotool("search", "--sync", "--onlyvisible", "--name", TEXTS["opt-window-title"])
    click(points["folder_button"])
    wait_for_focus { |name| name && !name.empty? && name != TEXTS["opt-window-title"] }
    xdotool("key", "Escape") # the chooser's Cancel
    wait_for_focus { |name| name == TEXTS["opt-window-title"] }
    xdotool("key", "Escape") # now the panel's, as Close
    assert_equal [["close", [1.0]]], events_until_close
  end

  private


  def wait_for_focus
    deadline = Time.now + LIMIT
    name = nil
    until yield(name)
      flunk("the focus stayed on #{name.inspect}") if Time.now > deadline
      sleep 0.05
      name = IO.popen(environment, %w[xdotool getwindowfocus getwindowname], err: File::NULL, &:read).chomp
    end
  end
end
