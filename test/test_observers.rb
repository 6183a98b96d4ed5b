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
    assert_same object, heard.last.last.first
  end

  def test_ok_events_reach_only_public_methods_named_after_them_in_one_shared_array
    only_close = Class.new { attr_reader :got; def close(p); (@got ||= []) << p; end }.new
    private_close = Class.new { attr_reader :got; private def close(p); @got = p; end }.new
    [only_close, private_close].each { |o| panel.observe(o) }
    observe(:a) { |e, pl| pl << :added_by_a if e == "preset_changed" }
    observe(:b)
    press_ok
    assert_equal OK_EVENTS, calls_of(:a)
    assert_equal [[1.0]], only_close.got
    assert_nil private_close.got
    a, b = calls("preset_changed")
    assert_same a[2], b[2]
    assert_equal ["Default", :added_by_a], b[2]
    refute Driver.window_state[:visible]
  ensure
    [only_close, private_close].each { |o| o.define_singleton_method(:respond_to?) { |*| false } }
  end

  def test_an_observer_added_during_a_dispatch_hears_only_later_events
    late = nil
    observe(:a) { |e, _| late ||= observe(:late) if e == "preset_changed" }
    press_ok
    assert_equal OK_EVENTS.drop(1), calls_of(:late)
  end

  def test_an_event_sent_inside_a_dispatch_is_delivered_completely_first
    observe(:a) { |e, _| panel.send(:hide_render_all=, true) if e == "output_changed" }
    observe(:b)
    Driver.click(:ok)
    order = @journal.map { |t, e, _| [t, e] }
    i = order.index([:a, "output_changed"])
    assert_equal [[:a, "options_changed_show_render_all"], [:b, "options_changed_show_render_all"],
                  [:b, "output_changed"]], order[i + 1, 3]
  end

  def test_an_observer_closing_the_panel_during_ok_gets_exactly_one_close
    observe(:a) { |e, _| panel.close if e == "preset_changed" }
    Driver.click(:ok)
    events = calls_of(:a)
    assert_equal 1, events.count("close")
    assert_equal %w[output_changed environment_changed options_changed], events.last(3)
    refute Driver.window_state[:visible]
  end

  def test_a_failing_observer_stops_neither_the_others_nor_the_ok_step
    observe(:bad) { |e, _| raise ArgumentError, "broken #{e}" }
    wrong_arity = Class.new { def preset_changed; end }.new
    panel.observe(wrong_arity)
    observe(:good)
    _, err = capture_io { press_ok }
    assert_equal OK_EVENTS, calls_of(:good)
    refute Driver.window_state[:visible]
    OK_EVENTS.each { |e| assert_match(/broken #{e} \(ArgumentError\)/, err) }
    assert_match(/wrong number of arguments \(given 1, expected 0\) \(ArgumentError\)/, err)
    assert_match(/test_observers\.rb:\d+/, err, "the report carries the backtrace")
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
    observe(:bare) { |e, _| raise BareError, "no full message" if e == "close" }
    _, err = capture_io { Driver.click(:close) }
    assert_match(/\A\S*test_observers\.rb:\d+:in .*: no full message \(ObserversTest::BareError\)\n\tfrom \S+:\d+:in /,
                 err)
    panel.show
    observe(:traceless) { |e, _| raise TracelessError, "no trace" if e == "close" }
    _, err = capture_io { Driver.click(:close) }
    assert_match(/^no trace \(ObserversTest::TracelessError\)$/, err)
  end
end
