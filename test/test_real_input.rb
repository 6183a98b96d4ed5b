require_relative "test_helper"
require "json"
require "tmpdir"

# A person at the screen: the reference host runs a plugin on an X server of
# the test's own, and xdotool moves the pointer, presses, types and drags as a
# person would. The plugin tells where each control is from the panel itself.
class RealInputTest < Minitest::Test
  HOST = File.join(BUILD_DIR, "velmar-host")
  LIMIT = 30 # seconds for each wait; the host gives up after it too

  PLUGIN = <<~RUBY.freeze
    require "json"
    require "OptionsPanel"
    require "OptionsPanelDriver"
    require #{File.expand_path("../examples/texts/en", __dir__).inspect}
    $stdout.sync = true
    driver = OptionsPanelDriver

    class Printer
      %w[preset_changed output_changed environment_changed options_changed close].each do |event|
        define_method(event) { |payload| puts JSON.dump([event, payload]) }
      end
    end

    panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
    panel.observe(Printer.new)
    # The folder field is enabled too: Tab must still go from Width to Height.
    panel.set_output_directory("custom", "/renders")
    panel.show
    # Each tab's controls are on the window only while it shows.
    driver.choose_tab(1)
    points = { "clay" => driver.screen_point(:myClayCButton, nil),
               "intensity" => driver.screen_point(:myIntensitySlider, nil),
               "track" => driver.control(:myIntensitySlider)[:drawn_in_window] }
    driver.choose_tab(0)
    points.update("fixed" => driver.screen_point(:aImageSizeMatrix, 1),
                  "width" => driver.screen_point(:myWidthValueText, nil),
                  "environment" => driver.screen_point(:myTabView, 1),
                  "ok" => driver.screen_point(:m_pButton, nil),
                  "close_box" => driver.screen_point(:close_box, nil))
    # A person starts once the panel is drawn and active, its title bar lit.
    deadline = Time.now + #{LIMIT}
    driver.process_events until (driver.drawn? && driver.window_state[:key] && driver.window_state[:active]) ||
                                Time.now > deadline
    puts JSON.dump(["points", points])
  RUBY

  def setup
    @folder = Dir.mktmpdir("real-input")
    @plugin = File.join(@folder, "plugin.rb")
    File.write(@plugin, PLUGIN)
    @display = start_x_server
  end

  def teardown
    [@host_pid, @xvfb_pid].compact.each do |pid|
      Process.kill("KILL", pid)
      Process.wait(pid)
    rescue Errno::ESRCH, Errno::ECHILD
      nil
    end
    FileUtils.rm_rf(@folder)
  end

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
    track_right = x + points["track"][2] / 2
    xdotool("mousemove", x.to_s, y.to_s, "mousedown", "1",
            "mousemove", (x + 10).to_s, y.to_s, "mousemove", (track_right + 40).round.to_s, y.to_s,
            "mouseup", "1")
    click(points["ok"])

    events = events_until_close
    assert_equal %w[preset_changed output_changed environment_changed options_changed close],
                 events.map(&:first)
    assert_equal %w[fixed 1280 720 png custom /renders], events.assoc("output_changed").last.first(6)
    assert_equal ["default", 1, 0, 0, 100, 50], events.assoc("environment_changed").last,
                 "Clay ticked and Intensity dragged to its end; Exposure untouched"
  end

  def test_the_close_box_closes_without_a_report
    points = start_host
    click(points["close_box"])
    assert_equal [["close", [1.0]]], events_until_close
  end

  private

  def start_x_server
    reader, writer = IO.pipe
    @xvfb_pid = spawn("Xvfb", "-displayfd", writer.fileno.to_s, "-screen", "0", "1280x1024x24",
                      "-nolisten", "tcp", writer => writer, %i[out err] => File::NULL)
    writer.close
    assert IO.select([reader], nil, nil, LIMIT), "Xvfb did not start"
    ":#{reader.gets.to_i}"
  ensure
    reader&.close
  end

  def environment
    { "DISPLAY" => @display }
  end

  # Starts the host and returns where the plugin says its controls are.
  def start_host
    @output, writer = IO.pipe
    @host_pid = spawn(environment, HOST, "--timeout", LIMIT.to_s, @plugin, out: writer, err: writer)
    writer.close
    kind, points = next_line
    assert_equal "points", kind
    xdotool("search", "--sync", "--onlyvisible", "--name", TEXTS["opt-window-title"])
    points
  end

  # The next event or report the plugin printed; anything else the host
  # printed is kept to explain a failure.
  def next_line
    @printed ||= []
    loop do
      assert IO.select([@output], nil, nil, LIMIT), "nothing new for #{LIMIT} s after: #{@printed.join}"
      line = @output.gets or flunk("the host ended after: #{@printed.join}")
      @printed << line
      return JSON.parse(line) if line.start_with?("[")
    end
  end

  def events_until_close
    events = []
    events << next_line until events.last && events.last.first == "close"
    events
  end

  def click(point, hold: nil)
    moves = ["mousemove", point[0].to_s, point[1].to_s]
    if hold
      xdotool(*moves, "mousedown", "1", "sleep", hold.to_s, "mouseup", "1")
    else
      xdotool(*moves, "click", "1")
    end
  end

  def xdotool(*words)
    assert system(environment, "timeout", LIMIT.to_s, "xdotool", *words, out: File::NULL), "xdotool #{words.join(' ')}"
  end
end
