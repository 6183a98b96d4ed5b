require_relative "test_helper"

# The size group of the Image tab: the size modes, the preset sizes, the width
# and height fields with their 2:1 panorama lock, and set_output_dimensions.
class TestImageSize < Minitest::Test
  include PanelTest

  W = :width
  H = :height
  INT_MAX = 2**31 - 1

  def setup
    @panel = reset_panel
  end

  # What the user sees of the size group, in one comparable hash.
  def size_group
    combo = control(:size)
    item = combo[:selected] >= 0 ? combo[:items][combo[:selected]] : nil
    assert_equal item || "", combo[:text], "the combo box shows its selected item"
    { mode: cell_states(:size_mode).index(1), combo: combo[:enabled], item: item,
      fields: [enabled?(W), enabled?(H)], texts: [text_of(W), text_of(H)] }
  end

  def retype(field, text)
    Driver.clear(field)
    Driver.type(field, text)
  end

  def fields
    [text_of(W), text_of(H)]
  end

  def panorama(width, height, vw = 800, vh = 600)
    assert_equal true, @panel.set_output_dimensions("panorama", width, height, vw, vh)
  end

  def test_panorama_lock_follows_each_keystroke
    panorama(1000, 300)
    retype(W, "1")
    assert_equal %w[1 0], fields, "a width of 1 halves to 0 without the viewport fallback"
    Driver.type(W, "9")
    assert_equal %w[19 9], fields
    Driver.type(W, "21")
    assert_equal %w[1921 960], fields
    Driver.clear(W)
    assert_equal ["", "960"], fields, "an emptied width changes nothing"
    retype(W, "640px")
    assert_equal %w[640px 320], fields, "text after the number stays in the width"
    retype(H, "540")
    assert_equal %w[1080 540], fields
    Driver.clear(H)
    assert_equal ["1080", ""], fields, "an emptied height changes nothing"
    assert_equal ["panorama", "1080", ""], press_ok["output_changed"][0, 3]
  end

  def test_panorama_falls_back_to_the_remembered_viewport_size
    [[W, "0"], [W, "x"], [H, "0"], [H, "-"]].each do |field, text|
      panorama(1000, 300, 800, 601)
      retype(field, text)
      assert_equal %w[800 601], fields, "#{field} typed #{text.inspect}"
    end
    # The fallback rewrites the field being edited: the next keystroke appends.
    Driver.type(W, "2")
    assert_equal %w[8002 4001], fields
    panorama(1000, 0, -8, -6)
    assert_equal %w[-8 -6], fields, "a negative remembered size keeps its sign"
  end

  def test_negative_numbers_change_nothing
    panorama(-4, 300)
    Driver.type(W, "0")
    assert_equal %w[-40 300], fields
    Driver.press_return(W)
    assert_equal %w[-40 300], fields
    panorama(1000, -2)
    Driver.type(H, "5")
    assert_equal %w[1000 -25], fields
  end

  def test_doubled_height_saturates_at_the_largest_integer
    panorama(10, 5)
    { "1073741823" => INT_MAX - 1, "1073741824" => INT_MAX, "2000000000" => INT_MAX,
      "99999999999" => INT_MAX }.each do |height, width|
      retype(H, height)
      assert_equal [width.to_s, height], fields
    end
    assert_equal ["panorama", INT_MAX.to_s, "99999999999"], press_ok["output_changed"][0, 3]
  end

  def test_fallback_before_any_setter_writes_zeros
    out, err, status = run_ruby(<<~RUBY)
      Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN).show
      d = OptionsPanelDriver
      names = %i[width height]
      p names.map { |n| d.control(n).values_at(:text, :enabled) }
      d.click_cell(:size_mode, 2)
      p names.map { |n| d.control(n)[:text] }
    RUBY
    assert status.success?, err
    assert_equal [[["", false], ["", false]], %w[0 0]].map(&:inspect), out.lines.map(&:chomp)
  end

  def test_fixed_custom_fields_are_free_until_return
    @panel.set_output_dimensions("fixed", 0, 0, 800, 600)
    assert_equal({ mode: 1, combo: true, item: "Custom", fields: [true, true], texts: %w[0 0] },
                 size_group)
    retype(W, "800")
    assert_equal %w[800 0], fields, "outside panorama typing never changes the other field"
    retype(H, "600")
    assert_equal %w[800 600], fields
    Driver.press_return(W)
    assert_equal %w[800 400], fields
    retype(H, "250")
    Driver.press_return(H)
    assert_equal %w[500 250], fields
    assert_equal %w[fixed 500 250], press_ok["output_changed"][0, 3]
  end

  def test_picking_each_preset
    @panel.set_output_dimensions("fixed", 0, 0, 800, 600)
    items = control(:size)[:items]
    assert_equal ["Custom", "230 x 150", "640 x 480", "1024 x 768", "2048 x 1536",
                  "3076 x 2034", "4076 x 3304", "852 x 480", "1600 x 900", "1920 x 1080"], items
    items.each_with_index.to_a.rotate(1).each do |item, index|
      Driver.pick(:size, index)
      texts = index.zero? ? %w[0 0] : item.split(" x ")
      assert_equal({ mode: 1, combo: true, item: item, fields: [index.zero?] * 2, texts: texts },
                   size_group, item)
    end
    Driver.pick(:size, 7)
    assert_equal %w[fixed 852 480], press_ok["output_changed"][0, 3]
  end

  def test_setter_reaches_each_row
    @panel.set_output_dimensions("fixed", 1920, 1080, 800, 600)
    assert_equal({ mode: 1, combo: true, item: "1920 x 1080", fields: [true, true],
                   texts: %w[1920 1080] }, size_group)
    @panel.set_output_dimensions("fixed", 852, 480, 800, 600)
    assert_equal [true, true], size_group[:fields], "the setter's own selection runs no preset"
    [[800, 600], [-5, 10], [640, -480]].each do |w, h|
      @panel.set_output_dimensions("fixed", w, h, 800, 600)
      assert_equal({ mode: 1, combo: true, item: "Custom", fields: [true, true],
                     texts: [w.to_s, h.to_s] }, size_group, "#{w} x #{h}")
    end
    @panel.set_output_dimensions("fixed", 1920, 1080, 800, 600)
    assert_equal true, @panel.set_output_dimensions("viewport", 640, 480, 1024, 768)
    assert_equal({ mode: 0, combo: false, item: "Custom", fields: [false, false],
                   texts: %w[0 0] }, size_group)
    ["panorama", "Viewport", "FIXED", "", "x"].each do |mode|
      @panel.set_output_dimensions("fixed", 640, 480, 800, 600)
      @panel.set_output_dimensions(mode, 1000, 300, 800, 600)
      assert_equal({ mode: 2, combo: false, item: "Custom", fields: [true, true],
                     texts: %w[1000 300] }, size_group, mode.inspect)
    end
    @panel.set_output_dimensions("panorama", 2000, 0, 1024, 768)
    assert_equal %w[1024 768], fields
    assert_equal %w[panorama 1024 768], press_ok["output_changed"][0, 3]
  end

  def test_clicks_reach_each_row
    @panel.set_output_dimensions("fixed", 0, 0, 800, 600)
    retype(W, "800")
    retype(H, "600") # still being edited when the click disables the field
    Driver.click_cell(:size_mode, 0)
    assert_equal({ mode: 0, combo: false, item: "Custom", fields: [false, false],
                   texts: %w[800 600] }, size_group)
    assert_equal %w[viewport 800 600], press_ok["output_changed"][0, 3]
    @panel.show

    @panel.set_output_dimensions("fixed", 852, 480, 800, 600)
    Driver.click_cell(:size_mode, 0)
    Driver.click_cell(:size_mode, 1)
    assert_equal({ mode: 1, combo: true, item: "852 x 480", fields: [true, true],
                   texts: %w[852 480] }, size_group)

    # From a preset item the click starts at the current width, not the viewport's.
    @panel.set_output_dimensions("fixed", 1920, 1080, 800, 600)
    Driver.click_cell(:size_mode, 2)
    assert_equal({ mode: 2, combo: false, item: "Custom", fields: [true, true],
                   texts: %w[1920 960] }, size_group)

    { [1000, 300] => %w[1000 500], [1000, 0] => %w[800 400], [0, 0] => %w[800 400] }
      .each do |(w, h), texts|
        @panel.set_output_dimensions("fixed", w, h, 800, 600)
        Driver.click_cell(:size_mode, 2)
        assert_equal texts, fields, "#{w} x #{h}"
      end
    assert_equal %w[panorama 800 400], press_ok["output_changed"][0, 3]
  end

  def test_bad_arguments_raise_before_any_control_changes
    @panel.set_output_dimensions("fixed", 1920, 1080, 800, 600)
    before = size_group
    [nil, :fixed, 5].each do |mode|
      assert_raises(TypeError) { @panel.set_output_dimensions(mode, 640, 480, 1, 1) }
    end
    assert_raises(TypeError) { @panel.set_output_dimensions("fixed", "640", 480, 1, 1) }
    [[2**40, 1, 1, 1], [1, -2**31 - 1, 1, 1], [1, 1, 2**31, 1]].each do |args|
      assert_raises(RangeError) { @panel.set_output_dimensions("viewport", *args) }
    end
    assert_equal before, size_group
    # The viewport width converts and is stored before the height fails.
    assert_raises(RangeError) { @panel.set_output_dimensions("panorama", 1, 0, 640, 2**40) }
    assert_equal before, size_group
    Driver.click_cell(:size_mode, 2)
    retype(W, "0")
    assert_equal %w[640 600], fields
  end
end
