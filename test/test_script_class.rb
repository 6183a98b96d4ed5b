require_relative "test_helper"
require "json"
require "tmpdir"

# What a script sees of the class: its methods, their results, and when the panel appears.
class ScriptClassTest < Minitest::Test
  include PanelTest

  def setup
    reset_panel
  end

  def test_the_class_has_exactly_the_method_table
    klass = Velmar::OptionsPanelWindow
    assert_equal Object, klass.superclass
    assert_equal [:initialize], klass.private_instance_methods(false)
    methods = klass.public_instance_methods(false) + [:initialize]
    assert_equal SCRIPT_METHODS.sort, methods.map { |m| [m, klass.instance_method(m).arity] }.sort
  end

  def test_every_method_returns_true_but_initialize_and_output_directory
    p = panel
    results = [
      p.show, p.send(:text=, "ignored"), p.send(:preset=, "Draft"), p.populate_presets("a|b"),
      p.set_output_dimensions("fixed", 640, 480, 0, 0), p.send(:output_format=, "jpg"),
      p.set_output_format(nil, 1, :x), p.set_output_directory("custom", "/tmp"),
      p.observe(Object.new), p.send(:hide_render_all=, nil), p.close
    ]
    SCRIPT_METHODS.keys.grep(/\Aset_environment_/).each do |m|
      results << p.public_send(m, m.to_s.end_with?("background") ? "sky" : 1)
    end
    assert(results.all? { |r| r.equal?(true) })
    assert_equal p, p.send(:initialize, TEXTS)
    assert_instance_of String, p.output_directory("x")
  end

  # The title is fixed once built; a second instance drives the same panel.
  def test_text_assignment_changes_nothing_and_two_instances_drive_one_panel
    before = [Driver.window_state[:title], Driver.content_views, Driver.tab_views(0)]
    panel.text = "A new title"
    assert_equal before, [Driver.window_state[:title], Driver.content_views, Driver.tab_views(0)]
    assert_raises(TypeError) { panel.text = 42 }
    one = Velmar::OptionsPanelWindow.new(TEXTS)
    two = Velmar::OptionsPanelWindow.new({ "opt-ok-btn-title" => "Other" })
    one.close
    two.set_environment_clay(true)
    one.show
    assert_equal [true, 1, "OK"], [Driver.window_state[:visible], control(:clay)[:state], control(:ok)[:text]]
  end

  # Only a process whose panel is not built yet can show when it appears: the
  # methods that only talk to Ruby don't build it, each method that drives it
  # does when it comes first (forked before anything is built), and a panel a
  # setter built is on screen but not raised, and closes with one close.
  # Ctrl-C still reaches the script.
  def test_the_panel_appears_at_the_first_method_that_needs_it
    out, err, status = run_ruby(<<~RUBY, timeout: 120)
      d = OptionsPanelDriver
      window = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      closes = []
      window.observe(Class.new { define_method(:close) { |payload| closes << payload } }.new)
      window.send(:hide_render_all=, 1)
      window.output_directory("a\\\\b")
      p d.built?
      calls = { show: [], close: [], "text=": ["t"], "preset=": ["p"], populate_presets: ["a|b"],
                set_output_dimensions: ["fixed", 640, 480, 0, 0], "output_format=": ["jpg"],
                set_output_format: [1, 2, 3], set_output_directory: ["custom", "/x"],
                set_environment_background: ["sky"], set_environment_brightness: [7],
                set_environment_contrast: [7] }
      %w[spherical_point_lights information_bar clay caching caustic translucent_color
         automatic_materials].each { |box| calls[:"set_environment_\#{box}"] = [true] }
      calls.each do |name, args|
        pid = fork do
          window.public_send(name, *args)
          exit!(d.built? ? 0 : 1)
        end
        Process.wait(pid)
        puts "\#{name} did not build the panel" unless $?.success?
      end
      window.populate_presets("One|Two")
      p d.window_state.values_at(:visible, :key, :level)
      window.close
      p closes, d.window_state[:visible]
      window.show
      p d.window_state.values_at(:visible, :key, :level) == [true, true, d.modal_panel_level]
      begin
        Process.kill("INT", Process.pid)
        sleep 5
      rescue Interrupt
        puts "interrupted"
      end
    RUBY
    assert status.success?, err
    assert_empty err
    assert_equal ["false", "[true, true, 0]", "[[1.0]]", "false", "true", "interrupted"],
                 out.lines.map(&:chomp)
  end

  def test_methods_that_drive_the_panel_belong_to_the_main_thread
    p = panel
    Driver.choose_tab(1)
    Driver.click(:clay)
    from_thread = Thread.new do
      errors = %i[show close].map { |m| assert_raises(ThreadError) { p.public_send(m) } }
      errors << assert_raises(ThreadError) { p.set_environment_clay(false) }
      errors << assert_raises(ThreadError) { p.output_format = "jpg" }
      [errors, p.observe(Object.new), p.output_directory("a\\b"), p.send(:hide_render_all=, 1)]
    end.value
    assert(from_thread[0].all? { |e| e.message == "must be called on the main thread" })
    assert_equal [true, "a/b", true], from_thread.drop(1)
    assert Driver.window_state[:visible]
    assert_equal 1, control(:clay)[:state]
  end

  # The panel finds its own images with a shorter list of file types; the
  # host's list must be whole again once the panel is on screen.
  def test_the_host_keeps_every_image_type
    out, err, status = run_ruby(<<~RUBY)
      Driver = OptionsPanelDriver
      Driver.start_application
      before = Driver.image_types
      Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN).show
      Driver.process_events
      puts before.size, before == Driver.image_types, before.include?("bmp")
    RUBY
    assert status.success?, err
    count, same, bmp = out.split
    assert_operator count.to_i, :>, 100, "ImageMagick's types are part of the host's list"
    assert_equal %w[true true], [same, bmp]
  end

  # The toolkit starts helper daemons as child processes; the script's own
  # children must still be reaped by Ruby afterwards.
  def test_scripts_can_still_run_child_processes
    Driver.screenshot(File.join(Dir.tmpdir, "optionspanel-child-check.png"))
    waiter = Thread.new { system("true") }
    assert waiter.join(30), "system never returned"
    assert_equal true, waiter.value
  end

  # Copying a script's text into the panel can run out of memory in C++; that
  # must reach the script as NoMemoryError, leaving the panel usable.
  def test_running_out_of_memory_while_copying_a_text_raises_no_memory_error
    # AddressSanitizer's allocator ends the process instead of throwing bad_alloc.
    skip "the allocator is AddressSanitizer's" if ENV["LD_PRELOAD"].to_s.include?("asan")
    out, err, status = run_ruby(<<~RUBY)
      panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      panel.show
      text = "x" * (64 << 20)
      size = File.read("/proc/self/status")[/VmSize:\\s+(\\d+)/, 1].to_i * 1024
      hard = Process.getrlimit(:AS)[1]
      Process.setrlimit(:AS, size + (32 << 20), hard)
      begin
        panel.preset = text
      rescue NoMemoryError => e
        puts e.class
      ensure
        Process.setrlimit(:AS, hard, hard)
      end
      p panel.send(:output_format=, "jpg")
      p OptionsPanelDriver.control(:format)[:cells].map { |c| c[:state] }
    RUBY
    assert status.success?, err
    assert_equal ["NoMemoryError", "true", "[0, 1, 0]"], out.lines.map(&:chomp)
  end
end
