require_relative "test_helper"
require_relative "x_session"

# A person editing the panel's fields with the keys of a Linux desktop, the X
# clipboard shared with other programs (xclip stands for them), on a bare X
# server and under a window manager.
class TextEditingTest < Minitest::Test
  include XSession

  PLUGIN = (PLUGIN_PRELUDE + <<~RUBY).freeze
    panel.set_output_dimensions("fixed", 1280, 720, 640, 480)
    print_points(driver)
    puts JSON.dump(["folder", driver.screen_point(:folder, nil) + driver.control(:folder)[:drawn_in_window][2, 2]])
  RUBY

  LONG_PATH = "/home/person/projects/a house by the lake/renders/final frames for the client".freeze

  def test_clipboard_keys_on_a_bare_x_server
    edit_with_clipboard_keys
  end

  def test_clipboard_keys_under_a_window_manager
    start_openbox
    edit_with_clipboard_keys
  end

  private

  def edit_with_clipboard_keys
    points = start_host
    folder = next_line.tap { |kind, _| assert_equal "folder", kind }.last
    offer_clipboard(LONG_PATH)
    click(folder)
    before = pixels(folder)
    xdotool("key", "ctrl+a")
    selected = wait_for("the text to show selected") { (now = pixels(folder)) != before && now }
    xdotool("key", "ctrl+v")
    shown = wait_for("the pasted path to show") { (now = pixels(folder)) != selected && now }
    # Wrapped, the field showed only the last word; on one line, scrolled to
    # the caret, the text fills the field from edge to edge.
    assert_operator inked_columns(shown, folder[2].ceil), :>, 0.45, "the long path stays on one line"
    # A right click offers Cut, Copy, Paste and Select All under the pointer.
    x, y = points["width"]
    windows = -> { xdotool("search", "--onlyvisible", "--name", ".*").split }
    shown = windows.call
    xdotool("mousemove", x, y, "click", 3)
    wait_for("the menu") { (windows.call - shown).any? }
    xdotool("mousemove", x, y + 81, "click", 1)
    xdotool("key", "ctrl+c")
    assert_equal "1280", wait_for("the copied width") { clipboard == "1280" && clipboard }
    # The command key's letters and other chords type nothing.
    xdotool("key", "alt+c", "alt+v", "ctrl+q", "Tab", "ctrl+a", "shift+Insert")
    click(points["ok"])
    assert_equal %w[fixed 1280 1280 png custom] + [LONG_PATH], events_until_close.assoc("output_changed").last.first(6)
  end

  def offer_clipboard(text)
    reader, writer = IO.pipe
    (@pids ||= []) << spawn(environment, "xclip", "-quiet", "-selection", "clipboard", in: reader, %i[out err] => File::NULL)
    writer.write(text)
    writer.close
    reader.close
    wait_for("the clipboard to hold the text") { clipboard == text }
  end

  def clipboard
    output_of("xclip", "-o", "-selection", "clipboard", check: false)
  end

  # A control's pixels as the X server holds them, on whole pixels: what a person sees.
  def pixels((x, y, width, height))
    crop = "#{width.ceil}x#{height.ceil}+#{(x - width / 2).floor}+#{(y - height / 2).floor}"
    output_of("import", "-window", "root", "-crop", crop, "-depth", "8", "rgb:-")
  end

  # The share of the field's columns inside its border with a dark pixel: text.
  def inked_columns(rgb, width)
    rows = rgb.bytes.each_slice(3).map { |pixel| pixel.sum < 300 }.each_slice(width).to_a
    columns = rows[3..-4].transpose[3..-4]
    columns.count(&:any?).fdiv(columns.size)
  end
end
