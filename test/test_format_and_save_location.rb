require "tmpdir"
require_relative "test_helper"

# The format group with its transparency box, and the save-location group with
# its folder field and folder chooser.
class TestFormatAndSaveLocation < Minitest::Test
  include PanelTest

  PNG, JPEG, HDR = 0, 1, 2

  def setup
    reset_panel
  end

  def format_state
    box = control(:transparent_background)
    [cell_states(:format), box[:enabled], box[:state]]
  end

  def save_state
    [cell_states(:save_location), enabled?(:folder), enabled?(:choose_folder), text_of(:folder)]
  end

  # The format and the location mode and folder, as OK reports them.
  def reported_output
    press_ok["output_changed"].values_at(3, 4, 5)
  end

  def test_output_format_words_set_the_group_and_keep_the_check_mark
    assert_equal true, panel.public_send(:output_format=, "png")
    assert_equal [[1, 0, 0], true, 0], format_state
    assert_equal "png", reported_output[0]

    panel.show
    panel.output_format = "pnga"
    panel.output_format = "png"
    assert_equal [[1, 0, 0], true, 1], format_state, "png keeps the check mark pnga set"
    assert_equal "pnga", reported_output[0]

    panel.show
    panel.output_format = "jpg"
    assert_equal [[0, 1, 0], false, 1], format_state
    assert_equal "jpg", reported_output[0]

    panel.show
    Driver.click_cell(:format, PNG)
    assert_equal [[1, 0, 0], true, 1], format_state, "the check mark counts again under PNG"
    assert_equal "pnga", reported_output[0]

    ["PNGA", "Png", "JPG", "jpeg", "tiff", "", "hdr"].each do |word|
      panel.show
      panel.output_format = "png"
      panel.output_format = word
      assert_equal [[0, 0, 1], false, 1], format_state, "#{word.inspect} selects HDR"
      assert_equal "hdr", reported_output[0]
    end
  end

  def test_format_clicks_only_enable_or_disable_the_transparency_box
    Driver.click(:transparent_background)
    Driver.click_cell(:format, JPEG)
    assert_equal [[0, 1, 0], false, 1], format_state
    Driver.click_cell(:format, HDR)
    assert_equal [[0, 0, 1], false, 1], format_state
    assert_equal "hdr", reported_output[0]

    panel.show
    Driver.click_cell(:format, PNG)
    assert_equal [[1, 0, 0], true, 1], format_state
    Driver.click(:transparent_background)
    assert_equal "png", reported_output[0]
  end

  def test_set_output_directory_selects_the_mode_and_writes_the_folder
    folder = "/renders/model/\u{1F3AC} \u2713 \u00E9" # four, three and two bytes in UTF-8
    assert_equal true, panel.set_output_directory("model", folder)
    assert_equal [[1, 0], false, false, folder], save_state
    assert_equal ["png", "model", folder], reported_output

    ["custom", "Model", "MODEL", "model ", ""].each do |mode|
      panel.show
      panel.set_output_directory("model", "")
      panel.set_output_directory(mode, "D:\\out")
      assert_equal [[0, 1], true, true, "D:\\out"], save_state, "#{mode.inspect} means custom"
      assert_equal ["png", "custom", "D:\\out"], reported_output
    end
  end

  def test_location_clicks_and_typing_keep_the_folder_text
    panel.set_output_directory("model", "/kept")
    Driver.click_cell(:save_location, 1)
    assert_equal [[0, 1], true, true, "/kept"], save_state
    Driver.type(:folder, "/more")
    Driver.click_cell(:save_location, 0)
    assert_equal [[1, 0], false, false, "/kept/more"], save_state
    assert_equal ["png", "model", "/kept/more"], reported_output, "model still reports the field"
  end

  def test_folder_chooser_writes_the_chosen_folder_and_cancel_keeps_it
    Dir.mktmpdir do |root|
      first = File.join(root, "Render Out")
      second = File.join(root, "second")
      [first, second].each { |d| Dir.mkdir(d) }
      panel.set_output_directory("custom", "/before")

      [first, second].each do |folder|
        Driver.answer_folder_chooser(folder, 5)
        Driver.click(:choose_folder)
        assert Driver.folder_chooser_answered?, "the chooser was never shown"
        assert_equal [[0, 1], true, true, folder], save_state
        assert Driver.window_state[:visible], "the panel stays open once the chooser is gone"
      end

      Driver.answer_folder_chooser(nil, 5)
      Driver.click(:choose_folder)
      assert Driver.folder_chooser_answered?
      assert_equal [[0, 1], true, true, second], save_state, "cancel changes nothing"
      assert_equal ["png", "custom", second], reported_output
    end
  end

  def test_output_directory_converts_backslashes_without_touching_the_panel
    panel.set_output_directory("custom", "/field")
    path = +"C:\\Renders\\Out"
    assert_equal "C:/Renders/Out", panel.output_directory(path)
    assert_equal "C:\\Renders\\Out", path, "the argument stays as it was"
    plain = "/already/forward"
    result = panel.output_directory(plain)
    assert_equal plain, result
    refute_same plain, result
    assert_equal "", panel.output_directory("")
    invalid = panel.output_directory("a\xFF\\b".b)
    assert_equal "a\u{FFFD}/b", invalid
    assert_predicate invalid, :valid_encoding?
    assert_equal "C:/cut", panel.output_directory("C:\\cut\0\\rest")
    [nil, 5, :path, ["C:\\x"]].each do |bad|
      error = assert_raises(TypeError) { panel.output_directory(bad) }
      assert_match(/no implicit conversion/, error.message)
    end
    assert_equal [[0, 1], true, true, "/field"], save_state
  end

  def test_set_output_format_changes_nothing
    panel.output_format = "jpg"
    panel.set_output_directory("custom", "/x")
    before = [format_state, save_state]
    assert_equal true, panel.set_output_format("pnga", "model", "/y")
    assert_equal true, panel.set_output_format(nil, 5, [])
    assert_equal before, [format_state, save_state]
  end

  def test_non_strings_are_refused_before_any_control_changes
    panel.set_output_directory("model", "/safe")
    before = [format_state, save_state]
    assert_raises(TypeError) { panel.output_format = 5 }
    assert_raises(TypeError) { panel.output_format = nil }
    assert_raises(TypeError) { panel.set_output_directory("custom", nil) }
    error = assert_raises(TypeError) { panel.set_output_directory(:custom, "/other") }
    assert_equal "no implicit conversion of Symbol into String", error.message
    assert_equal before, [format_state, save_state]
  end

  def test_invalid_bytes_and_nul_in_texts
    panel.set_output_directory("custom", "D:\\R\xFF\xFEnder".b)
    assert_equal "D:\\R\u{FFFD}\u{FFFD}nder", text_of(:folder)
    format, mode, folder = reported_output
    assert_equal ["png", "custom", "D:\\R\u{FFFD}\u{FFFD}nder"], [format, mode, folder]
    assert_predicate folder, :valid_encoding?

    panel.show
    panel.set_output_directory("model\0custom", "/cut\0/off")
    assert_equal [[1, 0], false, false, "/cut"], save_state, "NUL ends each text"
    panel.output_format = "jpg\0x"
    assert_equal [0, 1, 0], cell_states(:format)
  end
end
