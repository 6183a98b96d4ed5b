require "json"
require "tmpdir"
require "fileutils"

# A person at the screen: the reference host runs a plugin on an X server of
# the test's own, and xdotool moves the pointer, presses, types and drags as a
# person would. The plugin prints JSON lines: where its controls are, what it
# sees, and the panel's events.
module RealInputSession
  HOST = File.join(BUILD_DIR, "velmar-host")
  LIMIT = 30 # seconds for each wait; the host gives up after it too

  # The start of every plugin: the panel with English texts, and an observer
  # that prints each event.
  PLUGIN_PRELUDE = <<~RUBY.freeze
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
  RUBY

  # A person starts once the panel is drawn and active, its title bar lit.
  WAIT_UNTIL_ACTIVE = <<~RUBY.freeze
    deadline = Time.now + #{LIMIT}
    driver.process_events until (driver.drawn? && driver.window_state[:key] && driver.window_state[:active]) ||
                                Time.now > deadline
  RUBY

  def start_session(plugin_body)
    @session_folder = Dir.mktmpdir("real-input")
    plugin = File.join(@session_folder, "plugin.rb")
    File.write(plugin, PLUGIN_PRELUDE + plugin_body)
    @display = start_x_server
    @output, writer = IO.pipe
    @host_pid = spawn({ "DISPLAY" => @display }, HOST, "--timeout", LIMIT.to_s, plugin, out: writer, err: writer)
    writer.close
  end

  def stop_session
    [@host_pid, @xvfb_pid].compact.each do |pid|
      Process.kill("KILL", pid)
      Process.wait(pid)
    rescue Errno::ESRCH, Errno::ECHILD
      nil
    end
    FileUtils.rm_rf(@session_folder) if @session_folder
  end

  # Where the plugin says its controls are, once the panel shows.
  def points_once_shown
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
    assert system({ "DISPLAY" => @display }, "timeout", LIMIT.to_s, "xdotool", *words, out: File::NULL),
           "xdotool #{words.join(' ')}"
  end

  # The screen's pixels in the rectangle (x, y, width, height; X's
  # coordinates), as the X server holds them: what a person sees.
  def screen_pixels(rect)
    x, y, width, height = rect
    pixels, status = Open3.capture2("timeout", LIMIT.to_s, "import", "-display", @display, "-window", "root",
                                    "-crop", "#{width}x#{height}+#{x}+#{y}", "-depth", "8", "rgb:-", binmode: true)
    assert status.success?, "import could not read the screen"
    pixels
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
end
