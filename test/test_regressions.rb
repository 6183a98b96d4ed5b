require_relative "test_helper"

# Faults that reliability/fuzz.rb found, each kept from coming back.
class RegressionsTest < Minitest::Test
  include PanelTest

  BOM = "\u{FEFF}"

  # GNUstep took a U+FEFF at the start of a script's text for a byte order
  # mark and dropped it: OK then named a preset the script never gave, and a
  # word the panel doesn't know passed for one it knows.
  def test_texts_keep_a_leading_feff
    panel = reset_panel
    name = "#{BOM}Draft"
    panel.populate_presets("#{name}|Draft")
    panel.preset = name
    panel.set_output_directory("custom", "#{BOM}#{BOM}/out")
    panel.set_environment_background("#{BOM}sky")
    panel.output_format = "#{BOM}jpg"
    panel.set_output_dimensions("#{BOM}fixed", 640, 480, 800, 600)
    assert_equal [[0, 0, 1]] * 3, %i[background format size_mode].map { |group| cell_states(group) }
    events = press_ok
    assert_equal [name], events["preset_changed"]
    assert_equal ["custom", "#{BOM}#{BOM}/out", name], events["output_changed"][4..6]
  end

  # Found by valgrind's memcheck (scripts/check-reliability.sh): every driver
  # step that failed read its message after its autorelease pool was gone, and
  # GNUstep leaked the bytes with an "autorelease called without pool" warning.
  # And the driver converted a control's name inside its autorelease pool: a
  # name of the wrong type raised there and left the pool undrained, and after
  # some 10,000 such calls GNUstep recursed in its exception handler and the
  # next step hung.
  def test_failing_driver_steps_leak_nothing_and_wrong_types_are_refused_before_any_pool
    out, err, status = run_ruby(<<~RUBY, timeout: 120)
      Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN).show
      d = OptionsPanelDriver
      wrong = [42, nil, 1.5, Object.new, [:ok]]
      calls = [[:control, [:no_such_control]], [:click, [:choose_folder]]] +
              Array.new(20_000) { |i| [:click, [wrong[i % wrong.size]]] } +
              [[:control, ["m_p\\0Button"]], [:click_cell, [:save_location, "1"]], [:pick, [nil, 0]],
               [:type, [:width, 12]], [:type, [1, "12"]], [:click_titled, ["0", "Reset"]],
               [:choose_tab, [:first]], [:answer_folder_chooser, [1, 1]], [:screenshot, [nil]],
               [:click_later, [:ok, "soon"]]]
      refused = 0
      calls.each do |name, args|
        d.public_send(name, *args)
        puts "\#{name} took \#{args.inspect}"
      rescue TypeError, ArgumentError
        refused += 1
      rescue RuntimeError => e
        puts e.message
      end
      d.click(:close)
      p refused, d.window_state[:visible]
    RUBY
    assert status.success?, err
    assert_equal ["no control named no_such_control (nearest: save_location)", "choose_folder is disabled", "20010", "false"],
                 out.lines.map(&:chomp)
    refute_match(/autorelease called without pool/, err)
  end

  # GNUstep's layout put text pasted next to a few typed characters into their
  # short run whole, and laid the run out with ten bytes of stack a character:
  # a megabyte pasted after typed digits overran the stack (SystemStackError
  # from inside the toolkit; a host without Ruby's guard crashed).
  def test_a_megabyte_pasted_after_typed_digits
    big = "9" * (1 << 20)
    reset_panel.set_output_directory("custom", big)
    Driver.click_cell(:size_mode, 1)
    Driver.key("Tab") until Driver.focused == "folder"
    Driver.key("ctrl+a")
    Driver.key("ctrl+c")
    Driver.key("Tab") until Driver.focused == "height"
    %w[1 2 Left ctrl+v].each { |key| Driver.key(key) }
    assert_equal "1#{big}2", text_of(:height)
  end
end
