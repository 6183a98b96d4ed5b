require_relative "test_helper"
require_relative "x_session"

# A person at a Linux desktop with another program's window open, on a bare X
# server and under two window managers: picks from a list and closes it with a
# click elsewhere, then edits the fields with the desktop's keys, the X
# clipboard shared with other programs (xclip stands for them).
class DesktopInputTest < Minitest::Test
  include XSession

  PLUGIN = (PLUGIN_PRELUDE + "print_points(driver)\nputs JSON.dump(driver.control(:width)[:menu])\n").freeze

  # A person's language as GNUstep reads it (LANGUAGE, as gettext does), and
  # the name of the toolkit's table of words in it.
  LANGUAGES = { "en" => "English", "de" => "German" }.freeze

  LONG_PATH = "/home/person/projects/a house by the lake/renders/final frames for the client".freeze

  def test_on_a_bare_x_server
    lists_and_editing
  end

  # A person whose desktop speaks German.
  def test_under_openbox
    @language = "de"
    start_window_manager("openbox")
    lists_and_editing
  end

  def test_under_xfwm4
    start_window_manager("xfwm4")
    lists_and_editing
  end

  private

  def lists_and_editing
    (@pids ||= []) << spawn(environment, "xmessage", "-geometry", "+0+0", "another program", %i[out err] => File::NULL)
    other_program = %w[xdotool search --onlyvisible --name xmessage]
    wait_for("the other program") { output_of(*other_program, check: false) }
    points = start_host
    menu = next_line
    assert_equal toolkit_words(LANGUAGES.fetch(language)), menu, "the right click's items"
    click(points["fixed"])
    pick_and_close_lists(points["size"])
    edit_with_clipboard_keys(points, points["folder"])
    switch_away_and_back if @config
    chooser_closed(points["choose_folder"])
    click(points["ok"])
    assert_equal %w[fixed 2048 2048 png custom] + [LONG_PATH], events_until_close.assoc("output_changed").last.first(6)
  end

  def pick_and_close_lists((x, y, width))
    button = [(x + width / 2 - 6).round, y]
    shown = windows
    list_shown = -> { (windows - shown).any? }
    click(button, hold: 0.1)
    wait_for("the size list to open") { list_shown.call }
    # The first item, Custom, which leaves the size fields to the person, empty.
    click([x, y + 22], hold: 0.1)
    wait_for("the list to close") { !list_shown.call }
    assert_equal TITLE, output_of("xdotool", "getwindowfocus", "getwindowname").chomp, "the panel keeps the keys"
    click(button, hold: 0.1)
    wait_for("the size list to open") { list_shown.call }
    click([1200, 1000], hold: 0.1) # the desktop
    wait_for("the list to close at a click on the desktop") { !list_shown.call }
    click(button, hold: 0.1)
    wait_for("the next click to open the list again") { list_shown.call }
    if @config
      # The window manager gives the keys to the other program: the list goes,
      # and the next click on the panel acts.
      xdotool("windowactivate", "--sync", xdotool("search", "--name", "xmessage").split.first)
      wait_for("the list to go with the keys") { !list_shown.call }
      click(button, hold: 0.1)
      wait_for("the next click to open the list again") { list_shown.call }
    end
    xdotool("key", "Escape")
    wait_for("the list to close") { !list_shown.call }
  end

  def edit_with_clipboard_keys(points, folder)
    offer_clipboard("#{LONG_PATH} \u{1F4F7}")
    click(folder)
    before = pixels(folder)
    xdotool("key", "ctrl+a")
    selected = wait_for("the text to show selected") { (now = pixels(folder)) != before && now }
    xdotool("key", "ctrl+v")
    shown = wait_for("the pasted path to show") { (now = pixels(folder)) != selected && now }
    # Wrapped, the field showed only the last word; on one line, scrolled to
    # the caret, the text fills the field from edge to edge.
    assert_operator inked_columns(shown, folder[2].ceil), :>, 0.45, "the long path stays on one line"
    # Ctrl+Z takes the paste back and Ctrl+Shift+Z puts it in again; End leaves the caret after it.
    xdotool("key", "ctrl+z", "ctrl+a", "ctrl+c")
    assert_equal "/renders", wait_for("the folder as it was before the paste") { clipboard == "/renders" && clipboard }
    xdotool("key", "ctrl+shift+z", "End")
    # The caret, Delete and Backspace step over the camera, a character of two UTF-16 units, whole.
    xdotool("key", "Left", "Right", "Left", "x", "Delete", "BackSpace", "BackSpace")
    menu_beside_the_screen_edge(folder) unless @config
    # A right click on a field that another one's edit left offers its items
    # beside the pointer, with no title bar, for the field under the pointer.
    x, y = points["width"]
    click(points["width"])
    xdotool("key", "ctrl+a", "2", "0", "4", "8", "Tab")
    shown = windows
    xdotool("mousemove", x, y, "click", 3)
    left, top, width, height = geometry(wait_for("the menu") { (windows - shown).first })
    assert_operator left, :>, x, "the menu opens right of the pointer"
    assert_operator top, :>, y, "and below it"
    top_rows = pixels([left + width / 2.0, top + 4, width, 8]).bytes.each_slice(3).each_slice(width)
    refute top_rows.any? { |row| row.count { |pixel| pixel.sum < 300 } > width / 2 }, "no black title bar, however thin"
    click([left + width / 2, top + height * 7 / 8], hold: 0.1) # Select All, the last of four
    xdotool("key", "ctrl+c")
    assert_equal "2048", wait_for("the copied width") { clipboard == "2048" && clipboard }
    # The command key's letters and other chords type nothing.
    xdotool("key", "alt+c", "alt+v", "super+v", "ctrl+q", "Tab", "ctrl+a", "shift+Insert")
  end

  # A person who switched to the other program finds the panel with Alt+Tab;
  # the fixed-size panel offers no maximise.
  def switch_away_and_back
    panel = xdotool("search", "--name", TITLE).split.first
    refute_match(/MAXIMIZE/, output_of("xprop", "-id", panel, "_NET_WM_ALLOWED_ACTIONS"))
    xdotool("windowactivate", "--sync", xdotool("search", "--name", "xmessage").split.first)
    xdotool("keydown", "alt", "key", "Tab", "keyup", "alt")
    wait_for("Alt+Tab to bring the panel back") { xdotool("getwindowfocus").chomp == panel }
  end

  # The folder chooser's Cancel (Escape) gives the panel the keys back.
  def chooser_closed(button)
    shown = windows
    panel_has_keys = -> { output_of("xdotool", "getwindowfocus", "getwindowname") == "#{TITLE}\n" }
    click(button)
    wait_for("the chooser to take the keys") { (windows - shown).any? && !panel_has_keys.call }
    xdotool("key", "Escape")
    wait_for("the panel to have the keys again") { panel_has_keys.call }
  end

  # The X windows on screen; a window that goes while they are listed fails a listing.
  # Near the screen's right edge the menu opens left of the pointer, as whole
  # as beside it elsewhere. (On a bare X server the panel moves exactly where
  # it is sent, and back.)
  def menu_beside_the_screen_edge((x, y, width))
    panel = xdotool("search", "--name", TITLE).split.first
    left, top, panel_width = geometry(panel)
    xdotool("windowmove", "--sync", panel, 1280 - panel_width, top)
    pointer = (x + width / 2 - 4 + 1280 - panel_width - left).round
    shown = windows
    xdotool("mousemove", pointer, y, "click", 3)
    menu_left, menu_top, menu_width, menu_height = geometry(wait_for("the menu") { (windows - shown).first })
    assert_equal [pointer - 1, y + 1], [menu_left + menu_width, menu_top], "the menu's top right corner"
    click([menu_left + menu_width / 2, menu_top + menu_height * 7 / 8], hold: 0.1) # Select All
    xdotool("windowmove", "--sync", panel, left, top)
  end

  def windows
    listing = %w[xdotool search --onlyvisible --name .*]
    wait_for("a list of windows") { output_of(*listing, check: false) }.split
  end

  def language
    @language || "en"
  end

  # The person's languages, as GNUstep reads them.
  def environment
    super.merge("LANGUAGE" => language)
  end

  # The toolkit's words for the menu's items from its table in that language,
  # English for a word the table lacks, as "Select All" is in all of them.
  def toolkit_words(table)
    file = Dir["/usr/{lib,share}/GNUstep/Libraries/gnustep-gui/Versions/*/Resources/#{table}.lproj/Localizable.strings"]
    text = File.read(file.first)
    ["Cut", "Copy", "Paste", "Select All"].map do |english|
      word = text[/^"#{english}" = "([^"]*)";/, 1] || english
      word.gsub(/\\U(\h{4})/i) { [Regexp.last_match(1).hex].pack("U") }
    end
  end

  # Where a window is on the screen: left, top, width and height.
  def geometry(window)
    shell = xdotool("getwindowgeometry", "--shell", window)
    %w[X Y WIDTH HEIGHT].map { |name| shell[/^#{name}=(\d+)/, 1].to_i }
  end

  def offer_clipboard(text)
    reader, writer = IO.pipe
    @pids << spawn(environment, "xclip", "-quiet", "-selection", "clipboard", in: reader, %i[out err] => File::NULL)
    writer.write(text)
    writer.close
    reader.close
    wait_for("the clipboard to hold the text") { clipboard == text }
  end

  def clipboard
    output_of("xclip", "-o", "-selection", "clipboard", check: false)
  end

  # The share of the field's columns inside its border with a dark pixel: text.
  def inked_columns(rgb, width)
    rows = rgb.bytes.each_slice(3).map { |pixel| pixel.sum < 300 }.each_slice(width).to_a
    columns = rows[3..-4].transpose[3..-4]
    columns.count(&:any?).fdiv(columns.size)
  end
end
