require_relative "test_helper"
Dir["#{__dir__}/../examples/texts/*.rb"].sort.each { |table| require File.expand_path(table) }

# Nothing is refused, but under `ruby -w` a plugin hears what was taken as another.
class VerboseWarningsTest < Minitest::Test
  include PanelTest

  def warnings(verbose)
    was = $VERBOSE
    $VERBOSE = verbose
    capture_io { yield }.last.lines.map { |line| line.sub(/\A.*?warning: /, "").chomp }
  ensure
    $VERBOSE = was
  end

  def test_a_word_taken_as_the_last_choice_is_named_once_per_call
    p = reset_panel
    calls = -> { [p.output_format = "bmp", p.set_environment_background("Sky"), p.set_output_directory("Model", "/x"),
                  p.set_output_dimensions("Fixed", 1, 2, 3, 4), p.output_format = "pnga", p.set_environment_background("sky")] }
    assert_equal ['output_format=: format "bmp" is not "png", "jpg" or "pnga"; "hdr" is selected',
                  'set_environment_background: background "Sky" is not "default" or "sky"; "sky2" is selected',
                  'set_output_directory: mode "Model" is not "model"; "custom" is selected',
                  'set_output_dimensions: mode "Fixed" is not "viewport" or "fixed"; "panorama" is selected'],
                 warnings(true, &calls)
    assert_equal [], warnings(false, &calls)
  end

  def test_the_text_tables_keys_the_panel_cannot_use_are_named
    # An unknown key first, where a list of them starts.
    table = { "opt-tab1-panorama-rbtn" => "P" }.merge(TEXTS.reject { |key, _| key == "opt-tab1-panaroma-rbtn" })
                                                .merge(:"opt-ok-btn-title" => "OK", "opt-tab1-jpg-rbtn" => 7)
    new = "Velmar::OptionsPanelWindow.new: the text table"
    assert_equal ["#{new} lacks \"opt-tab1-panaroma-rbtn\" (the panel shows these keys instead)",
                  "#{new}'s values of \"opt-tab1-jpg-rbtn\" are not Strings (the panel shows these keys instead)",
                  "#{new}'s keys \"opt-tab1-panorama-rbtn\", :\"opt-ok-btn-title\" are not in " \
                  "Velmar::OptionsPanelWindow::TEXT_KEYS", "#{new} is Array, not a Hash; the panel shows every key"],
                 warnings(true) { [Velmar::OptionsPanelWindow.new(table), Velmar::OptionsPanelWindow.new([])] }
    assert_equal [], warnings(false) { Velmar::OptionsPanelWindow.new(table) }
    # Every example table, whatever languages examples/texts/ holds.
    assert_operator OptionsPanelTexts.constants.size, :>=, 3
    OptionsPanelTexts.constants.each do |language|
      texts = OptionsPanelTexts.const_get(language)
      assert_equal [[], Velmar::OptionsPanelWindow::TEXT_KEYS], [warnings(true) { Velmar::OptionsPanelWindow.new(texts) }, texts.keys], language
    end
    Velmar::OptionsPanelWindow.new(TEXTS)
  end
end
