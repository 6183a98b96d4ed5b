require_relative "test_helper"

# The driver as a plugin's tests use it: it acts only where a user can, says
# why when it cannot, and lets observers' exceptions reach the test.
class DriverTest < Minitest::Test
  include PanelTest

  # Raises the exception armed for an event, once.
  FAILURES = {}
  Velmar::OptionsPanelWindow.new(TEXTS).observe(Hook.new { |event, _| raise FAILURES.delete(event) if FAILURES[event] })

  def setup
    reset_panel
  end

  def teardown
    FAILURES.clear
    Driver.raise_observer_errors = false
  end

  def refusal
    assert_raises(RuntimeError) { yield }.message
  end

  def user_state
    [%i[size_mode background].map { |g| cell_states(g) }, text_of(:width),
     control(:intensity)[:value], control(:transparent_background)[:state],
     Driver.tabs.map { |t| t[:selected] }]
  end

  def test_every_step_on_a_tab_that_is_not_showing_is_refused_by_name
    Driver.click_cell(:size_mode, 1) # Fixed: the fields are enabled
    Driver.choose_tab(1)
    LOG.clear
    before = user_state
    steps = { width: [-> { Driver.type(:width, "5") }, -> { Driver.replace(:width, "5") },
                      -> { Driver.clear(:width) }, -> { Driver.press_return(:width) }],
              transparent_background: [-> { Driver.click(:transparent_background) },
                                       -> { Driver.press(:transparent_background) },
                                       -> { Driver.click_later(:transparent_background, 0) }],
              size_mode: [-> { Driver.click_cell(:size_mode, 0) }], size: [-> { Driver.pick(:size, 1) }] }
    steps.each do |name, calls|
      calls.each { |step| assert_equal "#{name} is on the tab \"tab1\", which is not showing", refusal(&step) }
    end
    Driver.choose_tab(0)
    assert_equal 'intensity is on the tab "tab2", which is not showing',
                 refusal { Driver.slide(:intensity, 10) }
    assert_equal 'the button "Reset" is on the tab "tab2", which is not showing',
                 refusal { Driver.click_titled(1, TEXTS.fetch("opt-tab2-reset-btn")) }
    Driver.choose_tab(1)
    Driver.process_events
    assert_equal before, user_state, "nothing changed"
    assert_empty LOG.events
    assert_equal 50, control(:intensity)[:value], "reading reaches any tab"
  end

  def test_every_other_refusal_names_the_control_and_says_why
    before = user_state
    {
      "width is disabled" => -> { Driver.type(:width, "5") }, # Viewport
      "no control named fooBar" => -> { Driver.click(:fooBar) },
      "no control named fooBar " => -> { Driver.control("fooBar ") },
      "size_mode has no cell 7" => -> { Driver.click_cell(:size_mode, 7) },
      "size_mode has no cell -1" => -> { Driver.click_cell(:size_mode, -1) },
      "preset has no item 3" => -> { Driver.pick(:preset, 3) },
      "tabs has no tab 2" => -> { Driver.choose_tab(2) },
      "ok is not a text field" => -> { Driver.type(:ok, "5") },
      "width is not a button" => -> { Driver.click(:width) },
      "transparent_background is not a radio group" => -> { Driver.click_cell(:transparent_background, 0) },
      "size_mode is not a list" => -> { Driver.pick(:size_mode, 0) },
      "ok is not a slider" => -> { Driver.slide(:ok, 5) },
      'no button titled "Nope" on tab 0' => -> { Driver.click_titled(0, "Nope") }
    }.each { |message, step| assert_equal message, refusal(&step) }
    assert_equal before, user_state, "nothing changed"
    assert_empty LOG.events
  end

  # type adds at the end, replace types over the text, slide ends where the drag does.
  def test_type_replace_and_slide_act_as_a_user_and_ok_reports_them
    Driver.click_cell(:size_mode, 1) # Fixed
    Driver.replace(:width, "640")
    Driver.type(:width, "0")
    Driver.replace(:height, "")
    assert_equal ["6400", ""], [text_of(:width), text_of(:height)]
    Driver.replace(:height, "720")
    Driver.choose_tab(1)
    Driver.slide(:intensity, 80)
    Driver.slide(:exposure, 250) # dragged past the end
    events = press_ok
    assert_equal [%w[fixed 6400 720], [80, 100]], [events["output_changed"].first(3), events["environment_changed"][4, 2]]
  end

  def test_observer_exceptions_are_printed_unless_the_test_asks_for_them
    FAILURES["options_changed"] = KeyError.new("printed")
    _, err = capture_io { Driver.click(:ok) }
    assert_match(/printed \(KeyError\)/, err)
    assert_equal OK_EVENTS, LOG.names

    reset_panel
    Driver.raise_observer_errors = true
    assert Driver.raise_observer_errors?
    FAILURES.update("options_changed" => KeyError.new("raised"),
                         "close" => IndexError.new("second"))
    error = nil
    _, err = capture_io { error = assert_raises(KeyError) { Driver.click(:ok) } }
    assert_equal "raised", error.message
    assert_match(/second \(IndexError\)/, err, "later ones are printed")
    assert_equal OK_EVENTS, LOG.names, "the other observers heard every event"
    refute Driver.window_state[:visible], "OK still closed the panel"
  end
end
