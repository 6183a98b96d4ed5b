require_relative "test_helper"

# The size group of the Image tab: the size modes, the preset sizes, the width
# and height fields with their 2:1 panorama lock, and set_output_dimensions.
class TestImageSize < Minitest::Test
  include PanelTest

  W = :width
  H = :height

  def setup
    @panel = reset_panel
  end

  # What the user sees of the size group: mode, list enabled, shown item,
  # fields enabled, field texts.
  def size_group
    combo = control(:size)
    item = combo[:selected] >= 0 ? combo[:items][combo[:selected]] : nil
    assert_equal item || "", combo[:text], "the combo box shows its selected item"
    [cell_states(:size_mode).index(1), combo[:enabled], item, [enabled?(W), enabled?(H)], fields]
  end

  def fields
    [text_of(W), text_of(H)]
  end

  def dimensions(mode, width, height, vw = 800, vh = 600)
    assert_equal true, @panel.set_output_dimensions(mode, width, height, vw, vh)
  end

  def reported_size
    press_ok["output_changed"][0, 3]
  end

  # A doubled height past the largest integer saturates the width there.
  def test_panorama_lock_follows_each_keystroke
    dimensions("panorama", 1000, 300)
    # The field, the text typed over it ("+" types after what is there), both texts then.
    [[W, "1", %w[1 0]], [W, "+9", %w[19 9]], [W, "+21", %w[1921 960]], [W, "", ["", "960"]],
     [W, "640px", %w[640px 320]], [H, "540", %w[1080 540]], [H, "1073741823", %w[2147483646 1073741823]],
     [H, "1073741824", %w[2147483647 1073741824]], [H, "99999999999", %w[2147483647 99999999999]],
     [H, "", ["2147483647", ""]]].each do |field, text, texts|
      text.start_with?("+") ? Driver.type(field, text[1..-1]) : Driver.replace(field, text)
      assert_equal texts, fields, "#{field} #{text.inspect}"
    end
    assert_equal ["panorama", "2147483647", ""], reported_size
  end

  def test_panorama_falls_back_to_the_remembered_viewport_size_and_ignores_negatives
    [[W, "0"], [W, "x"], [H, "0"], [H, "-"]].each do |field, text|
      dimensions("panorama", 1000, 300, 800, 601)
      Driver.replace(field, text)
      assert_equal %w[800 601], fields, "#{field} typed #{text.inspect}"
    end
    # The fallback rewrites the field being edited: the next keystroke appends.
    Driver.type(W, "2")
    assert_equal %w[8002 4001], fields
    dimensions("panorama", 1000, 0, -8, -6)
    assert_equal %w[-8 -6], fields, "a negative remembered size keeps its sign"
    dimensions("panorama", -4, 300)
    Driver.type(W, "0")
    Driver.press_return(W)
    assert_equal %w[-40 300], fields, "a negative width changes nothing"
    dimensions("panorama", 1000, -2)
    Driver.type(H, "5")
    assert_equal %w[1000 -25], fields, "a negative height changes nothing"
  end

  def test_fixed_custom_fields_are_free_until_return
    dimensions("fixed", 0, 0)
    Driver.replace(W, "800")
    Driver.replace(H, "600")
    assert_equal %w[800 600], fields, "outside panorama typing never changes the other field"
    Driver.press_return(W)
    assert_equal %w[800 400], fields
    Driver.replace(H, "250")
    Driver.press_return(H)
    assert_equal %w[fixed 500 250], reported_size
  end

  def test_picking_each_preset
    dimensions("fixed", 0, 0)
    # The items themselves are test_layout.rb's; Custom last shows it writes 0 x 0.
    control(:size)[:items].each_with_index.to_a.rotate(1).each do |item, index|
      Driver.pick(:size, index)
      texts = index.zero? ? %w[0 0] : item.split(" x ")
      assert_equal [1, true, item, [index.zero?] * 2, texts], size_group, item
    end
    assert_equal %w[fixed 0 0], reported_size
  end

  def test_setter_reaches_each_row
    dimensions("fixed", 1920, 1080)
    assert_equal [1, true, "1920 x 1080", [true, true], %w[1920 1080]], size_group,
                 "the setter's own selection runs no preset"
    [[800, 600], [-5, 10], [640, -480]].each do |w, h|
      dimensions("fixed", w, h)
      assert_equal [1, true, "Custom", [true, true], [w.to_s, h.to_s]], size_group, "#{w} x #{h}"
    end
    dimensions("fixed", 1920, 1080)
    dimensions("viewport", 640, 480, 1024, 768)
    assert_equal [0, false, "Custom", [false, false], %w[0 0]], size_group
    ["panorama", "Viewport", "FIXED", "", "x"].each do |mode|
      dimensions("fixed", 640, 480)
      dimensions(mode, 1000, 300)
      assert_equal [2, false, "Custom", [true, true], %w[1000 300]], size_group, mode.inspect
    end
    dimensions("panorama", 2000, 0, 1024, 768)
    assert_equal %w[panorama 1024 768], reported_size
  end

  def test_clicks_reach_each_row
    dimensions("fixed", 0, 0)
    Driver.replace(W, "800")
    Driver.replace(H, "600") # still being edited when the click disables the field
    Driver.click_cell(:size_mode, 0)
    assert_equal [0, false, "Custom", [false, false], %w[800 600]], size_group
    assert_equal %w[viewport 800 600], reported_size
    @panel.show
    dimensions("fixed", 852, 480)
    Driver.click_cell(:size_mode, 0)
    Driver.click_cell(:size_mode, 1)
    assert_equal [1, true, "852 x 480", [true, true], %w[852 480]], size_group
    # From a preset item the click starts at the current width, not the viewport's.
    { [1920, 1080] => %w[1920 960], [1000, 300] => %w[1000 500], [1000, 0] => %w[800 400],
      [0, 0] => %w[800 400] }.each do |(w, h), texts|
      dimensions("fixed", w, h)
      Driver.click_cell(:size_mode, 2)
      assert_equal [2, false, "Custom", [true, true], texts], size_group, "#{w} x #{h}"
    end
    assert_equal %w[panorama 800 400], reported_size
  end

  INT32 = "from -2147483648 to 2147483647".freeze

  def test_bad_arguments_raise_before_any_control_changes
    dimensions("fixed", 1920, 1080)
    before = size_group
    # Each error keeps Ruby's class and names the method and the argument.
    { [nil, 640] => "mode must be a String (got NilClass)", [:fixed, 640] => "mode must be a String (got Symbol)",
      [5, 640] => "mode must be a String (got Integer 5)", %w[fixed 640] => "width must be an Integer #{INT32} (got String)" }
      .each do |(mode, width), message|
        error = assert_raises(TypeError) { @panel.set_output_dimensions(mode, width, 480, 1, 1) }
        assert_equal "set_output_dimensions: #{message}", error.message
      end
    { [2**40, 1, 1, 1] => "width", [1, -2**31 - 1, 1, 1] => "height", [1, 1, 2**31, 1] => "viewport_width",
      [1, 1, 1, 1e12] => "viewport_height" }.each do |args, name|
      error = assert_raises(RangeError) { @panel.set_output_dimensions("viewport", *args) }
      given = args.find { |a| !a.is_a?(Integer) || a.bit_length > 31 }
      assert_equal "set_output_dimensions: #{name} must be an Integer #{INT32} (got #{given.class} #{given.inspect})",
                   error.message
    end
    # A throw out of an argument's own conversion goes on untouched.
    thrower = Object.new
    def thrower.to_int
      throw :converting, :thrown
    end
    assert_equal :thrown, catch(:converting) { @panel.set_output_dimensions("fixed", thrower, 1, 1, 1) }
    # So does an exception of its own that is no TypeError or RangeError.
    raiser = Object.new
    def raiser.to_int
      raise ArgumentError, "not a size"
    end
    assert_equal "not a size", assert_raises(ArgumentError) { @panel.set_output_dimensions("fixed", raiser, 1, 1, 1) }.message
    # The viewport width converts and is stored before the height fails.
    assert_raises(RangeError) { @panel.set_output_dimensions("panorama", 1, 0, 640, 2**40) }
    assert_equal before, size_group
    Driver.click_cell(:size_mode, 2)
    Driver.replace(W, "0")
    assert_equal %w[640 600], fields
  end
end
