require_relative "test_helper"
require_relative "x_session"

# A person with only the keyboard, from the panel's first appearance; and the
# size list opened and closed without a pick.
class KeyboardTest < Minitest::Test
  include XSession

  # The plugin watches the panel while the person works: it prints which
  # control has the focus each time that changes, and the Clay box's state.
  PLUGIN = (PLUGIN_PRELUDE + <<~RUBY).freeze
    panel.set_output_dimensions("fixed", 1280, 720, 640, 480)
    panel.set_output_directory("custom", "/renders")
    panel.show
    driver.choose_tab(1)
    points = { "clay" => driver.screen_point(:clay, nil),
               "clay_frame" => driver.control(:clay)[:drawn_in_window] }
    driver.choose_tab(0)
    points.update("size_list" => driver.screen_point(:size, nil),
                  "size_frame" => driver.control(:size)[:drawn_in_window],
                  "ok" => driver.screen_point(:ok, nil))
    print_points(driver, points)
    seen = nil
    clay = nil
    deadline = Time.now + #{LIMIT}
    while driver.window_state[:visible] && Time.now < deadline
      driver.process_events
      focus = driver.focused
      puts JSON.dump(["focus", focus]) if focus != seen
      seen = focus
      state = driver.control(:clay)[:state]
      puts JSON.dump(["clay", state]) if clay && state != clay
      clay = state
      sleep 0.01
    end
  RUBY

  IMAGE_TAB_ROUND = %w[size width height format transparent_background
                       save_location folder choose_folder ok close preset
                       size_mode].freeze
  ENVIRONMENT_TAB_ROUND = %w[intensity exposure Reset spherical_point_lights caustics
                             clay information_bar translucent_color automatic_materials ok close
                             preset background].freeze

  def setup
    start_session("keyboard", PLUGIN)
    @points = host_points(@plugin)
    xdotool("search", "--sync", "--onlyvisible", "--name", TEXTS["opt-window-title"])
  end

  def teardown
    end_session
  end

  def test_tab_round_both_tabs_space_on_a_box_and_ok
    assert_equal %w[focus size_mode], next_line, "the panel opens with the focus on its first control"
    assert_equal IMAGE_TAB_ROUND, IMAGE_TAB_ROUND.map { focus_after("Tab") }
    assert_equal "preset", focus_after("shift+Tab")
    assert_equal "background", focus_after("ctrl+Tab"), "the focus follows into the Environment tab"
    assert_equal ENVIRONMENT_TAB_ROUND, ENVIRONMENT_TAB_ROUND.map { focus_after("Tab") }
    5.times { focus_after("Tab") }
    assert_equal "clay", focus_after("Tab")

    box = box_rect
    unticked = screen_pixels(box)
    xdotool("key", "space")
    assert_equal ["clay", 1], next_line
    assert wait_for_screen(box) { |pixels| pixels != unticked }, "the tick is drawn"
    xdotool("key", "space")
    assert_equal ["clay", 0], next_line
    assert wait_for_screen(box) { |pixels| pixels == unticked }, "the box looks as before it was ticked"
    xdotool("key", "space")
    assert_equal ["clay", 1], next_line

    assert_equal "size_mode", focus_after("ctrl+shift+Tab")
    # An arrow chooses in a radio group: Panorama, whose lock halves the width.
    xdotool("key", "Down")
    assert_equal %w[preset close ok], Array.new(3) { focus_after("shift+Tab") }
    xdotool("key", "space")
    events = events_until_close
    assert_equal %w[preset_changed output_changed environment_changed options_changed close], events.map(&:first)
    assert_equal ["default", 1, 0, 0, 50, 50], events.assoc("environment_changed").last
    assert_equal %w[panorama 1280 640], events.assoc("output_changed").last.first(3)
  end

  def test_escape_while_a_field_is_edited_closes_as_close
    next_line
    focus_after("Tab")
    assert_equal "width", focus_after("Tab")
    xdotool("type", "--delay", "40", "2048")
    xdotool("key", "Escape")
    assert_equal [["close", [1.0]]], events_until_close
  end

  def test_the_size_list_closed_without_a_pick_keeps_typed_values
    next_line
    focus_after("Tab")
    focus_after("Tab")
    xdotool("type", "--delay", "40", "2048")
    assert_equal "height", focus_after("Tab")
    xdotool("type", "--delay", "40", "567")
    x, y = @points["size_list"]
    button = [(x + @points["size_frame"][2] / 2 - 6).round, y]
    # Its button again, a click elsewhere, Escape: each closes the list.
    click(button, hold: 0.1)
    click(button, hold: 0.1)
    click(button, hold: 0.1)
    click([(x - @points["size_frame"][2] / 2 - 20).round, y], hold: 0.1)
    click(button, hold: 0.1)
    xdotool("key", "Escape")
    click(@points["ok"])
    assert_equal %w[fixed 2048 567], output_reported.first(3), "what the user typed is kept"
  end

  def test_keys_open_the_size_list_and_pick_from_it
    next_line
    assert_equal "size", focus_after("Tab")
    # Custom is shown: Down opens the list at it, twice more reaches 640 x 480.
    # The keys queue up while the list opens; its own loop reads them in turn.
    xdotool("key", "Down", "Down", "Down", "Return")
    click(@points["ok"])
    assert_equal %w[fixed 640 480], output_reported.first(3)
  end

  def test_a_click_picks_from_the_open_size_list
    next_line
    x, y = @points["size_list"]
    shown = visible_windows
    click([(x + @points["size_frame"][2] / 2 - 6).round, y], hold: 0.1)
    wait_for("the size list to open") { (visible_windows - shown).any? }
    # The list opens under the box, about 15 points an item: the fourth, 1024 x 768.
    click([x, y + 67], hold: 0.1)
    click(@points["ok"])
    assert_equal %w[fixed 1024 768], output_reported.first(3)
  end

  private


  def visible_windows
    IO.popen(environment, %w[xdotool search --onlyvisible --name .*], err: File::NULL, &:read).split
  end

  def focus_after(key)
    xdotool("key", key)
    kind, name = next_line
    assert_equal "focus", kind
    name
  end

  def output_reported
    events = events_until_close.reject { |event| event.first == "focus" }
    events.assoc("output_changed").last
  end

  # The Clay box as the X server shows it, on whole pixels.
  def box_rect
    x, y = @points["clay"]
    width, height = @points["clay_frame"][2, 2]
    [(x - width / 2).floor, (y - height / 2).floor, width.ceil, height.ceil]
  end

  # The screen's pixels in the rectangle (x, y, width, height; X's
  # coordinates) as the X server holds them: what a person sees.
  def screen_pixels(rect)
    x, y, width, height = rect
    pixels, status = Open3.capture2(environment, "timeout", LIMIT.to_s, "import", "-window", "root",
                                    "-crop", "#{width}x#{height}+#{x}+#{y}", "-depth", "8", "rgb:-",
                                    binmode: true)
    assert status.success?, "import could not read the screen"
    pixels
  end

  # Whether the screen comes to show what the block looks for within the time limit.
  def wait_for_screen(rect)
    deadline = Time.now + LIMIT
    until yield(screen_pixels(rect))
      return false if Time.now > deadline
      sleep 0.05
    end
    true
  end
end
