require_relative "test_helper"
require "tmpdir"

# velmar-host, the reference host: how it hands a plugin its arguments, runs
# the event loop while the panel is open, and ends.
class HostTest < Minitest::Test
  HOST = File.join(BUILD_DIR, "velmar-host")
  ROOT = File.expand_path("..", __dir__)
  TEXTS_FILE = File.join(ROOT, "examples/texts/en.rb")

  # Runs the host on a plugin made of `code`; the panel is built only if the code asks.
  def run_plugin(code, *host_options, arguments: [], timeout: 60)
    Dir.mktmpdir do |dir|
      script = File.join(dir, "plugin.rb")
      File.write(script, "$stdout.sync = true\n#{code}")
      Open3.capture3("timeout", timeout.to_s, HOST, *host_options, script, "--", *arguments, chdir: dir)
    end
  end

  SHOWN_PANEL = <<~RUBY.freeze
    require "OptionsPanel"
    require #{TEXTS_FILE.inspect}
    panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
    panel.observe(Class.new { def close(payload); puts("close \#{payload}"); end }.new)
    panel.show
  RUBY

  def test_the_plugin_gets_its_arguments_and_the_build_folder_on_its_load_path
    out, err, status = run_plugin(<<~RUBY, arguments: %w[--lang de -- x])
      require "OptionsPanel"
      p ARGV, $PROGRAM_NAME == __FILE__, $LOAD_PATH.include?(#{BUILD_DIR.inspect}), Velmar::OptionsPanelWindow
    RUBY
    assert status.success?, err
    assert_equal ['["--lang", "de", "--", "x"]', "true", "true", "Velmar::OptionsPanelWindow"], out.lines.map(&:chomp)
  end

  def test_an_error_is_printed_with_its_backtrace_and_fails_the_run
    _, err, status = run_plugin("def fill; raise(ArgumentError, 'no settings'); end\nfill\n")
    assert_equal 1, status.exitstatus
    assert_match(/plugin\.rb:2:in `fill': no settings \(ArgumentError\)/, err)
    assert_match(/from .*plugin\.rb:3:in `<top \(required\)>'/, err)
    refute_match(/could not be printed/, err)
  end

  def test_exit_in_the_plugin_chooses_the_status_and_ends_the_run
    assert_equal 7, run_plugin("exit 7")[2].exitstatus
    _, err, status = run_plugin("#{SHOWN_PANEL}\nexit\n", "--timeout", "20")
    assert status.success?, err
  end

  def test_events_are_handled_until_the_panel_closes
    # A Ruby thread only runs, and a trap only fires, when the host lets Ruby
    # have a turn while it waits for events.
    out, err, status = run_plugin(<<~RUBY)
      #{SHOWN_PANEL}
      trap(:USR1) { panel.close }
      Thread.new { sleep 0.3; Process.kill(:USR1, Process.pid) }
      puts "shown"
    RUBY
    assert status.success?, err
    assert_equal ["shown", "close [1.0]"], out.lines.map(&:chomp)
  end

  def test_a_panel_still_open_at_the_time_limit_ends_the_run
    started = Process.clock_gettime(Process::CLOCK_MONOTONIC)
    _, err, status = run_plugin(SHOWN_PANEL, "--timeout", "0.5")
    assert_equal 3, status.exitstatus
    assert_match(/the panel is still open after 0\.5 seconds/, err)
    assert_operator Process.clock_gettime(Process::CLOCK_MONOTONIC) - started, :<, 30
  end

  def test_ctrl_c_ends_the_run_while_the_panel_is_open
    _, err, status = run_plugin("#{SHOWN_PANEL}\nThread.new { sleep 0.3; Process.kill(:INT, Process.pid) }\n")
    assert_equal 130, status.exitstatus
    assert_match(/stopped by signal 2/, err)
  end

  def test_usage_errors
    [[], %w[--timeout soon plugin.rb], %w[--bogus plugin.rb]].each do |args|
      _, err, status = Open3.capture3(HOST, *args)
      assert_equal 2, status.exitstatus, args.inspect
      assert_match(/usage: velmar-host/, err)
    end
  end

  # What `make demo` runs, in German.
  def test_the_example_plugin_reports_the_ok_events_and_keeps_the_choices
    Dir.mktmpdir do |shots|
      out, err, status = Open3.capture3("timeout", "120", HOST, "examples/render_settings_plugin.rb", "--",
                                        "--lang", "de", "--shots", shots, chdir: ROOT)
      assert status.success?, err
      events = out.lines.map { |line| line[/\A(\w+): /, 1] }.compact
      assert_equal %w[screenshot screenshot] + PanelTest::OK_EVENTS, events
      assert_includes out, 'output_changed: ["fixed", "1920", "1080", "jpg", "custom", "/home/artist/Renders", "Outdoor"]'
      assert_includes out, 'environment_changed: ["sky", 1, 0, 0, 70, 40]'
      assert_match(/^settings now: preset Outdoor; fixed 1920 x 1080; jpg to custom/, out)
      assert_equal %w[environment-tab.png image-tab.png], Dir.children(shots).sort
    end
  end

  # An observer's jump during the user's click, which the host's loop delivers.
  def run_click_with_observer(output_changed)
    script = "#{PanelTest.observed_panel(output_changed)}\n" \
             "OptionsPanelDriver.click_later(:ok, 0.2)\nputs 'waiting'\n"
    run_plugin(script, "--timeout", "20")
  end

  def test_an_observers_exit_or_ctrl_c_during_a_click_ends_the_run_as_ruby_would
    out, err, status = run_click_with_observer("exit 4")
    assert_equal 4, status.exitstatus, err
    assert_equal ["waiting", "at_exit ran"], out.lines.map(&:chomp)

    out, err, status = run_click_with_observer("Process.kill(:INT, Process.pid)\nsleep 5")
    assert_equal 130, status.exitstatus
    assert_match(/stopped by signal 2/, err)
    assert_equal ["waiting", "at_exit ran"], out.lines.map(&:chomp)
  end

  def test_an_observers_throw_during_a_click_has_no_catch_and_is_reported
    out, err, status = run_click_with_observer("throw :leave")
    assert status.success?, err
    assert_match(/uncaught throw :leave \(UncaughtThrowError\)/, err)
    assert_equal ["waiting", "close heard", "at_exit ran"], out.lines.map(&:chomp)
  end
end
