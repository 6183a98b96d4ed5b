require_relative "test_helper"
require "json"

# What a person sees in each language a host may ship, and in a
# pseudo-localized table (every English text about 40 % longer, in accented
# letters, as localization teams check): on both tabs every title shows whole,
# nothing drawn overlaps anything else, and everything lies inside its tab and
# the window, which keeps its origin. English keeps the layout it was drawn for.
class LayoutInEveryLanguageTest < Minitest::Test
  include PanelTest

  # The example tables, the pseudo-localized one, and tab labels longer than the tab view.
  LANGUAGES = %w[en de ja fr es it pt_br ru pl ko zh_cn pseudo long_tabs].freeze
  # Beside its title a button needs room for a push button's rounded ends,
  # or for a check box's box and the gap after it.
  TITLE_ROOM = 20
  # The driver finds a tab's width to within this many points.
  TAB_STEP = 2
  PLAIN = [*"a".."z", *"A".."Z"].join
  ACCENTED = "àƀçđéƒĝĥîĵķļɱñöþǫŕšţûṽŵẋýžÀƁÇĐÉƑĜĤÎĴĶĻṀÑÖÞǪŔŠŢÛṼŴẊÝŽ".freeze

  def self.pseudo_localized(texts)
    texts.transform_values do |text|
      accented = text.tr(PLAIN, ACCENTED)
      "[#{accented} #{(accented * 2)[0, (text.length * 0.4).ceil]}]"
    end
  end

  def texts_of(language)
    return self.class.pseudo_localized(OptionsPanelTexts::EN) if language == "pseudo"
    return OptionsPanelTexts::EN.merge("opt-tab-bar-title2" => "Environment " * 6) if language == "long_tabs"

    require_relative "../examples/texts/#{language}"
    OptionsPanelTexts.const_get(language.upcase)
  end

  # Both tabs as a new panel in that language shows them, every view with
  # what it draws in window coordinates.
  def panel_with(texts)
    out, err, status = run_ruby(<<~RUBY)
      require "json"
      d = OptionsPanelDriver
      Velmar::OptionsPanelWindow.new(JSON.parse(#{JSON.dump(texts).inspect})).show
      tabs = [0, 1].map do |tab|
        d.choose_tab(tab)
        { "header" => d.content_views, "tab" => d.tab_views(tab) }
      end
      puts JSON.dump("window" => d.window_state, "tab_labels" => d.tabs, "tabs" => tabs)
    RUBY
    assert status.success?, err
    JSON.parse(out.lines.last)
  end

  def overlap?((ax, ay, aw, ah), (bx, by, bw, bh))
    ax < bx + bw && bx < ax + aw && ay < by + bh && by < ay + ah
  end

  def inside?((ix, iy, iw, ih), (ox, oy, ow, oh))
    ix >= ox && iy >= oy && ix + iw <= ox + ow && iy + ih <= oy + oh
  end

  def label(view)
    "#{view['class']} #{(view['text'] || view['cells']&.map { |c| c['text'] }).inspect} #{view['drawn_in_window']}"
  end

  def assert_titles_whole(views, where)
    views.each do |v|
      assert_operator v["needed_width"], :<=, v["frame"][2], "#{where}: cut: #{label(v)}" if v["needed_width"]
      v["cells"]&.each do |c|
        assert_operator c["needed_width"], :<=, v["cell_width"], "#{where}: cut: #{c['text'].inspect}"
      end
      next unless v["title_width"]

      assert_operator v["frame"][2] - v["title_width"], :>=, TITLE_ROOM,
                      "#{where}: the title touches the bezel or box: #{label(v)}"
    end
  end

  def assert_nothing_overlaps_or_sticks_out(tab, window, where)
    tab_view = tab["header"].find { |v| v["class"] == "NSTabView" }
    # The tab's own views are drawn inside the tab view, which holds them:
    # they may overlap it, not each other nor the header's.
    { "the window" => [tab["header"] + tab["tab"], window],
      "its tab" => [tab["tab"], tab_view["drawn_in_window"]] }.each do |outer, (views, frame)|
      views.each { |v| assert inside?(v["drawn_in_window"], frame), "#{where}: outside #{outer}: #{label(v)}" }
    end
    [tab["header"], tab["tab"]].each do |views|
      views.combination(2).each do |a, b|
        refute overlap?(a["drawn_in_window"], b["drawn_in_window"]), "#{where}: #{label(a)} overlaps #{label(b)}"
      end
    end
  end

  def test_every_title_whole_nothing_overlapping_nothing_outside
    list_gap = nil
    LANGUAGES.each do |language|
      state = panel_with(texts_of(language))
      assert_equal [300, 400], state["window"]["frame"].first(2), "#{language}: the window keeps its origin"
      tab_view = state["tabs"][0]["header"].find { |v| v["class"] == "NSTabView" }["drawn_in_window"]
      state["tab_labels"].each do |t|
        assert_operator t["label_width"], :<=, t["drawn_in_window"][2] + TAB_STEP, "#{language}: #{t['label']} cut"
        assert inside?(t["drawn_in_window"], tab_view), "#{language}: tab #{t['label']} outside the tab view"
      end
      # The preset list reaches as near the tab view's right edge as in English.
      list = state["tabs"][0]["header"].find { |v| v["class"] == "NSComboBox" }["drawn_in_window"]
      list_gap ||= tab_view[0] + tab_view[2] - list[0] - list[2]
      assert_equal list_gap, tab_view[0] + tab_view[2] - list[0] - list[2], "#{language}: the preset list's right end"
      window = [0, 0] + state["window"]["content"].last(2)
      state["tabs"].each_with_index do |tab, index|
        assert_nothing_overlaps_or_sticks_out(tab, window, "#{language}, tab #{index}")
        assert_titles_whole(tab["header"] + tab["tab"], "#{language}, tab #{index}")
      end
      assert_english_layout(state) if language == "en"
    end
  end

  # A title no panel could hold grows the window as far as the screen's edge and no further.
  def test_a_title_wider_than_the_screen_stops_the_window_at_its_edge
    state = panel_with(OptionsPanelTexts::EN.merge("opt-tab2-options-sol-lbl" => "Spherical point lights " * 80))
    frame, screen = state["window"].values_at("frame", "screen")
    assert_equal [300, 400, screen[0] + screen[2]], frame.first(2) + [frame[0] + frame[2]]
  end

  # The frames English was drawn for: the window, the tab view, OK and Close,
  # and each tab's column separator.
  def assert_english_layout(state)
    header = state["tabs"][0]["header"].to_h { |v| [v["text"] || v["class"], v["frame"]] }
    assert_equal [[420, 315], [10, 38, 400, 240], [110, 280, 290], [290, 0], [350, 0]],
                 [state["window"]["content"].last(2), header["NSTabView"], header[""].first(3),
                  header["OK"].first(2), header["Close"].first(2)]
    separators = state["tabs"].map { |tab| tab["tab"].find { |v| v["class"] == "NSBox" }["frame"] }
    assert_equal [[190, 10, 10, 180]] * 2, separators
    assert_equal [340, 10, 40, 40], state["tabs"][0]["tab"].find { |v| v["text"] == "..." }["frame"], "the folder's button"
  end
end
