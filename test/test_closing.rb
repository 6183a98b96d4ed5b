require_relative "test_helper"

# Showing and the four ways of closing, each reported exactly once.
class ClosingTest < Minitest::Test
  include PanelTest

  def setup
    reset_panel
  end

  def closes_after
    LOG.clear
    yield
    LOG.names
  end

  def test_each_way_of_closing_sends_one_close
    ways = {
      script: -> { panel.close },
      close_button: -> { Driver.click(:close) },
      close_box: -> { Driver.close_box },
      ok: -> { Driver.click(:ok) },
    }
    ways.each do |way, close|
      panel.show
      names = closes_after(&close)
      assert_equal "close", names.last, way
      assert_equal 1, names.count("close"), way
      assert_equal [1.0], LOG.payload("close"), way
      assert_instance_of Float, LOG.payload("close").first
      refute Driver.window_state[:visible], way
    end
  end

  def test_closing_a_closed_panel_sends_nothing
    panel.close
    assert_empty closes_after { panel.close }
    assert_empty closes_after { Driver.process_events }
    panel.show
    assert_equal ["close"], closes_after { Driver.close_box }
  end

  def test_show_raises_to_the_modal_panel_level_and_sends_nothing
    panel.close
    assert_empty closes_after { panel.show; panel.show }
    state = Driver.window_state
    assert state[:visible]
    assert state[:key]
    assert_equal Driver.modal_panel_level, state[:level]
  end

  def test_a_closed_panel_keeps_its_state_and_takes_setters
    Driver.click_cell(:size_mode, 1)
    Driver.type(:width, "77")
    Driver.choose_tab(1)
    Driver.click(:caustics)
    panel.close
    panel.set_environment_clay(true)
    panel.show
    assert_equal [0, 1, 0], cell_states(:size_mode)
    assert_equal "077", text_of(:width)
    assert_equal 1, control(:caustics)[:state]
    assert_equal 1, control(:clay)[:state]
    assert_equal [false, true], Driver.tabs.map { |t| t[:selected] }
  end

  # AppKit hides a panel while its application is in the background; closing it
  # then is still a closing, reported once.
  def test_a_panel_hidden_with_its_application_still_closes
    Driver.hide_as_inactive
    refute Driver.window_state[:visible]
    assert_equal ["close"], closes_after { panel.close }
    assert_empty closes_after { panel.close }
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
      panel.send(:hide_render_all=, true)
    RUBY
    assert status.success?, err
    assert_equal ["false", "at_exit ran"], out.lines.map(&:chomp)
  end
end
