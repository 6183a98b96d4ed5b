require_relative "test_helper"

# Faults that reliability/fuzz.rb found, each kept from coming back.
class RegressionsTest < Minitest::Test
  include PanelTest

  BOM = "\u{FEFF}"

  def setup
    reset_panel
  end

  # GNUstep took a U+FEFF at the start of a script's text for a byte order
  # mark and dropped it: OK then named a preset the script never gave.
  def test_texts_keep_a_leading_feff
    name = "#{BOM}Draft"
    panel.populate_presets("#{name}|Draft")
    panel.preset = name
    panel.set_output_directory("custom", "#{BOM}#{BOM}/out")
    assert_equal [[name, "Draft"], 0], control(:preset).values_at(:items, :selected)
    events = press_ok
    assert_equal [name], events["preset_changed"]
    assert_equal ["custom", "#{BOM}#{BOM}/out", name], events["output_changed"][4..6]
  end

  def test_a_leading_feff_makes_another_word
    panel.set_environment_background("#{BOM}sky")
    panel.output_format = "#{BOM}jpg"
    panel.set_output_dimensions("#{BOM}fixed", 640, 480, 800, 600)
    assert_equal [0, 0, 1], cell_states(:background)
    assert_equal [0, 0, 1], cell_states(:format)
    assert_equal [0, 0, 1], cell_states(:size_mode)
  end

  # Found by valgrind's memcheck (scripts/check-reliability.sh): every driver
  # step that failed read its message after its autorelease pool was gone, and
  # GNUstep leaked the bytes with an "autorelease called without pool" warning.
  def test_a_failing_driver_step_leaks_nothing
    out, err, status = run_ruby(<<~RUBY)
      panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      panel.show
      panel.set_output_directory("model", "")
      begin
        OptionsPanelDriver.control(:no_such_control)
      rescue RuntimeError => e
        puts e.message
      end
      begin
        OptionsPanelDriver.click(:choose_folder)
      rescue RuntimeError => e
        puts e.message
      end
    RUBY
    assert status.success?, err
    assert_match(/\Ano control named no_such_control\nchoose_folder is disabled\n\z/, out)
    refute_match(/autorelease called without pool/, err)
  end

  # The driver converted a control's name inside its autorelease pool: a name
  # of the wrong type raised there and left the pool undrained, and after some
  # 10,000 such calls GNUstep recursed in its exception handler and the next
  # step hung.
  def test_the_driver_refuses_arguments_of_the_wrong_type_before_any_pool
    out, err, status = run_ruby(<<~RUBY, timeout: 120)
      panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      panel.show
      d = OptionsPanelDriver
      wrong = [42, nil, 1.5, Object.new, [:ok]]
      refused = 0
      20_000.times do |i|
        begin
          d.click(wrong[i % wrong.size])
        rescue TypeError
          refused += 1
        end
      end
      calls = [[:control, ["m_p\\0Button"]], [:click_cell, [:save_location, "1"]], [:pick, [nil, 0]],
               [:type, [:width, 12]], [:type, [1, "12"]], [:click_titled, ["0", "Reset"]],
               [:choose_tab, [:first]], [:answer_folder_chooser, [1, 1]], [:screenshot, [nil]],
               [:click_later, [:ok, "soon"]]]
      calls.each do |name, args|
        begin
          d.public_send(name, *args)
          puts "\#{name} took \#{args.inspect}"
        rescue TypeError, ArgumentError
          refused += 1
        end
      end
      d.click(:close)
      p refused, d.window_state[:visible]
    RUBY
    assert status.success?, err
    assert_equal ["20010", "false"], out.lines.map(&:chomp)
    refute_match(/autorelease called without pool/, err)
  end
end
