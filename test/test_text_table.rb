require_relative "test_helper"
require "json"

# Where each text of the table shows, and what shows when the table is not as expected.
class TextTableTest < Minitest::Test
  include PanelTest

  # Every text on the panel in the order the panel holds them: the window's title,
  # the header, the tabs' labels, both tabs and the caching box that is never shown.
  DUMP_TEXTS = <<~RUBY
    require "json"
    d = OptionsPanelDriver
    texts = ->(views) { views.flat_map { |v| v[:cells] ? v[:cells].map { |c| c[:text] } : [v[:text]] }.compact }
    puts JSON.dump([d.window_state[:title], *texts.(d.content_views), *d.tabs.map { |t| t[:label] },
                    *texts.(d.tab_views(0)), *texts.(d.tab_views(1)), d.control(:caching)[:text]])
  RUBY

  # The key of each of those texts; what is no key shows as it is.
  PLACES = ["opt-window-title", "opt-preset-lbl", "", "opt-ok-btn-title", "opt-close-btn-title",
            "opt-tab-bar-title1", "opt-tab-bar-title2", "opt-tab1-image-size-lbl",
            *%w[vport fixed panaroma].map { |k| "opt-tab1-#{k}-rbtn" }, "opt-tab1-size-lbl", "Custom",
            "opt-tab1-width-lbl", "", "opt-tab1-height-lbl", "", "opt-tab1-image-format-lbl",
            *%w[png jpg hdr].map { |k| "opt-tab1-#{k}-rbtn" }, "opt-tab1-trans-cbox", "opt-tab1-iml-lbl",
            "opt-tab1-model-rbtn", "opt-tab1-custom-rbtn", "", "...", "opt-tab2-options-lbl",
            *%w[sol caus clay ib tc am].map { |k| "opt-tab2-options-#{k}-lbl" }, "opt-tab2-background-lbl",
            *%w[defaul pps1 pps2].map { |k| "opt-tab2-#{k}-bk-rbtn" }, "opt-tab2-bright-lbl",
            "opt-tab2-intensity-lbl", "opt-tab2-exposure-lbl", "opt-tab2-reset-btn", "opt-tab2-options-gc-lbl"].freeze

  # Set-up code for a process of its own, and what the keys it changes show.
  TABLES = {
    <<~RUBY => {},
      w = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN.dup)
      w = nil
      GC.start # the table must survive without the script's reference
      Velmar::OptionsPanelWindow.allocate.show
      Velmar::OptionsPanelWindow.new({ "opt-window-title" => "Too late" })
    RUBY
    # Without a table each control shows its key.
    "Velmar::OptionsPanelWindow.new([1, 2]).show" => PLACES.grep(/\Aopt-/).to_h { |k| [k, k] },
    # A default proc may run any code, even `new` with something that is not a
    # table: the panel reads on in the table it checked. What is no String shows
    # its key; bytes that are no UTF-8 show as U+FFFD, and a NUL ends the text.
    <<~RUBY => {
      t = Hash.new { |_, key| "made for \#{key}".tap { Velmar::OptionsPanelWindow.new([1, 2]) } }
      t.update(OptionsPanelTexts::EN.reject { |k, _| %w[opt-preset-lbl opt-tab2-options-gc-lbl].include?(k) })
      t.update("opt-tab1-jpg-rbtn" => 7, "opt-tab1-hdr-rbtn" => nil, "opt-tab2-bright-lbl" => :bright,
               "opt-window-title" => "Re\\xFFnder \\xE3\\x81".b, "opt-ok-btn-title" => "O\\0K",
               "opt-tab1-png-rbtn" => "\\xC0\\xAFpng".force_encoding("UTF-8"),
               "opt-tab2-reset-btn" => "Zurücksetzen".encode("ISO-8859-1"))
      Velmar::OptionsPanelWindow.new(t).show
    RUBY
      "opt-window-title" => "Re\u{FFFD}nder \u{FFFD}\u{FFFD}", "opt-ok-btn-title" => "O",
      "opt-tab1-png-rbtn" => "\u{FFFD}\u{FFFD}png", "opt-tab2-reset-btn" => "Zur\u{FFFD}cksetzen",
      "opt-preset-lbl" => "made for opt-preset-lbl", "opt-tab2-options-gc-lbl" => "made for opt-tab2-options-gc-lbl",
      "opt-tab1-jpg-rbtn" => "opt-tab1-jpg-rbtn", "opt-tab1-hdr-rbtn" => "opt-tab1-hdr-rbtn",
      "opt-tab2-bright-lbl" => "opt-tab2-bright-lbl"
    }
  }.freeze

  def test_every_text_shows_in_its_place_whatever_the_table
    TABLES.each do |setup, changed|
      out, err, status = run_ruby("#{setup}\n#{DUMP_TEXTS}")
      assert_equal [true, ""], [status.success?, err]
      # A line for each place, so that a failure's diff names the keys that show wrong.
      want = PLACES.map { |k| "#{k}: #{changed.fetch(k) { TEXTS.fetch(k, k) }}" }
      shown = JSON.parse(out.lines.last).map.with_index { |text, i| "#{PLACES[i]}: #{text}" }
      assert_equal want.join("\n"), shown.join("\n"), setup
    end
  end
end
