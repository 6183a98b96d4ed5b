require_relative "test_helper"

# Every way but a raise (test_observers.rb's) that an observer can leave its
# event (throw, exit, a signal, a break), during a script's call and during the
# user's action: what the script and the process see afterwards.
class ObserverJumpsTest < Minitest::Test
  include PanelTest

  def setup
    reset_panel
    @heard = []
  end

  # Hears every event in @heard, then does what the block says on `event`.
  def on(event, &action)
    hook do |name, payload|
      @heard << name
      action.call(payload) if name == event
    end
  end

  # Runs the block with `action` on `event` and a later observer that shows
  # whether the event went on; returns the block's result, what was heard and
  # whether the panel is open. This test's observers go quiet afterwards.
  def leaving(event, action)
    on(event, &action)
    hook { |name, _| @heard << "later #{name}" }
    [yield, @heard.dup, Driver.window_state[:visible]]
  ensure
    @hooks.each(&:retire)
    @heard.clear
  end

  # A throw from the event: what the catch got, whether code after the inner
  # catch ran, what was heard and whether the panel is open.
  def throw_from(event, trigger)
    inner_left = false
    result, heard, open = leaving(event, ->(payload) { throw :outer, payload }) do
      catch(:outer) do
        catch(:inner) { trigger.call }
        inner_left = true
      end
    end
    [result, inner_left, heard, open]
  end

  # The throw passes the catches inside its own; it stops its event's delivery,
  # and OK still closes the panel.
  def test_a_throw_resumes_at_its_catch
    assert_equal [[1.0], false, ["close"], false], throw_from("close", -> { panel.close }), "script call"
    panel.show
    assert_equal [[1.0], false, ["close"], false], throw_from("close", -> { Driver.click(:close) }), "click"
    panel.show
    output, *rest = throw_from("output_changed", -> { Driver.click(:ok) })
    assert_equal "viewport", output[0]
    assert_equal [false, %w[preset_changed later\ preset_changed output_changed], false], rest
  end

  # As when an ensure clause throws while an exception is on its way: the
  # throw goes on, and a script call drops the exception it held.
  def test_a_throw_after_an_observers_exception_still_reaches_its_catch
    on("close") { raise KeyError, "raised first" }
    on("close") { throw :leave, :thrown }
    assert_equal ["thrown", ""], capture_io { print catch(:leave) { panel.close } }
    panel.show
    out, err = capture_io { print catch(:leave) { Driver.click(:close) } }
    assert_equal "thrown", out
    assert_match(/raised first \(KeyError\)/, err)
  end

  # An observer that closes the panel from its own event: the inner close is
  # a script call inside the user's action, and the throw goes on through both.
  def test_a_throw_from_an_event_inside_an_event_reaches_the_outer_catch
    on("preset_changed") { panel.close }
    on("close") { throw :leave, :from_inner_close }
    assert_equal :from_inner_close, catch(:leave) { Driver.click(:ok) }
    assert_equal %w[preset_changed close close], @heard
    refute Driver.window_state[:visible]
  end

  # The exception that exit or a signal from the event raises, what was heard
  # and whether the panel is open.
  def jump_from(event, trigger, &action)
    leaving(event, action) { assert_raises(SignalException, SystemExit) { trigger.call } }
  end

  # From a script call they leave at once; from the user's action, once the
  # action returns, its event cut short and the panel closed.
  def test_exit_and_signals_leave_from_the_call_or_the_users_action
    error, heard = jump_from("close", -> { panel.close }) { exit 5 }
    assert_equal [5, ["close"]], [error.status, heard]
    event = "options_changed_show_render_all"
    error, heard = jump_from(event, -> { panel.send(:hide_render_all=, 1) }) { raise Interrupt }
    assert_equal [Interrupt, [event]], [error.class, heard]

    panel.show
    error, heard, open = jump_from("environment_changed", -> { Driver.click(:ok) }) { exit 6 }
    assert_equal [6, %w[preset_changed later\ preset_changed output_changed later\ output_changed
                        environment_changed], false], [error.status, heard, open]
    panel.show
    # Ctrl-C while an observer waits: Ruby raises Interrupt inside it, which
    # ends the wait however long the signal takes to come.
    error, heard, open = jump_from("close", -> { Driver.close_box }) do
      Process.kill(:INT, Process.pid)
      sleep
    end
    assert_equal [Interrupt, ["close"], false], [error.class, heard, open]
  end

  # A break in the block given to this method, called on close, leaves it.
  def closing_with(trigger, &block)
    leaving("close", block) { trigger.call }
    :closing_returned
  end

  def test_a_break_from_a_proc_observer_leaves_the_method_it_was_given_to
    [-> { panel.close }, -> { Driver.click(:close) }].each do |trigger|
      panel.show
      assert_equal [:broke, [1.0]], closing_with(trigger) { |payload| break [:broke, payload] }
      refute Driver.window_state[:visible]
    end
  end
end
