require_relative "test_helper"
require "tmpdir"

# What a script sees of the class: its methods, their results, and when the panel appears.
class ScriptClassTest < Minitest::Test
  include PanelTest

  # Each method that drives the panel, with arguments it takes (1 turns a check box off).
  DRIVING = SCRIPT_METHODS.keys.grep(/\Aset_environment_/).to_h { |m| [m, [1]] }.merge(
    show: [], close: [], "text=": ["t"], "preset=": ["Draft"], populate_presets: ["a|b"],
    set_output_dimensions: ["fixed", 640, 480, 0, 0], "output_format=": ["jpg"],
    set_output_format: [nil, 1, :x], set_output_directory: ["custom", "/tmp"],
    set_environment_background: ["sky"]
  ).freeze

  def setup
    reset_panel
  end

  def test_the_class_has_exactly_the_method_table_and_its_methods_return_true
    klass = Velmar::OptionsPanelWindow
    assert_equal Object, klass.superclass
    assert_equal [:initialize], klass.private_instance_methods(false)
    methods = klass.public_instance_methods(false) + [:initialize]
    assert_equal SCRIPT_METHODS.sort, methods.map { |m| [m, klass.instance_method(m).arity] }.sort
    p = panel
    DRIVING.merge(observe: [Object.new], "hide_render_all=": [nil]).each do |m, args|
      assert_same true, p.public_send(m, *args), m
    end
    assert_same p, p.send(:initialize, TEXTS)
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
      #{DRIVING.inspect}.each do |name, args|
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
      begin
        Process.kill("INT", Process.pid)
        sleep # until the signal comes
      rescue Interrupt
        puts "interrupted"
      end
    RUBY
    assert_equal [true, "", ["false", "[true, true, 0]", "[[1.0]]", "false", "interrupted"]],
                 [status.success?, err, out.lines.map(&:chomp)]
  end

  # From another thread every method that drives the panel raises and changes
  # nothing; the others work.
  def test_methods_that_drive_the_panel_belong_to_the_main_thread
    p = panel
    Driver.choose_tab(1)
    Driver.click(:clay)
    errors, *others = Thread.new do
      [DRIVING.map { |m, args| assert_raises(ThreadError, m.to_s) { p.public_send(m, *args) }.message },
       p.observe(Object.new), p.output_directory("a\\b"), p.send(:hide_render_all=, 1)]
    end.value
    assert_equal ["must be called on the main thread"], errors.uniq
    assert_equal [true, "a/b", true], others
    assert_equal [true, 1], [Driver.window_state[:visible], control(:clay)[:state]]
  end

  # The panel finds its own images with a shorter list of file types; the
  # host's list must be whole again once the panel is on screen.
  def test_the_host_keeps_every_image_type
    out, err = run_ruby(<<~RUBY)
      OptionsPanelDriver.start_application
      before = OptionsPanelDriver.image_types
      Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN).show
      OptionsPanelDriver.process_events
      puts before.size > 100, before == OptionsPanelDriver.image_types, before.include?("bmp")
    RUBY
    assert_equal %w[true true true], out.split, "ImageMagick's over 100, all back, bmp among them; #{err}"
  end

  # The toolkit starts helper daemons as child processes; the script's own
  # children must still be reaped by Ruby afterwards.
  def test_scripts_can_still_run_child_processes
    Driver.screenshot(File.join(Dir.tmpdir, "optionspanel-child-check.png"))
    assert_equal true, Thread.new { system("true") }.join(30)&.value, "system returned true within 30 s"
  end

  # Copying a script's text into the panel can run out of memory in C++; that
  # must reach the script as NoMemoryError, leaving the panel usable.
  def test_running_out_of_memory_in_a_setter_raises_no_memory_error_and_leaves_no_call_open
    # AddressSanitizer's allocator ends the process instead of throwing bad_alloc.
    skip "the allocator is AddressSanitizer's" if ENV["LD_PRELOAD"].to_s.include?("asan")
    # Room to copy the text once: preset= runs out copying it, populate_presets
    # once the copy is made, while the panel splits it into names. A process
    # each: Ruby 2.7 gives up at a second NoMemoryError in one process.
    { "preset=" => 32, "populate_presets" => 96 }.each do |method, room|
      out, err, status = run_ruby(<<~RUBY)
        panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
        panel.show
        text = "x" * (64 << 20)
        size = File.read("/proc/self/status")[/VmSize:\\s+(\\d+)/, 1].to_i * 1024
        hard = Process.getrlimit(:AS)[1]
        begin
          Process.setrlimit(:AS, size + (#{room} << 20), hard)
          panel.public_send(#{method.inspect}, text)
        rescue NoMemoryError => e
          puts e.class
        ensure
          Process.setrlimit(:AS, hard, hard)
        end
        p panel.send(:output_format=, "jpg"), OptionsPanelDriver.control(:format)[:cells].map { |c| c[:state] }
        # A failing observer is still reported: no call is left open to hold its error.
        panel.observe(Class.new { define_method(:close) { |_| raise "observer failed" } }.new)
        OptionsPanelDriver.click(:close)
      RUBY
      assert status.success?, err
      assert_equal ["NoMemoryError", "true", "[0, 1, 0]"], out.lines.map(&:chomp), method
      assert_match(/observer failed/, err, method)
    end
  end
end
