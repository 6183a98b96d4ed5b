require_relative "test_helper"

# Every way an observer can leave its event (raise, throw, exit, a signal, a
# break), during a script's call and during the user's action: what the script
# and the process see afterwards.
class ObserverJumpsTest < Minitest::Test
  include PanelTest

  # Calls the block for every event until retired; observers can't be removed.
  class Hook
    def initialize(&block)
      @block = block
      @live = true
    end

    %w[preset_changed output_changed environment_changed options_changed
       options_changed_show_render_all close].each do |event|
      define_method(event) { |payload| @block.call(event, payload) }
    end

    def retire
      @live = false
    end

    def respond_to?(name, include_private = false)
      @live && super
    end
  end

  def setup
    reset_panel
    @heard = []
    @hooks = []
  end

  def teardown
    quiet
  end

  # Retires this test's observers so far.
  def quiet
    @hooks.each(&:retire)
    @heard.clear
  end

  def hook(&block)
    @hooks << Hook.new(&block)
    panel.observe(@hooks.last)
  end

  # Hears every event in @heard, then does what the block says on `event`.
  def on(event, &action)
    heard = @heard
    hook do |name, payload|
      heard << name
      action.call(payload) if name == event
    end
  end

  # A second observer after the jumping one: it shows whether the event went on.
  def listen
    heard = @heard
    hook { |name, _| heard << "later #{name}" }
  end

  def panel_open?
    Driver.window_state[:visible]
  end

  def test_a_raise_keeps_its_rules_the_event_goes_on
    on("close") { raise ArgumentError, "from close" }
    listen
    error = assert_raises(ArgumentError) { panel.close }
    assert_equal "from close", error.message
    assert_equal ["close", "later close"], @heard

    panel.show
    @heard.clear
    _, err = capture_io { assert_nil Driver.click(:close) }
    assert_match(/from close \(ArgumentError\)/, err)
    assert_equal ["close", "later close"], @heard
  end

  def test_a_throw_during_a_script_call_resumes_at_its_catch
    on("close") { |payload| throw :leave, payload }
    listen
    after = []
    result = catch(:leave) do
      panel.close
      after << :close_returned
    end
    assert_equal [1.0], result
    assert_empty after
    assert_equal ["close"], @heard
    refute panel_open?
  end

  def test_a_throw_during_the_users_action_resumes_at_its_catch
    on("output_changed") { |payload| throw :leave, payload[0] }
    listen
    result = catch(:leave) do
      Driver.click(:ok)
      :click_returned
    end
    assert_equal "viewport", result
    assert_equal %w[preset_changed later\ preset_changed output_changed], @heard
    refute panel_open?, "OK still closes the panel"

    panel.show
    @heard.clear
    result = catch(:leave) { Driver.close_box }
    assert_nil result, "close sends no output_changed"
    assert_equal ["close", "later close"], @heard
  end

  # As when an ensure clause throws while an exception is on its way: the
  # throw goes on, and a script call drops the exception it held.
  def test_a_throw_after_an_observers_exception_still_reaches_its_catch
    on("close") { raise KeyError, "raised first" }
    on("close") { throw :leave, :thrown }
    result = nil
    _, err = capture_io { result = catch(:leave) { panel.close } }
    assert_equal :thrown, result
    assert_empty err

    panel.show
    _, err = capture_io { result = catch(:leave) { Driver.click(:close) } }
    assert_equal :thrown, result
    assert_match(/raised first \(KeyError\)/, err)
  end

  def test_a_throw_passes_the_catches_nested_inside_its_own
    on("close") { throw :outer, :thrown }
    inner_done = false
    result = catch(:outer) do
      catch(:inner) { panel.close }
      inner_done = true
    end
    assert_equal :thrown, result
    refute inner_done

    panel.show
    result = catch(:outer) do
      catch(:inner) { Driver.click(:close) }
      inner_done = true
    end
    assert_equal :thrown, result
    refute inner_done
  end

  # An observer that closes the panel from its own event: the inner close is
  # a script call inside the user's action, and the throw goes on through both.
  def test_a_throw_from_an_event_inside_an_event_reaches_the_outer_catch
    on("preset_changed") { panel.close }
    on("close") { throw :leave, :from_inner_close }
    result = catch(:leave) { Driver.click(:ok) }
    assert_equal :from_inner_close, result
    assert_equal %w[preset_changed close close], @heard
    refute panel_open?
  end

  def test_exit_and_signals_during_a_script_call_leave_from_the_call
    on("close") { exit 5 }
    listen
    error = assert_raises(SystemExit) { panel.close }
    assert_equal 5, error.status
    assert_equal ["close"], @heard

    quiet
    on("options_changed_show_render_all") { raise Interrupt }
    listen
    assert_raises(Interrupt) { panel.send(:hide_render_all=, 1) }
    assert_equal ["options_changed_show_render_all"], @heard
  end

  def test_exit_and_signals_during_the_users_action_leave_when_it_returns
    on("environment_changed") { exit 6 }
    listen
    error = assert_raises(SystemExit) { Driver.click(:ok) }
    assert_equal 6, error.status
    assert_equal %w[preset_changed later\ preset_changed output_changed later\ output_changed
                    environment_changed], @heard
    refute panel_open?

    quiet
    panel.show
    # Ctrl-C while an observer waits: Ruby raises Interrupt inside it.
    on("close") do
      Process.kill(:INT, Process.pid)
      sleep 5
    end
    assert_raises(Interrupt) { Driver.close_box }
    assert_equal ["close"], @heard
    refute panel_open?
  end

  # Calls the block on close; a break in it leaves the method that the block
  # was given to.
  def closing_with(trigger, &block)
    hook { |name, payload| block.call(payload) if name == "close" }
    listen
    trigger.call
    :closing_returned
  ensure
    quiet
  end

  def test_a_break_from_a_proc_observer_leaves_the_method_it_was_given_to
    result = closing_with(-> { panel.close }) { |payload| break [:broke, payload] }
    assert_equal [:broke, [1.0]], result
    refute panel_open?

    panel.show
    result = closing_with(-> { Driver.click(:close) }) { |payload| break [:broke, payload] }
    assert_equal [:broke, [1.0]], result
    refute panel_open?
  end

  def test_exit_during_ok_ends_a_plain_ruby_process_with_its_status
    script = PanelTest.observed_panel("exit 3")
    out, err, status = run_ruby("#{script}\nOptionsPanelDriver.click(:ok)\nputs 'after the click'\n")
    assert_equal 3, status.exitstatus, err
    assert_equal ["at_exit ran"], out.lines.map(&:chomp)
  end
end
