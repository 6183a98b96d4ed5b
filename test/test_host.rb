require_relative "test_helper"
require "tmpdir"

# velmar-host, the reference host: how it hands a plugin its arguments, runs
# the event loop while the panel is open, and ends.
class HostTest < Minitest::Test
  HOST = File.join(BUILD_DIR, "velmar-host")
  # The host's time limit where the run ends by itself: a bound for a hung run
  # only, which no slow machine reaches.
  BOUND = 120

  def test_what_the_plugin_is_given_and_how_the_run_ends
    # A panel on screen whose observer prints "close heard", and whose at_exit handler "at_exit ran".
    shown = PanelTest.observed_panel("")
    # An observer's jump during the user's click, which the host's loop delivers.
    click = ->(code) { "#{PanelTest.observed_panel(code)}\nOptionsPanelDriver.click_later(:ok, 0.2)\nputs 'waiting'" }
    # A signal that the plugin sends itself once its script has run to its end,
    # so that it comes while the host waits for events, however slow the run.
    at_end = ->(signal) { "ended = Queue.new\nThread.new { ended.pop; Process.kill(:#{signal}, Process.pid) }\n" }
    # The plugin's code, the host's time limit, and the run's exit status, stderr (nil: empty) and stdout.
    {
      # The plugin gets its arguments, and the build folder on its load path.
      "arguments" => ["p [ARGV, $PROGRAM_NAME == __FILE__, $LOAD_PATH.include?(#{BUILD_DIR.inspect})]", BOUND, 0, nil,
                      ['[["--lang", "de", "--", "x"], true, true]']],
      "exit with the panel open" => ["#{shown}exit 7", BOUND, 7, nil, ["at_exit ran"]],
      "an error" => ["def fill; raise(ArgumentError, 'no settings'); end\nfill", BOUND, 1,
                     /plugin\.rb:2:in `fill': no settings \(ArgumentError\)\n.*from .*plugin\.rb:3:in `<top/m, []],
      # A Ruby thread only runs, and a trap only fires, when the host lets Ruby
      # have a turn while it waits for events.
      "the panel closing" => ["#{shown}trap(:USR1) { panel.close }\n#{at_end.(:USR1)}puts 'shown'\nended << true",
                              20, 0, nil, ["shown", "close heard", "at_exit ran"]],
      "the time limit" => [shown, 0.5, 3, /the panel is still open after 0\.5 seconds/, ["at_exit ran"]],
      "Ctrl-C with the panel open" => ["#{shown}#{at_end.(:INT)}ended << true", BOUND, 130, /stopped by signal 2/,
                                       ["at_exit ran"]],
      "an observer's exit" => [click.("exit 4"), BOUND, 4, nil, ["waiting", "at_exit ran"]],
      "Ctrl-C in an observer" => [click.("Process.kill(:INT, Process.pid)\nsleep"), BOUND, 130, /stopped by signal 2/,
                                  ["waiting", "at_exit ran"]],
      # A throw has no catch there: it is reported, and the panel closes as after any OK.
      "an observer's throw" => [click.("throw :leave"), BOUND, 0, /uncaught throw :leave \(UncaughtThrowError\)/,
                                ["waiting", "close heard", "at_exit ran"]]
    }.each do |run, (code, seconds, exit_status, printed, lines)|
      out, err, status = Dir.mktmpdir do |dir|
        File.write(File.join(dir, "plugin.rb"), "$stdout.sync = true\n#{code}")
        Open3.capture3("timeout", (BOUND + 60).to_s, HOST, "--timeout", seconds.to_s, "plugin.rb", "--", "--lang", "de",
                       "--", "x", chdir: dir)
      end
      assert_equal [exit_status, lines], [status.exitstatus, out.lines.map(&:chomp)], "#{run}: #{err}"
      assert_match(printed || /\A\z/, err, run)
    end
  end

  def test_usage_errors_and_no_x_server
    [[], %w[--timeout soon plugin.rb], %w[--bogus plugin.rb]].each do |args|
      _, err, status = Open3.capture3(HOST, *args)
      assert_equal [2, true], [status.exitstatus, err.include?("usage: velmar-host")], "#{args}: #{err}"
    end
    { "" => /DISPLAY is not set: .*with-display\.sh/, ":4097" => /no X server answers at DISPLAY=:4097/ }.each do |display, hint|
      _, err, status = Open3.capture3({ "DISPLAY" => display }, HOST, "plugin.rb")
      assert_equal [1, true], [status.exitstatus, hint.match?(err)], err
    end
    # A plain ruby meets the toolkit's own failure as a RuntimeError "Name: reason".
    out, err, = Open3.capture3({ "DISPLAY" => ":4097" }, RbConfig.ruby, "-I", BUILD_DIR, "-rOptionsPanel", "-e",
                               "begin; Velmar::OptionsPanelWindow.new({}).show; rescue RuntimeError => e; print(e.message); end")
    assert_match(/\ANSWindowServerCommunicationException: Unable to connect to X Server `:4097'\z/, out, err)
  end

  # What `make demo` runs, in German: two screenshots, then OK; the at_exit
  # handler prints the settings that OK wrote back.
  def test_the_example_plugin_reports_the_ok_events_and_keeps_the_choices
    Dir.mktmpdir do |shots|
      out, err, status = Open3.capture3("timeout", "120", HOST, "examples/render_settings_plugin.rb", "--",
                                        "--lang", "de", "--shots", shots, chdir: File.expand_path("..", __dir__))
      assert_equal [0, %w[screenshot screenshot] + PanelTest::OK_EVENTS],
                   [status.exitstatus, out.scan(/^(\w+): /).flatten], err
      assert_includes out, 'settings now: preset Outdoor; fixed 1920 x 1080; jpg to custom "/home/artist/Renders"; ' \
                           "sky background, brightness 70, contrast 40; on: clay, information_bar\n"
      assert_equal %w[environment-tab.png image-tab.png], Dir.children(shots).sort
    end
  end
end
