require_relative "test_helper"

# How events reach observers: order, duplicates, visibility, re-entry and failures.
class ObserversTest < Minitest::Test
  include PanelTest

  def setup
    reset_panel
    @journal = []
  end

  # Records [tag, event, payload] in the journal, then runs the block.
  def observe(tag, &block)
    hook do |event, payload|
      @journal << [tag, event, payload]
      block&.call(event, payload)
    end
  end

  def calls(event)
    @journal.select { |_, e, _| e == event }
  end

  def calls_of(tag)
    @journal.select { |t, _, _| t == tag }.map { |_, e, _| e }
  end

  def test_order_of_registration_duplicates_and_the_very_payload
    a = observe(:a)
    observe(:b)
    panel.observe(a)
    object = Object.new
    [false, nil, object].each { |v| assert_equal true, panel.send(:hide_render_all=, v) }
    heard = calls("options_changed_show_render_all")
    assert_equal %i[a b a] * 3, heard.map(&:first)
    assert_equal [[false]] * 3 + [[nil]] * 3 + [[object]] * 3, heard.map(&:last)
  end

  def test_ok_events_reach_only_public_methods_named_after_them_in_one_shared_array
    only_close = Class.new { attr_reader :got; def close(p); (@got ||= []) << p; end }.new
    private_close = Class.new { attr_reader :got; private def close(p); @got = p; end }.new
    protected_close = Class.new { attr_reader :got; protected def close(p); @got = p; end }.new
    [only_close, private_close, protected_close].each { |o| panel.observe(o) }
    observe(:a) { |e, pl| pl << :added_by_a if e == "preset_changed" }
    observe(:b)
    press_ok
    assert_equal [[1.0]], only_close.got
    assert_nil private_close.got
    assert_nil protected_close.got
    assert_equal [["Default", :added_by_a]], calls("preset_changed").map(&:last).uniq(&:object_id),
                 "a and b got one array, with what a added"
  ensure
    [only_close, private_close, protected_close].each { |o| o.define_singleton_method(:respond_to?) { |*| false } }
  end

  # While OK's preset_changed is on its way, :a adds an observer and closes the
  # panel: that close reaches every observer before :b hears preset_changed,
  # the new one hears only later events, and OK's go on without a second close.
  def test_an_event_sent_inside_a_dispatch_comes_first_and_a_new_observer_hears_later_ones
    observe(:a) do |e, _|
      next unless e == "preset_changed"
      observe(:late)
      panel.close
    end
    observe(:b)
    Driver.click(:ok)
    later = %w[output_changed environment_changed options_changed].product(%i[a b late]).map(&:reverse)
    assert_equal [[:a, "preset_changed"], [:a, "close"], [:b, "close"], [:late, "close"],
                  [:b, "preset_changed"]] + later, @journal.map { |t, e, _| [t, e] }
    refute Driver.window_state[:visible]
  end

  def test_a_failing_observer_stops_neither_the_others_nor_the_ok_step
    observe(:bad) { |e, _| raise ArgumentError, "broken #{e}" }
    wrong_arity = Class.new { def preset_changed; end }.new
    panel.observe(wrong_arity)
    observe(:good)
    _, err = capture_io { press_ok }
    assert_equal OK_EVENTS, calls_of(:good)
    OK_EVENTS.each { |e| assert_match(/broken #{e} \(ArgumentError\)/, err) }
    assert_match(/wrong number of arguments \(given 1, expected 0\) \(ArgumentError\)/, err)
  ensure
    wrong_arity&.define_singleton_method(:respond_to?) { |*| false }
  end

  def test_script_methods_re_raise_the_first_observer_failure_after_delivery
    observe(:bad) { |e, _| raise KeyError, "first #{e}" }
    observe(:worse) { |e, _| raise IOError, "second #{e}" }
    observe(:good)
    error = nil
    _, err = capture_io { error = assert_raises(KeyError) { panel.send(:hide_render_all=, 1) } }
    assert_equal "first options_changed_show_render_all", error.message
    assert_equal ["options_changed_show_render_all"], calls_of(:good)
    assert_match(/second options_changed_show_render_all \(IOError\)/, err)

    error = assert_raises(KeyError) { capture_io { panel.close } }
    assert_equal "first close", error.message
    assert_equal %w[options_changed_show_render_all close], calls_of(:good)
    refute Driver.window_state[:visible]
  end

  # Ruby before 2.5 has no Exception#full_message.
  class BareError < StandardError
    undef_method :full_message
  end

  # An exception may answer backtrace with nil.
  class TracelessError < BareError
    def backtrace; end
  end

  def test_an_exception_without_full_message_is_reported_from_its_parts
    raised_at = __LINE__ + 1 # the report starts where the exception was raised
    observe(:bare) { |e, _| raise BareError, "no full message" if e == "close" }
    _, err = capture_io { Driver.click(:close) }
    assert_match(/\A\S*test_observers\.rb:#{raised_at}:in .*: no full message \(ObserversTest::BareError\)\n\tfrom \S+:\d+:in /,
                 err)
    panel.show
    observe(:traceless) { |e, _| raise TracelessError, "no trace" if e == "close" }
    _, err = capture_io { Driver.click(:close) }
    assert_match(/^no trace \(ObserversTest::TracelessError\)$/, err)
    panel.show
    one_place = BareError.new("one place").tap { |x| x.set_backtrace(["plugin.rb:3"]) }
    observe(:one_place) { |e, _| raise one_place if e == "close" }
    _, err = capture_io { Driver.click(:close) }
    assert_match(/^plugin\.rb:3: one place \(ObserversTest::BareError\)$/, err)
  end
end
