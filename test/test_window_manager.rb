require_relative "test_helper"
require_relative "x_session"

# A Linux desktop user's session: a real window manager (Debian's openbox) on
# an X server of the test's own, and GNUstep's default settings, with which
# the window manager draws the title bars and GNUstep may show its
# application icon. The person closes windows through the window manager
# and clicks another program's window.
class WindowManagerTest < Minitest::Test
  include XSession

  PLUGIN = (PLUGIN_PRELUDE + <<~RUBY).freeze
    panel.set_output_directory("custom", ARGV[0])
    panel.show
    print_points(driver, "folder_button" => driver.screen_point(:choose_folder, nil),
                         "ok" => driver.screen_point(:ok, nil))
  RUBY

  def setup
    super
    @renders = File.join(@folder, "renders")
    Dir.mkdir(@renders)
    # GNUstep's defaults as a user has them: a defaults folder with nothing in it.
    @config = File.join(@folder, "GNUstep.conf")
    lines = File.readlines(ENV.fetch("GNUSTEP_CONFIG_FILE", "/etc/GNUstep/GNUstep.conf"))
    lines = lines.grep_v(/^GNUSTEP_USER_DEFAULTS_DIR=/) << "GNUSTEP_USER_DEFAULTS_DIR=#{@folder}/Defaults\n"
    File.write(@config, lines.join)
    # What openbox says, if anything, is on the test's own error output.
    @pids = [spawn(environment, "openbox", "--sm-disable", out: File::NULL)]
    wait_for("the window manager") { output_of("wmctrl", "-m", check: false) }
  end

  def test_the_panel_stays_above_a_window_the_user_clicked_and_closes_once_by_the_window_manager
    start_host(@renders)
    assert_equal [TITLE], client_list.map(&:last), "the panel and nothing else of ours, no application icon"
    x, y, width, height = geometry(panel_window)
    listed = client_list.map(&:first)
    # Another program's window over the panel's lower right corner, reaching past it.
    @pids << spawn(environment, "xmessage", "-geometry", "+#{x + width - 100}+#{y + height - 60}",
                   "another program", %i[out err] => File::NULL)
    other = wait_for("the other window") { (client_list.map(&:first) - listed).first }
    ox, oy, ow, oh = geometry(other)
    click([ox + ow - 5, oy + oh - 5])
    wait_for("the other window to take the keys") { focused_window == other }
    assert_operator stacking.index(panel_window), :>, stacking.index(other),
                    "the panel stays above the window the user clicked"

    output_of("wmctrl", "-i", "-c", panel_window)
    assert_equal [["close", [1.0]]], events_until_close
    Process.wait(@host_pid)
    @host_pid = nil
    @printed.concat(@output.readlines)
    assert_equal 0, $?.exitstatus, "the host ends as the panel closes: #{@printed.join}"
    assert_empty @printed.grep(/^\[/).drop(2), "one close and nothing after it"
  end

  def test_a_plain_ruby_shows_the_panel_without_an_application_icon
    script = File.join(@folder, "plain.rb")
    # Nothing runs the toolkit's events in a plain ruby but the script itself.
    File.write(script, PLUGIN + "deadline = Time.now + #{LIMIT}\ndriver.process_events while Time.now < deadline\n")
    start_host(@renders, program: [RbConfig.ruby, "-I", BUILD_DIR, script])
    assert_equal [TITLE], client_list.map(&:last)
  end

  def test_the_window_managers_close_on_the_folder_chooser_is_a_cancel
    points = start_host(@renders)
    listed = client_list.map(&:first)
    click(points["folder_button"])
    chooser = wait_for("the folder chooser") { (client_list.map(&:first) - listed).first }
    assert_equal panel_window, output_of("xprop", "-id", chooser, "WM_TRANSIENT_FOR")[/0x\h+/]&.to_i(16),
                 "the chooser belongs to the panel"

    # A click on the part of the panel the chooser leaves free.
    x, y, _width, height = geometry(panel_window)
    click([x + 5, y + height - 5])
    assert_operator stacking.index(chooser), :>, stacking.index(panel_window), "the chooser stays above the panel"

    output_of("wmctrl", "-i", "-c", chooser)
    wait_for("the chooser to close") { !client_list.map(&:first).include?(chooser) }
    assert_nil Process.waitpid(@host_pid, Process::WNOHANG), "the host lives on: #{@printed.join}"
    wait_for("the panel to take the keys back") { focused_window == panel_window }

    click(points["ok"])
    assert_equal ["custom", @renders], output_at_close[4, 2], "the folder is as it was"
  end

  private

  def environment
    super.merge("GNUSTEP_CONFIG_FILE" => @config)
  end

  # The windows the window manager lists, as [id, title].
  def client_list
    output_of("wmctrl", "-l").lines.map do |line|
      id, _desktop, _host, title = line.chomp.split(" ", 4)
      [id.to_i(16), title.to_s]
    end
  end

  def panel_window
    client_list.rassoc(TITLE)&.first or flunk("no panel listed")
  end

  # The managed windows from the bottom of the stack to its top.
  def stacking
    output_of("xprop", "-root", "_NET_CLIENT_LIST_STACKING").scan(/0x\h+/).map { |id| id.to_i(16) }
  end

  def focused_window
    xdotool("getwindowfocus").to_i
  end

  # Left, top, width and height of a window's own area on the screen.
  def geometry(window)
    info = output_of("xwininfo", "-id", window)
    %w[Absolute\ upper-left\ X Absolute\ upper-left\ Y Width Height].map { |key| info[/#{key}:\s+(-?\d+)/, 1].to_i }
  end
end
