require "fileutils"
require "json"
require "tmpdir"

# A person at an X server of the test's own: the reference host runs a plugin
# there, the plugin prints where the panel's controls are and each event as
# JSON lines, and xdotool moves the pointer, presses and types as a person
# does. The including test gives its plugin as PLUGIN.
module XSession
  HOST = File.join(BUILD_DIR, "velmar-host")
  # Seconds that each wait may take before the test fails: a bound for a hung
  # test only, far beyond what a slow machine needs, since every wait ends as
  # soon as what it waits for has happened.
  LIMIT = 60
  TITLE = TEXTS["opt-window-title"]

  # The start of a plugin: the panel on screen, its folder field enabled, and
  # each event printed as a JSON line; print_points prints where the controls
  # are once a person can start.
  PLUGIN_PRELUDE = <<~RUBY.freeze
    require "json"
    require "OptionsPanel"
    require "OptionsPanelDriver"
    require #{File.expand_path("../examples/texts/en", __dir__).inspect}
    $stdout.sync = true
    driver = OptionsPanelDriver
    # The test holds the other end of standard input and never writes to it:
    # the end of input means the test's process is gone, and so the plugin goes.
    Thread.new do
      $stdin.read
      exit!(1)
    end

    # Where the controls are on the screen: a control's middle with the width
    # and height of what is drawn, the middle of a radio cell with the cell's
    # width, or the middle of a tab. A tab's controls are on the window only
    # while it shows. Printed once a person can start: the panel drawn and
    # active, its title bar lit (the test bounds that wait).
    def print_points(driver)
      place = ->(name) { driver.screen_point(name, nil) + driver.control(name)[:drawn_in_window][2, 2] }
      driver.choose_tab(1)
      points = { "clay" => place.(:clay), "intensity" => place.(:intensity) }
      driver.choose_tab(0)
      %i[size width ok folder choose_folder].each { |name| points[name] = place.(name) }
      # The width field's label, where it lies beside the field: a point with no control of its own.
      field = driver.control(:width)[:drawn_in_window]
      label = driver.tab_views(0).find do |view|
        box = view[:drawn_in_window]
        view[:class] == "NSTextField" && box[0] < field[0] && (box[1] + box[3] / 2 - field[1] - field[3] / 2).abs < 3
      end[:drawn_in_window]
      x, y = driver.screen_point(:width, nil)
      points["width_label"] = [x + label[0] + label[2] / 2 - field[0] - field[2] / 2,
                               y - label[1] - label[3] / 2 + field[1] + field[3] / 2] + label[2, 2]
      cell = [driver.control(:size_mode)[:cell_width]]
      points.update("viewport" => driver.screen_point(:size_mode, 0) + cell, "fixed" => driver.screen_point(:size_mode, 1) + cell,
                    "environment" => driver.screen_point(:tabs, 1),
                    "close_box" => driver.screen_point(:close_box, nil))
      driver.process_events until driver.drawn? && driver.window_state[:key] && driver.window_state[:active]
      puts JSON.dump(["points", points])
    end

    panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
    panel.observe(Class.new do
      #{EVENTS.inspect}.each { |event| define_method(event) { |payload| puts JSON.dump([event, payload]) } }
    end.new)
    panel.set_output_directory("custom", "/renders")
    panel.show
  RUBY

  # Each test: a folder of its own with the class's PLUGIN in it, which is the
  # toolkit's temporary directory too, and an X server.
  def setup
    # Short: the daemons' socket paths must fit in a socket address.
    @temp = Dir.mktmpdir("gs", "/tmp")
    @plugin = File.join(@temp, "plugin.rb")
    File.write(@plugin, self.class::PLUGIN)
    @display = start_x_server
  end

  # Ends the host, the other programs the test started (@pids), the session's
  # toolkit daemons and the X server, and removes the folder.
  def teardown
    @lifeline&.close
    daemons = Dir["/proc/[0-9]*/environ"].select do |file|
      File.binread(file).split("\0").include?("TEMP=#{@temp}")
    rescue SystemCallError
      false
    end.map { |file| File.basename(File.dirname(file)).to_i }
    stop_processes(@host_pid, *@pids, *daemons, @xvfb_pid)
    FileUtils.rm_rf(@temp)
  end

  # GNUstep finds its pasteboard and notification daemons by the temporary
  # directory, and the one that starts a daemon ties it to its X server: a
  # session of its own keeps the suite's daemons off a server that goes away.
  def environment
    settings = @config ? { "GNUSTEP_CONFIG_FILE" => @config } : {}
    { "DISPLAY" => @display, "TEMP" => @temp, "TMPDIR" => @temp }.merge(settings)
  end

  # A display number of its own, far from the low numbers that servers left
  # to pick one (-displayfd) all try first, whose files they replace while
  # they try; a number another server holds makes this one end, and the next
  # try takes another.
  def start_x_server
    3.times do
      display = ":#{rand(1000..30_000)}"
      reader, writer = IO.pipe
      # -noreset: a server resets as its last client goes and refuses the next
      # for a moment: a window manager still starting while a check comes and goes.
      @xvfb_pid = spawn("Xvfb", display, "-displayfd", writer.fileno.to_s, "-screen", "0", "1280x1024x24",
                        "-nolisten", "tcp", "-noreset", writer => writer, %i[out err] => File::NULL)
      writer.close
      # The server names its display once it takes connections.
      started = IO.select([reader], nil, nil, LIMIT) && reader.gets
      reader.close
      return display if started
      stop_processes(@xvfb_pid)
    end
    flunk("Xvfb did not start")
  end

  # Ends what the test started, the X server last.
  def stop_processes(*pids)
    pids.compact.each do |pid|
      Process.kill("KILL", pid)
      Process.wait(pid)
    rescue Errno::ESRCH, Errno::ECHILD
      # already gone
    end
  end

  # Window managers as Debian has them; xfwm4 ends at once without a session bus.
  WINDOW_MANAGERS = { "openbox" => %w[openbox --sm-disable],
                      "xfwm4" => %w[dbus-run-session -- xfwm4 --sm-client-disable] }.freeze

  # A window manager on the session's X server, with GNUstep's defaults as a
  # user has them (nothing set), with which the window manager draws title bars.
  def start_window_manager(name = "openbox")
    @config = File.join(@temp, "GNUstep.conf")
    lines = File.readlines(ENV.fetch("GNUSTEP_CONFIG_FILE", "/etc/GNUstep/GNUstep.conf"))
    lines = lines.grep_v(/^GNUSTEP_USER_DEFAULTS_DIR=/) << "GNUSTEP_USER_DEFAULTS_DIR=#{@temp}/Defaults\n"
    File.write(@config, lines.join)
    # Another program: the sanitizers' runtime, preloaded into ours, stops xfwm4's session bus.
    (@pids ||= []) << spawn(environment.merge("LD_PRELOAD" => nil), *WINDOW_MANAGERS.fetch(name),
                            %i[out err] => File::NULL)
    wait_for("the window manager") { output_of("wmctrl", "-m", check: false) }
  end

  # Starts the host on the plugin (or another program that runs it, a plain
  # ruby for one) and, once the panel's window is on the screen, returns where
  # the plugin says the controls are; the rest of the output is read with
  # #next_line. The host has no time limit of its own: it runs until the test
  # ends it, or until its input, which the test holds open, ends with the test.
  def start_host(program = [HOST, @plugin])
    @output, writer = IO.pipe
    input, @lifeline = IO.pipe
    @host_pid = spawn(environment, *program, in: input, out: writer, err: writer)
    [input, writer].each(&:close)
    points = next_line.tap { |kind, _points| assert_equal "points", kind }.last
    xdotool("search", "--sync", "--onlyvisible", "--name", TITLE)
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
    [next_line].tap { |events| events << next_line until events.last.first == "close" }
  end

  def click(point, hold: nil)
    press = hold ? ["mousedown", 1, "sleep", hold, "mouseup", 1] : ["click", 1]
    xdotool("mousemove", *point.first(2), *press)
  end

  # Polls until the block gives a true value, which it returns.
  def wait_for(what)
    deadline = Time.now + LIMIT
    until (result = yield)
      flunk("waited #{LIMIT} s for #{what}") if Time.now > deadline
      sleep 0.05
    end
    result
  end

  # A control's pixels as the X server holds them, on whole pixels: what a person sees.
  def pixels((x, y, width, height))
    crop = "#{width.ceil}x#{height.ceil}+#{(x - width / 2).floor}+#{(y - height / 2).floor}"
    output_of("import", "-window", "root", "-crop", crop, "-depth", "8", "rgb:-")
  end

  def xdotool(*words)
    output_of("xdotool", *words)
  end

  # What a command run on the session's X server prints; with check, a
  # failure fails the test, else it gives nil.
  def output_of(*command, check: true)
    output = IO.popen(environment, ["timeout", LIMIT.to_s, *command.map(&:to_s)], err: File::NULL, &:read)
    return output if $?.success?
    flunk("#{command.join(' ')} failed") if check
  end
end
