require_relative "test_helper"
require "tmpdir"
require_relative "../examples/texts/de"
require_relative "../examples/texts/ja"

# docs/API.md against the extension, so that the reference cannot drift: its
# tables of methods, events, payloads, text keys and driver functions, its
# order of events on OK, and its example test, which is run.
class ApiDocsTest < Minitest::Test
  include PanelTest

  DOC = File.read(File.expand_path("../docs/API.md", __dir__))

  # The text under a heading, up to the next heading of any level.
  def section(heading)
    DOC[/^#+ #{Regexp.escape(heading)}\n(.*?)(?=^#+ |\z)/m, 1] || flunk("no section #{heading.inspect}")
  end

  # The rows of the n-th table of a section (0 first), header and rule left out,
  # as arrays of cell texts; "\|" is a bar inside a cell.
  def table(heading, n = 0)
    tables = section(heading).lines.chunk_while { |a, b| a.start_with?("|") && b.start_with?("|") }
                             .select { |lines| lines.first.start_with?("|") }
    rows = tables.fetch(n) { flunk("#{heading}: no table #{n}") }.drop(2)
    rows.map { |row| row.strip.delete_prefix("|").delete_suffix("|").split(/(?<!\\)\|/).map(&:strip) }
  end

  def code(cell)
    cell[/\A`([^`]+)`/, 1] || flunk("no code in #{cell.inspect}")
  end

  # A call as the table writes it, to the method name and its arity.
  def method_of(call)
    case call
    when /\Anew\((\w+)\)\z/ then [:initialize, 1]
    when /\A(\w+) = \w+\z/ then [:"#{$1}=", 1]
    when /\A([\w?]+)(?:\(([^)]*)\))?\z/ then [$1.to_sym, $2.to_s.split(",").size]
    else flunk "not a call: #{call.inspect}"
    end
  end

  def test_the_method_table_lists_every_method_once
    documented = table("Methods").map { |row| method_of(code(row[0])) }
    assert_equal documented.size, documented.to_h.size, "each method once"
    assert_equal SCRIPT_METHODS.sort, documented.sort
  end

  # Every event and payload that the panel sends, by event name.
  def sent_events
    p = reset_panel
    events = press_ok
    LOG.clear
    p.public_send(:hide_render_all=, :anything)
    events.merge(LOG.events.to_h)
  end

  def test_the_event_table_and_payload_tables_are_what_observers_receive
    sent = sent_events
    documented = table("Events").to_h { |row| [code(row[0]), Integer(row[1])] }
    assert_equal sent.transform_values(&:size).sort, documented.sort
    ruby_class = { "String" => String, "Integer" => Integer, "Float" => Float, "any" => Object }
    sent.each do |event, payload|
      rows = table("Payload of `#{event}`")
      assert_equal (0...payload.size).to_a, rows.map { |r| Integer(r[0]) }, event
      rows.zip(payload).each do |row, element|
        assert_kind_of ruby_class.fetch(row[1]), element, "#{event}[#{row[0]}]"
      end
    end
  end

  def test_the_order_of_events_on_ok
    documented = section("Order of events on OK").scan(/^\d+\. `(\w+)`$/).flatten
    reset_panel
    assert_equal documented, press_ok.keys
    assert_equal OK_EVENTS, documented
  end

  def test_the_text_table_lists_every_key_in_order_with_its_english_text
    rows = table("Text table")
    assert_equal OptionsPanelTexts::EN.keys, rows.map { |row| code(row[0]) }
    assert_equal OptionsPanelTexts::EN.values, rows.map { |row| row[2] }
    assert_equal OptionsPanelTexts::EN.keys, OptionsPanelTexts::DE.keys
    assert_equal OptionsPanelTexts::EN.keys, OptionsPanelTexts::JA.keys
  end

  def test_the_driver_tables_name_real_controls_by_both_names_and_every_function
    rows = table("Testing a plugin with the driver", 0)
    names = rows.to_h { |row| [code(row[0]).to_sym, code(row[1]).to_sym] }
    assert_equal Driver.control_names.to_a, names.to_a, "the names table is the driver's, in order"
    reset_panel
    names.each do |name, controller_name|
      assert_equal Driver.control(controller_name), Driver.control(name), "#{name} is #{controller_name}"
    end
    functions = Driver.singleton_methods.to_h { |m| [m, Driver.method(m).arity] }
    documented = table("Testing a plugin with the driver", 1).map { |row| method_of(code(row[0])) }
    assert_equal functions.sort, documented.sort
  end

  # The example runs as a plugin author would run it, in a process of its own.
  def test_the_example_test_passes
    example = section("Testing a plugin with the driver")[/```ruby\n(.*?)```/m, 1]
    plugin = File.expand_path("../examples/render_settings_plugin", __dir__)
    example = example.sub('require_relative "../examples/render_settings_plugin"', "require #{plugin.inspect}")
    Dir.mktmpdir do |dir|
      path = File.join(dir, "render_settings_test.rb")
      File.write(path, example)
      out, err, status = Open3.capture3("timeout", "120", RbConfig.ruby, "-I", BUILD_DIR, path)
      assert status.success?, out + err
      assert_match(/1 runs, \d+ assertions, 0 failures, 0 errors/, out)
    end
  end
end
