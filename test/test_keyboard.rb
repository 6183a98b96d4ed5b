require_relative "test_helper"
require_relative "x_session"

# A person with only the keyboard, from the panel's first appearance; the size
# list opened and closed without a pick; the folder chooser giving the keys back.
class KeyboardTest < Minitest::Test
  include XSession

  # The plugin watches the panel while the person works: it prints which
  # control has the focus and the Clay box's state, first and on each change.
  # French texts: a wider window, with controls moved from where English has them.
  PLUGIN = in_french(PLUGIN_PRELUDE + <<~RUBY).freeze
    panel.set_output_dimensions("fixed", 1280, 720, 640, 480)
    print_points(driver)
    seen = []
    # The test's cue for a change the script makes while the person types.
    cue = File.join(__dir__, "viewport")
    while driver.window_state[:visible]
      driver.process_events
      panel.set_output_dimensions("viewport", 0, 0, 0, 0) if File.exist?(cue) && File.delete(cue)
      now = [["focus", driver.focused], ["clay", driver.control(:clay)[:state]]]
      (now - seen).each { |line| puts JSON.dump(line) }
      seen = now
      sleep 0.01
    end
    puts JSON.dump(["coders", File.read("/proc/self/maps").scan(%r{/coders/}).size])
  RUBY

  IMAGE_TAB_ROUND = %w[size width height format transparent_background save_location folder choose_folder
                       ok close preset size_mode].freeze
  ENVIRONMENT_TAB_ROUND = %w[intensity exposure Reset spherical_point_lights caustics clay information_bar
                             translucent_color automatic_materials ok close preset background].freeze

  def setup
    super
    @points = start_host
    assert_equal [%w[focus size_mode], ["clay", 0]], Array.new(2) { next_line },
                 "the panel opens with the focus on its first control and Clay clear"
  end

  def test_tab_round_both_tabs_space_on_a_box_and_ok
    refute dotted_frame?(@points["size"]), "no focus frame round the size list before it has the focus"
    assert_equal "size", focus_after("Tab")
    wait_for("the size list's focus frame") { dotted_frame?(@points["size"]) }
    assert_equal IMAGE_TAB_ROUND.drop(1), IMAGE_TAB_ROUND.drop(1).map { focus_after("Tab") }
    wait_for("the size list's focus frame to go") { !dotted_frame?(@points["size"]) }
    assert_equal "preset", focus_after("shift+Tab")
    assert_equal "background", focus_after("ctrl+Tab"), "the focus follows into the Environment tab"
    # The slider's ring lies just outside what it draws, two pixels above it.
    ring = ->(x, y, width, height) { dotted_frame?([x, y, width, height + 6]) }
    refute ring.(*@points["intensity"]), "no focus ring round the slider before it has the focus"
    assert_equal ENVIRONMENT_TAB_ROUND.first, focus_after("Tab")
    wait_for("the slider's focus ring") { ring.(*@points["intensity"]) }
    assert_equal ENVIRONMENT_TAB_ROUND.drop(1), ENVIRONMENT_TAB_ROUND.drop(1).map { focus_after("Tab") }
    wait_for("the slider's focus ring to go") { !ring.(*@points["intensity"]) }
    assert_equal "clay", Array.new(6) { focus_after("Tab") }.last

    box = -> { pixels(@points["clay"]) }
    unticked = box.call
    xdotool("key", "space")
    assert_equal ["clay", 1], next_line
    wait_for("the tick to be drawn") { box.call != unticked }
    xdotool("key", "space")
    assert_equal ["clay", 0], next_line
    wait_for("the box to look as before it was ticked") { box.call == unticked }

    assert_equal "size_mode", focus_after("ctrl+shift+Tab")
    # An arrow chooses in a radio group: Panorama, whose lock halves the width.
    xdotool("key", "Down")
    assert_equal %w[preset close ok], Array.new(3) { focus_after("shift+Tab") }
    xdotool("key", "space")
    assert_equal %w[panorama 1280 640], output_at_close, "Space presses OK"
    line = next_line until line&.first == "coders"
    assert_equal 0, line.last, "focused and pressed controls drew without ImageMagick's coders"
  end

  # On a bare X server no window manager hands the focus on: the panel must take
  # the keys back itself when the folder chooser closes.
  def test_the_panel_has_the_keys_after_the_chooser_and_escape_in_a_field_closes_as_close
    focused = -> { output_of("xdotool", "getwindowfocus", "getwindowname", check: false).to_s.chomp }
    click(@points["choose_folder"])
    wait_for("the chooser to take the keys") { !["", TITLE].include?(focused.call) }
    xdotool("key", "Escape") # the chooser's Cancel
    wait_for("the panel to take the keys back") { focused.call == TITLE }
    assert_equal %w[size width], Array.new(2) { focus_after("Tab") }, "the panel's controls have the keys"
    xdotool("type", "--delay", "40", "2048")
    xdotool("key", "Escape")
    assert_equal [["close", [1.0]]], events_until_close
  end

  def test_the_size_list_closed_without_a_pick_keeps_typed_values
    assert_equal %w[size width], Array.new(2) { focus_after("Tab") }
    xdotool("type", "--delay", "40", "2048")
    assert_equal "height", focus_after("Tab")
    xdotool("type", "--delay", "40", "567")
    x, y, width = @points["size"]
    button = [(x + width / 2 - 6).round, y]
    # Its button again, a click elsewhere, Escape: each closes the list.
    [button, button, button, [(x - width / 2 - 20).round, y], button].each { |point| click(point, hold: 0.1) }
    xdotool("key", "Escape")
    click(@points["ok"])
    assert_equal %w[fixed 2048 567], output_at_close, "what the user typed is kept"
  end

  def test_a_click_and_then_keys_pick_from_the_size_list
    assert_equal "size", focus_after("Tab")
    x, y, width = @points["size"]
    windows = -> { output_of("xdotool", "search", "--onlyvisible", "--name", ".*").split }
    shown = windows.call
    click([(x + width / 2 - 6).round, y], hold: 0.1)
    wait_for("the size list to open") { (windows.call - shown).any? }
    # The list opens under the box, about 15 points an item: the fourth, 1024 x 768.
    click([x, y + 67], hold: 0.1)
    # Down opens the list at the item shown, twice more reaches 3076 x 2034. The
    # keys queue up while the list opens; its own loop reads them in turn.
    xdotool("key", "Down", "Down", "Down", "Return")
    click(@points["ok"])
    assert_equal %w[fixed 3076 2034], output_at_close,
                 "a click picks 1024 x 768 (without it the keys reach 640 x 480), then the keys two items on"
  end

  # Tab moves the focus as it goes down, as in every toolkit, not as it is let go.
  def test_tab_acts_as_it_goes_down
    xdotool("keydown", "Tab")
    assert_equal ["focus", "size"], next_line
  ensure
    xdotool("keyup", "Tab")
  end

  # A label is no control: a click on it selects none of its text and leaves
  # the focus where it was.
  def test_a_click_on_a_label_leaves_the_focus_where_it_was
    click(@points["width_label"])
    assert_equal "size", focus_after("Tab")
  end

  # A script that disables the field being typed in leaves no control with the
  # focus; backwards from there is the last control, as forwards is the first.
  def test_shift_tab_after_the_script_disables_the_focused_field
    assert_equal %w[size width], Array.new(2) { focus_after("Tab") }
    File.write(File.join(@temp, "viewport"), "")
    assert_equal ["focus", nil], next_line
    assert_equal "close", focus_after("shift+Tab")
    assert_equal %w[preset size_mode format], Array.new(3) { focus_after("Tab") }, "Tab passes the disabled size controls"
  end

  private

  # The size the panel reports as OK closes it.
  def output_at_close
    events_until_close.assoc("output_changed").last.first(3)
  end

  # Whether a dotted line, the toolkit's focus frame, runs along the second
  # row of the control's drawn area, just inside its edge.
  def dotted_frame?(area)
    width = area[2].ceil
    row = pixels(area).bytes.each_slice(3).to_a[width, width]
    row.each_cons(2).count { |a, b| a != b } > width / 2
  end

  def focus_after(key)
    xdotool("key", key)
    next_line.tap { |kind, _name| assert_equal "focus", kind }.last
  end
end
