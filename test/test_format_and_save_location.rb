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

  # The check mark is kept under every format and counts only under PNG.
  def test_format_words_and_clicks
    # [format set, or clicked cell], what the group shows, what OK reports
    [["png", [[1, 0, 0], true, 0], "png"], ["pnga", [[1, 0, 0], true, 1], "pnga"],
     ["jpg", [[0, 1, 0], false, 1], "jpg"], [PNG, [[1, 0, 0], true, 1], "pnga"],
     [HDR, [[0, 0, 1], false, 1], "hdr"], [JPEG, [[0, 1, 0], false, 1], "jpg"],
     ["jpg\0x", [[0, 1, 0], false, 1], "jpg"]].each do |format, shown, reported|
      panel.show
      format.is_a?(String) ? panel.output_format = format : Driver.click_cell(:format, format)
      assert_equal shown, format_state, format.inspect
      assert_equal reported, reported_output[0], format.inspect
    end
    ["PNGA", "Png", "JPG", "jpeg", "", "hdr"].each do |word|
      panel.output_format = "png"
      panel.output_format = word
      assert_equal [[0, 0, 1], false, 1], format_state, "#{word.inspect} selects HDR"
    end
    panel.show
    Driver.click_cell(:format, PNG)
    Driver.click(:transparent_background)
    assert_equal "png", reported_output[0], "the box unticked by a click"
  end

  # The first folder has characters of four, three and two bytes in UTF-8.
  def test_set_output_directory_selects_the_mode_and_writes_the_folder
    { "model" => "/renders/model/\u{1F3AC} \u2713 \u00E9", "custom" => "D:\\out",
      "Model" => "D:\\R\xFF\xFEn\xE2\x82der".b, "" => "x", "model\0custom" => "/cut\0/off" }.each do |mode, text|
      panel.show
      panel.set_output_directory("model", "")
      panel.set_output_directory(mode, text)
      shown = text.b.sub(/\0.*/m, "").force_encoding("UTF-8").scrub { |bad| "\u{FFFD}" * bad.bytesize }
      model = mode.sub(/\0.*/m, "") == "model"
      assert_equal [model ? [1, 0] : [0, 1], !model, !model, shown], save_state,
                   "#{mode.inspect}: NUL ends each text, a bad byte shows as U+FFFD"
      # Equal to a UTF-8 text with U+FFFD in it only if UTF-8 itself.
      assert_equal ["png", model ? "model" : "custom", shown], reported_output
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

  # The window manager's close of the chooser is a Cancel.
  def test_folder_chooser_writes_the_chosen_folder_and_cancel_or_a_close_keeps_it
    Dir.mktmpdir do |root|
      first, second = ["Render Out", "second"].map { |name| File.join(root, name).tap { |d| Dir.mkdir(d) } }
      panel.set_output_directory("custom", "/before")
      [first, second, nil, :closed].each do |folder|
        folder == :closed ? Driver.close_folder_chooser_once_shown(5) : Driver.answer_folder_chooser(folder, 5)
        Driver.click(:choose_folder)
        assert Driver.folder_chooser_answered?, "the chooser was never shown, or did not close"
        assert_equal [[0, 1], true, true, folder.is_a?(String) ? folder : second], save_state, "cancel changes nothing"
        assert Driver.window_state[:visible], "the panel stays open once the chooser is gone"
      end
      assert_equal ["png", "custom", second], reported_output
    end
  end

  def test_output_directory_converts_backslashes_without_touching_the_panel
    panel.set_output_directory("custom", "/field")
    path = +"C:\\Renders\\Out"
    assert_equal "C:/Renders/Out", panel.output_directory(path)
    assert_equal "C:\\Renders\\Out", path, "the argument stays as it was"
    plain = "/already/forward"
    refute_same plain, panel.output_directory(plain)
    # Overlong forms, a missing second or third byte and a code point past
    # U+10FFFF each become U+FFFD per byte.
    { plain => plain, "" => "", "a\xFF\\b".b => "a\u{FFFD}/b", "C:\\cut\0\\rest" => "C:/cut",
      "\xE0\x80\x80\xC3A\xF4\x90\x80\x80\xE2\x82A".b => "#{"\u{FFFD}" * 4}A#{"\u{FFFD}" * 6}A" }.each do |given, result|
      assert_equal result, panel.output_directory(given), "#{given.inspect}, in UTF-8"
    end
    [nil, 5, :path, ["C:\\x"]].each { |bad| assert_raises(TypeError) { panel.output_directory(bad) } }
    assert_equal [[0, 1], true, true, "/field"], save_state
  end

  # set_output_format is kept for old scripts and does nothing; wrong types
  # are refused before anything changes.
  def test_set_output_format_and_refused_arguments_change_nothing
    panel.output_format = "jpg"
    panel.set_output_directory("custom", "/x")
    before = [format_state, save_state]
    panel.set_output_format("pnga", "model", "/y")
    [[:output_format=, 5], [:output_format=, nil], [:set_output_directory, "custom", nil],
     [:set_output_directory, :custom, "/other"]].each do |call|
      assert_raises(TypeError, call.inspect) { panel.public_send(*call) }
    end
    assert_equal before, [format_state, save_state]
  end
end
