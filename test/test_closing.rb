require_relative "test_helper"

# Showing and the ways of closing, each reported exactly once.
class ClosingTest < Minitest::Test
  include PanelTest

  def setup
    reset_panel
  end

  def events_of
    LOG.clear
    yield
    LOG.events
  end

  # OK's close comes last: press_ok checks the order of its events.
  def test_each_way_of_closing_sends_one_close_and_a_closed_panel_none
    ways = { script: -> { panel.close }, close_button: -> { Driver.click(:close) },
             close_box: -> { Driver.close_box }, ok: -> { Driver.click(:ok) } }
    ways.each do |way, close|
      panel.show
      assert_equal [["close", [1.0]]], events_of(&close).select { |name, _| name == "close" }, way
      refute Driver.window_state[:visible], way
      assert_empty events_of { panel.close }, "#{way}: closing a closed panel"
    end
  end

  # Each edit of a field leaves the caret's blink timer where only a modal
  # session would drop it: closing drops it, however many sessions a host runs.
  def test_sessions_of_edits_leave_no_timers_behind
    counts = Array.new(3) do
      panel.show
      Driver.click_cell(:size_mode, 1) # Fixed: the fields take typing
      Driver.type(:width, "1")
      Driver.type(:height, "2")
      Driver.click(:close)
      Driver.run_loop_timers
    end
    assert_equal counts.first, counts.last
  end

  # What the user set survives closing (a setter reaching the closed panel is
  # test_script_class.rb's), and showing it again sends nothing and raises it
  # to the modal panel level.
  def test_a_closed_panel_keeps_its_state_and_shows_again_quietly
    Driver.click_cell(:size_mode, 1)
    Driver.type(:width, "77")
    Driver.choose_tab(1)
    Driver.click(:caustics)
    panel.close
    assert_empty events_of { 2.times { panel.show } }
    assert_equal [true, true, Driver.modal_panel_level], Driver.window_state.values_at(:visible, :key, :level)
    assert_equal [[0, 1, 0], "77", 1, [false, true]],
                 [cell_states(:size_mode), text_of(:width), control(:caustics)[:state],
                  Driver.tabs.map { |t| t[:selected] }]
  end

  # AppKit hides a panel while its application is in the background; closing it
  # then is still a closing, reported once.
  def test_a_panel_hidden_with_its_application_still_closes
    Driver.hide_as_inactive
    refute Driver.window_state[:visible]
    assert_equal ["close"], events_of { panel.close }.map(&:first)
    assert_empty events_of { panel.close }
  end

  # AppKit closes every window as the application terminates, while the host may
  # already be stopping its interpreter: nothing reaches the observers then.
  def test_nothing_is_sent_once_the_application_terminates
    out, err, status = run_ruby(<<~RUBY)
      #{PanelTest.observed_panel('')}
      OptionsPanelDriver.announce_termination
      OptionsPanelDriver.close_box
      p OptionsPanelDriver.window_state[:visible]
      panel.show
      panel.close
    RUBY
    assert status.success?, err
    assert_equal ["false", "at_exit ran"], out.lines.map(&:chomp)
  end
end
