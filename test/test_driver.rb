require_relative "test_helper"

# The driver as a plugin's tests use it: it acts only where a user can, says
# why when it cannot, and lets observers' exceptions reach the test.
class DriverTest < Minitest::Test
  include PanelTest

  # Raises the exception armed for an event, once; observers can't be removed,
  # so one is registered for the whole run and disarmed after each test.
  class Failing
    attr_reader :armed

    def initialize
      @armed = {}
    end

    %w[options_changed close].each do |event|
      define_method(event) do |_payload|
        failure = @armed.delete(event)
        raise failure if failure
      end
    end
  end

  FAILING = Failing.new
  Velmar::OptionsPanelWindow.new(TEXTS).observe(FAILING)

  def setup
    reset_panel
  end

  def teardown
    FAILING.armed.clear
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
    image_tab = '"tab1", which is not showing'
    {
      "width" => [-> { Driver.type(:width, "5") },
                             -> { Driver.replace(:width, "5") },
                             -> { Driver.clear(:width) },
                             -> { Driver.press_return(:width) }],
      "transparent_background" => [-> { Driver.click(:transparent_background) }, -> { Driver.press(:transparent_background) },
                           -> { Driver.click_later(:transparent_background, 0) }],
      "size_mode" => [-> { Driver.click_cell(:size_mode, 0) }],
      "size" => [-> { Driver.pick(:size, 1) }]
    }.each do |name, steps|
      steps.each { |step| assert_equal "#{name} is on the tab #{image_tab}", refusal(&step) }
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

  def test_slide_leaves_the_slider_where_the_drag_ends_and_ok_reports_it
    Driver.choose_tab(1)
    Driver.slide(:intensity, 80)
    Driver.slide(:exposure, 250) # dragged past the end
    assert_equal [80, 100], %i[intensity exposure].map { |s| control(s)[:value] }
    assert_equal [80, 100], press_ok["environment_changed"][4, 2]
  end

  def test_type_adds_at_the_end_and_replace_types_over_the_text
    Driver.click_cell(:size_mode, 1) # Fixed
    Driver.replace(:width, "640")
    assert_equal "640", text_of(:width)
    Driver.type(:width, "0")
    assert_equal "6400", text_of(:width)
    Driver.replace(:height, "")
    assert_equal "", text_of(:height)
    Driver.replace(:height, "720")
    assert_equal %w[fixed 6400 720], press_ok["output_changed"].first(3)
  end

  def test_observer_exceptions_are_printed_unless_the_test_asks_for_them
    FAILING.armed["options_changed"] = KeyError.new("printed")
    _, err = capture_io { Driver.click(:ok) }
    assert_match(/printed \(KeyError\)/, err)
    assert_equal OK_EVENTS, LOG.names

    reset_panel
    Driver.raise_observer_errors = true
    assert Driver.raise_observer_errors?
    FAILING.armed.update("options_changed" => KeyError.new("raised"),
                         "close" => IndexError.new("second"))
    error = nil
    _, err = capture_io { error = assert_raises(KeyError) { Driver.click(:ok) } }
    assert_equal "raised", error.message
    assert_match(/second \(IndexError\)/, err, "later ones are printed")
    assert_equal OK_EVENTS, LOG.names, "the other observers heard every event"
    refute Driver.window_state[:visible], "OK still closed the panel"
  end
end
