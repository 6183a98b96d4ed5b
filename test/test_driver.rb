require_relative "test_helper"

# The driver as a plugin's tests use it: it acts only where a user can, says
# why when it cannot, and lets observers' exceptions reach the test.
class DriverTest < Minitest::Test
  include PanelTest

  def setup
    reset_panel
  end

  def refusal(step, *args)
    assert_raises(RuntimeError) { Driver.public_send(step, *args) }.message
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
    [[:type, :width, "5"], [:replace, :width, "5"], [:clear, :width], [:press_return, :width],
     [:click, :transparent_background], [:press, :transparent_background],
     [:click_later, :transparent_background, 0], [:click_cell, :size_mode, 0],
     [:pick, :size, 1]].each do |step|
      assert_equal "#{step[1]} is on tab 0 (\"Image\"), which is not showing", refusal(*step)
    end
    Driver.choose_tab(0)
    assert_equal 'intensity is on tab 1 ("Environment"), which is not showing', refusal(:slide, :intensity, 10)
    assert_equal 'the button "Reset" is on tab 1 ("Environment"), which is not showing',
                 refusal(:click_titled, 1, TEXTS.fetch("opt-tab2-reset-btn"))
    Driver.choose_tab(1)
    Driver.process_events
    assert_equal before, user_state, "nothing changed"
    assert_empty LOG.events
    assert_equal 50, control(:intensity)[:value], "reading reaches any tab"
  end

  def test_every_other_refusal_names_the_control_and_says_why
    before = user_state
    { "width is disabled" => [:type, :width, "5"], # Viewport
      "no control named okk (nearest: ok)" => [:click, :okk],
      "no control named Clay (nearest: clay)" => [:control, "Clay"],
      "no control named fooBar (nearest: format, folder)" => [:type, :fooBar, "5"],
      "size_mode has no cell 7" => [:click_cell, :size_mode, 7],
      "size_mode has no cell -1" => [:click_cell, :size_mode, -1],
      "preset has no item 3" => [:pick, :preset, 3], "tabs has no tab 2" => [:choose_tab, 2],
      "ok is not a text field" => [:type, :ok, "5"], "width is not a button" => [:click, :width],
      "transparent_background is not a radio group" => [:click_cell, :transparent_background, 0],
      "size_mode is not a list" => [:pick, :size_mode, 0], "ok is not a slider" => [:slide, :ok, 5],
      'no button titled "Nope" on tab 0' => [:click_titled, 0, "Nope"],
      "no key hyper+q" => [:key, "hyper+q"], "no key ctrl+" => [:key, "ctrl+"] }.each do |message, step|
      assert_equal message, refusal(*step)
    end
    assert_equal before, user_state, "nothing changed"
    assert_empty LOG.events
  end

  def test_nothing_acts_on_a_closed_panel_or_from_another_thread
    Driver.click(:close)
    LOG.clear
    before = user_state
    [[:click, :ok], [:press, :clay], [:click_cell, :background, 1], [:choose_tab, 1], [:close_box],
     [:click_titled, 0, "..."]].each do |step|
      name = { choose_tab: "tabs", close_box: "the close box", click_titled: 'the button "..."' }.fetch(step[0], step[1])
      assert_equal "#{name} is not on screen: the panel is closed", refusal(*step)
    end
    panel.show
    [[:click, :ok], [:control_names], [:reset], [:window_state]].each do |step|
      thread = Thread.new do
        Thread.current.report_on_exception = false # the join below sees it
        Driver.public_send(*step)
      end
      assert_raises(ThreadError) { thread.join }
    end
    assert_equal before, user_state, "nothing changed"
    assert_empty LOG.events
    assert_equal "cannot write the screenshot to /no/such/folder/a.png", refusal(:screenshot, "/no/such/folder/a.png")
  end

  # A plugin's next test starts from a new panel that no earlier observer hears.
  def test_reset_forgets_observers_and_puts_back_a_new_panel
    heard = []
    hook { |event, _| heard << event }
    Driver.click_cell(:format, 0)
    Driver.click(:transparent_background)
    panel.set_output_dimensions("fixed", 640, 480, 800, 600)
    Driver.choose_tab(1)
    Driver.slide(:intensity, 10)
    # Moved on the screen, as a person drags it.
    system("xdotool", "search", "--name", TEXTS["opt-window-title"], "windowmove", "40", "50", exception: true)
    handle_events_until("the panel moved") { Driver.window_state[:frame].first(2) != [300, 400] }
    Driver.reset
    refute Driver.window_state[:visible]
    panel.show
    panel.preset = "Draft" # a name of the list before the reset
    assert_equal [[[1, 0, 0], [1, 0, 0]], "", 50, 0, [true, false]], user_state
    assert_equal [[], "", [], false, true],
                 [control(:preset)[:items], text_of(:preset), heard, enabled?(:width), enabled?(:transparent_background)]
    assert_equal [300, 400], Driver.window_state[:frame].first(2)
    # Panorama with no height falls back on the viewport's size, which a new panel does not know.
    Driver.click_cell(:size_mode, 2)
    assert_equal %w[0 0], [text_of(:width), text_of(:height)]
  ensure
    panel.observe(LOG)
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
    assert_equal [%w[fixed 6400 720], [80, 100]],
                 [events["output_changed"].first(3), events["environment_changed"][4, 2]]
  end

  # Without raise_observer_errors they are printed: test_observers.rb shows that.
  def test_keys_reach_the_focused_control_as_a_persons_do
    Driver.click_cell(:size_mode, 1) # Fixed: the fields are enabled
    Driver.key("shift+Tab") until Driver.focused == "size_mode"
    assert_equal %w[size width], %w[Tab Tab].map { |key| Driver.key(key) || Driver.focused }
    # Over the selection, then the caret moved left, the digit before it deleted, the next
    # one selected with Shift and typed over; a chord types nothing; Up and Down go to
    # the field's start and end.
    %w[ctrl+a 2 0 4 8 Left BackSpace shift+Left 5 cmd+q ctrl+w Up 1 Down 9].each { |key| Driver.key(key) }
    assert_equal "12589", text_of(:width)
    Driver.key("ctrl+Tab")
    assert_equal "background", Driver.focused
    # The focused field disabled by a script while the panel is closed: the
    # panel opens with the focus on its first control, not on nothing.
    Driver.key("ctrl+Tab")
    Driver.key("Tab") until Driver.focused == "width"
    Driver.click(:close)
    panel.set_output_dimensions("viewport", 0, 0, 0, 0)
    panel.show
    assert_equal "size_mode", Driver.focused
  end

  def test_observer_exceptions_are_raised_when_the_test_asks_for_them
    failures = { "options_changed" => KeyError.new("raised"), "close" => IndexError.new("second") }
    hook { |event, _| raise failures[event] if failures[event] }
    Driver.raise_observer_errors = true
    assert Driver.raise_observer_errors?
    error = nil
    _, err = capture_io { error = assert_raises(KeyError) { Driver.click(:ok) } }
    assert_equal "raised", error.message
    assert_match(/second \(IndexError\)/, err, "later ones are printed")
    assert_equal OK_EVENTS, LOG.names, "the other observers heard every event"
    refute Driver.window_state[:visible], "OK still closed the panel"
  ensure
    Driver.raise_observer_errors = false
  end
end
