require_relative "test_helper"
Dir[File.expand_path("../examples/texts/*.rb", __dir__)].sort.each { |table| require table }

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
  # as arrays of cell texts, a cell that is all code as that code; "\|" is a bar inside a cell.
  def table(heading, n = 0)
    rows = section(heading).scan(/(?:^\|.*\n)+/).fetch(n) { flunk("#{heading}: no table #{n}") }.lines.drop(2)
    rows.map { |row| row.strip[1..-2].split(/(?<!\\)\|/).map { |c| c.strip.sub(/\A`([^`]+)`\z/, '\1') } }
  end

  # A call as the tables write it (`new(texts)`, `name = value`, `name(a, b)`)
  # to the method's name and arity.
  def method_of(call)
    call =~ /\A([\w?]+)( = \w+)?(?:\((.*)\))?\z/ || flunk("not a call: #{call}")
    $2 ? [:"#{$1}=", 1] : [$1 == "new" ? :initialize : $1.to_sym, $3.to_s.split(",").size]
  end

  # press_ok checks that the events come in the order OK_EVENTS.
  def test_the_event_payload_and_order_tables_are_what_observers_receive
    reset_panel
    press_ok
    panel.hide_render_all = :anything
    sent = LOG.events.to_h
    assert_equal OK_EVENTS, section("Order of events on OK").scan(/^\d+\. `(\w+)`$/).flatten
    assert_equal sent.transform_values(&:size), table("Events").to_h { |row| [row[0], Integer(row[1])] }
    type = { "String" => String, "Integer" => Integer, "Float" => Float, "any" => Object }
    sent.each do |event, payload|
      rows = table("Payload of `#{event}`")
      assert_equal (0...payload.size).to_a, rows.map { |row| Integer(row[0]) }, event
      rows.zip(payload).each { |row, value| assert_kind_of type.fetch(row[1]), value, "#{event}[#{row[0]}]" }
    end
  end

  def test_the_text_table_lists_every_key_in_order_with_its_english_text
    assert_equal OptionsPanelTexts::EN.to_a, table("Text table").map { |row| [row[0], row[2]] }
    tables = OptionsPanelTexts.constants.map { |name| [name, OptionsPanelTexts.const_get(name).keys] }
    assert_equal tables.map { |name, _| [name, OptionsPanelTexts::EN.keys] }, tables, "every example table has every key"
  end

  # The script class's methods, and the driver's controls, by both names, and functions.
  def test_the_method_and_driver_tables_list_every_method_control_and_function
    assert_equal SCRIPT_METHODS.sort, table("Methods").map { |row| method_of(row[0]) }.sort
    names = table("Testing a plugin with the driver", 0).map { |row| [row[0].to_sym, row[1].to_sym] }
    assert_equal Driver.control_names.to_a, names, "the names table is the driver's, in order"
    reset_panel
    names.each { |name, own| assert_equal Driver.control(own), Driver.control(name), "#{name} is #{own}" }
    documented = table("Testing a plugin with the driver", 1).map { |row| method_of(row[0]) }
    assert_equal Driver.singleton_methods.map { |m| [m, Driver.method(m).arity] }.sort, documented.sort
  end

  # The example runs as a plugin author would run it, in a process of its own.
  def test_the_example_test_passes
    example = section("Testing a plugin with the driver")[/```ruby\n(.*?)```/m, 1]
    # Saved in test/, as the docs say: its require_relative starts from there.
    script = example.sub(/^require_relative "(.*)"$/) { "require #{File.expand_path($1, __dir__).inspect}" }
    out, err, status = Open3.capture3("timeout", "120", RbConfig.ruby, "-I", BUILD_DIR, "-e", script)
    assert status.success? && out.match?(/1 runs, \d+ assertions, 0 failures, 0 errors/), out + err
  end
end
