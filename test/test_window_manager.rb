require_relative "test_helper"
require_relative "x_session"

# A Linux desktop user's session: a real window manager (Debian's openbox) on
# an X server of the test's own, and GNUstep's default settings, with which
# the window manager draws the title bars and GNUstep may show its
# application icon. The person closes windows through the window manager
# and clicks another program's window.
class WindowManagerTest < Minitest::Test
  include XSession

  # French texts: a wider window than English gives.
  PLUGIN = in_french(PLUGIN_PRELUDE + "print_points(driver)\n").freeze

  def setup
    super
    start_window_manager
  end

  # The panel above a window the user clicked, its folder chooser above it; the
  # window manager's close is a Cancel on the chooser and a Close on the panel.
  def test_the_panel_and_its_chooser_stay_above_and_close_by_the_window_manager
    points = start_host
    assert_equal [TITLE], client_list.map(&:last), "the panel and nothing else of ours, no application icon"
    x, y, width, height = geometry(panel_window)
    listed = client_list.map(&:first)
    # Another program's window over the panel's lower right corner, reaching past it.
    @pids << spawn(environment, "xmessage", "-geometry", "+#{x + width - 100}+#{y + height - 60}",
                   "another program", %i[out err] => File::NULL)
    other = wait_for("the other window") { (client_list.map(&:first) - listed).first }
    ox, oy, ow, oh = geometry(other)
    click([ox + ow - 5, oy + oh - 5])
    wait_for("the other window to take the keys") { xdotool("getwindowfocus").to_i == other }
    assert_operator stacking.index(panel_window), :>, stacking.index(other), "the panel stays above the other"

    open_chooser = lambda do
      click(points["choose_folder"])
      wait_for("the folder chooser") { (client_list.map(&:first) - listed - [other]).first }
    end
    chooser = open_chooser.call
    size = geometry(chooser).last(2)
    assert_equal panel_window, output_of("xprop", "-id", chooser, "WM_TRANSIENT_FOR")[/0x\h+/]&.to_i(16),
                 "the chooser belongs to the panel"
    middles = [geometry(chooser), [x, y, width, height]].map { |l, t, w, h| [l + w / 2, t + h / 2] }
    assert_operator middles.transpose.map { |a, b| (a - b).abs }.max, :<=, 3, "the chooser opens over the panel's middle"
    # A click on a corner of the panel that neither the chooser nor the other window covers.
    click([x + 5, y + height - 5])
    assert_operator stacking.index(chooser), :>, stacking.index(panel_window), "the chooser stays above the panel"
    close_by_the_window_manager(chooser)

    # Shown again, the chooser looks as at first: same size, no black band under its title bar.
    chooser = open_chooser.call
    area = geometry(chooser)
    assert_equal size, area.last(2), "the chooser's size at its second showing"
    wait_for("the chooser drawn without a black row") { !black_row?(area) }
    close_by_the_window_manager(chooser)

    output_of("wmctrl", "-i", "-c", panel_window)
    assert_equal [["close", [1.0]]], events_until_close
    _, status = Process.wait2(@host_pid)
    @host_pid = nil
    rest = @output.readlines
    assert_equal [0, []], [status.exitstatus, rest.grep(/^\[/)],
                 "the host ends as the panel closes, after one close: #{@printed.join}#{rest.join}"
  end

  def test_a_plain_ruby_shows_the_panel_without_an_application_icon
    # Nothing runs the toolkit's events in a plain ruby but the script itself,
    # until the test ends it.
    File.write(@plugin, "loop { driver.process_events }\n", mode: "a")
    start_host([RbConfig.ruby, "-I", BUILD_DIR, @plugin])
    assert_equal [TITLE], client_list.map(&:last)
  end

  # A user who has GNUstep draw its own title bars has no border of the
  # window manager's round the panel; the window manager still offers to move
  # it (Alt+drag, its window menu) and to close it, and nothing else a dialog
  # of a fixed size could not do.
  def test_the_window_manager_moves_and_closes_a_panel_whose_title_bar_gnustep_draws
    FileUtils.mkdir_p(File.join(@temp, "Defaults"))
    File.write(File.join(@temp, "Defaults", "NSGlobalDomain.plist"), "{ GSBackHandlesWindowDecorations = NO; }\n")
    start_host
    assert_equal "= 0, 0, 0, 0", output_of("xprop", "-id", panel_window, "_NET_FRAME_EXTENTS")[/=.*/],
                 "no border drawn by the window manager"
    offered = lambda do
      output_of("xprop", "-id", panel_window, "_NET_WM_ALLOWED_ACTIONS").scan(/_NET_WM_ACTION_(MOVE|CLOSE|RESIZE|MAXIMIZE_\w+)/)
    end
    wait_for("the window manager to offer a move") { offered.call.include?(["MOVE"]) }
    assert_equal %w[CLOSE MOVE], offered.call.flatten.sort
  end

  private

  # The windows the window manager lists, as [id, title].
  def client_list
    output_of("wmctrl", "-l").scan(/^(0x\h+) +\S+ +\S+ ?(.*)$/).map { |id, title| [id.to_i(16), title] }
  end

  def panel_window
    client_list.rassoc(TITLE)&.first or flunk("no panel listed")
  end

  # The managed windows from the bottom of the stack to its top.
  def stacking
    output_of("xprop", "-root", "_NET_CLIENT_LIST_STACKING").scan(/0x\h+/).map { |id| id.to_i(16) }
  end

  # The window manager's close of the chooser is a Cancel: the host lives on
  # and the panel has the keys again.
  def close_by_the_window_manager(chooser)
    output_of("wmctrl", "-i", "-c", chooser)
    wait_for("the chooser to close") { !client_list.map(&:first).include?(chooser) }
    assert_nil Process.waitpid(@host_pid, Process::WNOHANG), "the host lives on: #{@printed.join}"
    wait_for("the panel to take the keys back") { xdotool("getwindowfocus").to_i == panel_window }
  end

  # Whether a row of the window's area is black from edge to edge.
  def black_row?((left, top, width, height))
    rows = pixels([left + width / 2.0, top + height / 2.0, width, height]).bytes.each_slice(3 * width)
    rows.any? { |row| row.all?(&:zero?) }
  end

  # Left, top, width and height of a window's own area on the screen.
  def geometry(window)
    info = output_of("xwininfo", "-id", window)
    %w[Absolute\ upper-left\ X Absolute\ upper-left\ Y Width Height].map { |key| info[/#{key}:\s+(-?\d+)/, 1].to_i }
  end
end
