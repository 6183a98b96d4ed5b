require_relative "test_helper"
require "json"

# What a person sees in each language: on both tabs nothing drawn overlaps
# anything else, everything lies inside the window, and no button's title
# touches its outline.
class LayoutInEveryLanguageTest < Minitest::Test
  include PanelTest

  LANGUAGES = { "en" => "EN", "de" => "DE", "ja" => "JA" }.freeze
  # Beside its title a button needs room for a push button's rounded ends,
  # or for a check box's box and the gap after it.
  TITLE_ROOM = 20

  # Both tabs as a new panel in that language shows them, every view with what
  # it draws in window coordinates.
  def views_in(language)
    out, err, status = run_ruby(<<~RUBY)
      require #{File.expand_path("../examples/texts/#{language}", __dir__).inspect}
      require "json"
      d = OptionsPanelDriver
      Velmar::OptionsPanelWindow.new(OptionsPanelTexts::#{LANGUAGES.fetch(language)}).show
      tabs = [0, 1].map do |tab|
        d.choose_tab(tab)
        { "header" => d.content_views, "tab" => d.tab_views(tab) }
      end
      puts JSON.dump("window" => d.window_state, "tabs" => tabs)
    RUBY
    assert status.success?, err
    JSON.parse(out.lines.last)
  end

  def overlap?(a, b)
    ax, ay, aw, ah = a
    bx, by, bw, bh = b
    ax < bx + bw && bx < ax + aw && ay < by + bh && by < ay + ah
  end

  def inside?(inner, outer)
    ix, iy, iw, ih = inner
    ox, oy, ow, oh = outer
    ix >= ox && iy >= oy && ix + iw <= ox + ow && iy + ih <= oy + oh
  end

  def label(view)
    "#{view['class']} #{view['text'].inspect} #{view['drawn_in_window']}"
  end

  def test_nothing_overlaps_and_everything_is_inside_the_window
    LANGUAGES.each_key do |language|
      state = views_in(language)
      window = [0, 0] + state["window"]["content"].last(2)
      state["tabs"].each_with_index do |tab, index|
        tab_view = tab["header"].find { |v| v["class"] == "NSTabView" }
        others = tab["header"] - [tab_view]
        # The tab's own views are drawn inside the tab view, which holds them.
        controls = others + tab["tab"]
        where = "#{language}, tab #{index}"
        controls.each do |view|
          assert inside?(view["drawn_in_window"], window), "#{where}: outside the window: #{label(view)}"
        end
        tab["tab"].each do |view|
          assert inside?(view["drawn_in_window"], tab_view["drawn_in_window"]),
                 "#{where}: outside its tab: #{label(view)}"
        end
        (others + [tab_view]).combination(2).each do |a, b|
          refute overlap?(a["drawn_in_window"], b["drawn_in_window"]), "#{where}: #{label(a)} overlaps #{label(b)}"
        end
        tab["tab"].combination(2).each do |a, b|
          refute overlap?(a["drawn_in_window"], b["drawn_in_window"]), "#{where}: #{label(a)} overlaps #{label(b)}"
        end
        controls.select { |view| view["title_width"] }.each do |button|
          assert_operator button["frame"][2] - button["title_width"], :>=, TITLE_ROOM,
                          "#{where}: the title touches the bezel or box: #{label(button)}"
        end
      end
    end
  end
end
