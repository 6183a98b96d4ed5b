require_relative "test_helper"
require "json"

# What a person sees in each language: on both tabs nothing drawn overlaps
# anything else, everything lies inside the window, and no button's title
# touches its outline.
class LayoutInEveryLanguageTest < Minitest::Test
  include PanelTest

  # Beside its title a button needs room for a push button's rounded ends,
  # or for a check box's box and the gap after it.
  TITLE_ROOM = 20

  def overlap?((ax, ay, aw, ah), (bx, by, bw, bh))
    ax < bx + bw && bx < ax + aw && ay < by + bh && by < ay + ah
  end

  def inside?((ix, iy, iw, ih), (ox, oy, ow, oh))
    ix >= ox && iy >= oy && ix + iw <= ox + ow && iy + ih <= oy + oh
  end

  def test_nothing_overlaps_and_everything_is_inside_the_window
    label = ->(view) { "#{view['class']} #{view['text'].inspect} #{view['drawn_in_window']}" }
    %w[en de ja].each do |language|
      # Both tabs as a new panel in that language shows them, every view with
      # what it draws in window coordinates.
      out, err, status = run_ruby(<<~RUBY)
        require #{File.expand_path("../examples/texts/#{language}", __dir__).inspect}
        require "json"
        d = OptionsPanelDriver
        Velmar::OptionsPanelWindow.new(OptionsPanelTexts::#{language.upcase}).show
        tabs = [0, 1].map do |tab|
          d.choose_tab(tab)
          { "header" => d.content_views, "tab" => d.tab_views(tab) }
        end
        puts JSON.dump("window" => d.window_state, "tabs" => tabs)
      RUBY
      assert status.success?, err
      state = JSON.parse(out.lines.last)
      window = [0, 0] + state["window"]["content"].last(2)
      state["tabs"].each_with_index do |tab, index|
        where = "#{language}, tab #{index}"
        tab_view = tab["header"].find { |v| v["class"] == "NSTabView" }
        # The tab's own views are drawn inside the tab view, which holds them:
        # they may overlap it, not each other nor the header's.
        { "the window" => [tab["header"] + tab["tab"], window],
          "its tab" => [tab["tab"], tab_view["drawn_in_window"]] }.each do |outer, (views, frame)|
          views.each { |v| assert inside?(v["drawn_in_window"], frame), "#{where}: outside #{outer}: #{label.(v)}" }
        end
        [tab["header"], tab["tab"]].each do |views|
          views.combination(2).each do |a, b|
            refute overlap?(a["drawn_in_window"], b["drawn_in_window"]), "#{where}: #{label.(a)} overlaps #{label.(b)}"
          end
        end
        (tab["header"] + tab["tab"]).select { |view| view["title_width"] }.each do |button|
          assert_operator button["frame"][2] - button["title_width"], :>=, TITLE_ROOM,
                          "#{where}: the title touches the bezel or box: #{label.(button)}"
        end
      end
    end
  end
end
