require_relative "test_helper"
require "json"

# Where each text of the table shows, and what shows when the table is not as expected.
class TextTableTest < Minitest::Test
  include PanelTest

  # Every text on the panel, by the key that should have given it.
  DUMP_TEXTS = <<~RUBY
    def texts_on_screen
      d = OptionsPanelDriver
      content = d.content_views
      image = d.tab_views(0)
      env = d.tab_views(1)
      texts = ->(views) { views.flat_map { |v| v[:cells] ? v[:cells].map { |c| c[:text] } : [v[:text]] }.compact }
      {
        title: d.window_state[:title],
        header: texts.(content),
        tabs: d.tabs.map { |t| t[:label] },
        image: texts.(image),
        environment: texts.(env),
        caching: d.control(:caching)[:text],
      }
    end
  RUBY

  def screen_texts(setup)
    out, err, status = run_ruby("#{DUMP_TEXTS}\n#{setup}\nrequire 'json'\nputs JSON.dump(texts_on_screen)")
    assert status.success?, err
    assert_empty err
    JSON.parse(out.lines.last, symbolize_names: true)
  end

  # The texts in the order the panel's views hold them, from any table.
  def expected(&text)
    t = ->(k) { text.call(k) }
    {
      title: t.("opt-window-title"),
      header: [t.("opt-preset-lbl"), "", t.("opt-ok-btn-title"), t.("opt-close-btn-title")],
      tabs: [t.("opt-tab-bar-title1"), t.("opt-tab-bar-title2")],
      image: [t.("opt-tab1-image-size-lbl"), *%w[vport fixed panaroma].map { |k| t.("opt-tab1-#{k}-rbtn") },
              t.("opt-tab1-size-lbl"), "Custom", t.("opt-tab1-width-lbl"), "", t.("opt-tab1-height-lbl"), "",
              t.("opt-tab1-image-format-lbl"), *%w[png jpg hdr].map { |k| t.("opt-tab1-#{k}-rbtn") },
              t.("opt-tab1-trans-cbox"), t.("opt-tab1-iml-lbl"), t.("opt-tab1-model-rbtn"),
              t.("opt-tab1-custom-rbtn"), "", "..."],
      environment: [t.("opt-tab2-options-lbl"), *%w[sol caus clay ib tc am].map { |k| t.("opt-tab2-options-#{k}-lbl") },
                    t.("opt-tab2-background-lbl"), t.("opt-tab2-defaul-bk-rbtn"), t.("opt-tab2-pps1-bk-rbtn"),
                    t.("opt-tab2-pps2-bk-rbtn"), t.("opt-tab2-bright-lbl"), t.("opt-tab2-intensity-lbl"),
                    t.("opt-tab2-exposure-lbl"), t.("opt-tab2-reset-btn")],
      caching: t.("opt-tab2-options-gc-lbl"),
    }
  end

  def test_every_text_of_the_table_shows_in_its_place
    setup = <<~RUBY
      w = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN.dup)
      w = nil
      GC.start # the table must survive without the script's reference
      Velmar::OptionsPanelWindow.allocate.show
      Velmar::OptionsPanelWindow.new({ "opt-window-title" => "Too late" })
    RUBY
    assert_equal expected { |k| TEXTS.fetch(k) }, screen_texts(setup)
  end

  def test_without_a_table_each_control_shows_its_key
    assert_equal expected { |k| k }, screen_texts("Velmar::OptionsPanelWindow.allocate.show")
    assert_equal expected { |k| k }, screen_texts("Velmar::OptionsPanelWindow.new([1, 2]).show")
  end

  def test_missing_keys_defaults_and_values_that_are_not_strings
    table = TEXTS.merge("opt-ok-btn-title" => 7, "opt-tab1-png-rbtn" => nil, "opt-tab2-reset-btn" => :reset)
    table.delete("opt-window-title")
    table.delete("opt-tab2-options-gc-lbl")
    setup = "t = #{table.inspect}; t.delete('none'); h = Hash.new('Fallback').merge(t)\n" \
            "Velmar::OptionsPanelWindow.new(h).show"
    shown = screen_texts(setup)
    want = expected do |k|
      case k
      when "opt-window-title", "opt-tab2-options-gc-lbl" then "Fallback"
      when "opt-ok-btn-title", "opt-tab1-png-rbtn", "opt-tab2-reset-btn" then k
      else TEXTS.fetch(k)
      end
    end
    assert_equal want, shown
  end

  def test_bytes_that_are_not_utf8_and_embedded_nul
    setup = <<~RUBY
      t = OptionsPanelTexts::EN.merge(
        "opt-window-title" => "Re\\xFFnder \\xE3\\x81".b,
        "opt-ok-btn-title" => "O\\0K",
        "opt-tab1-png-rbtn" => "\\xC0\\xAFpng".force_encoding("UTF-8"),
        "opt-tab2-reset-btn" => "Zurücksetzen".encode("ISO-8859-1"))
      Velmar::OptionsPanelWindow.new(t).show
    RUBY
    shown = screen_texts(setup)
    assert_equal "Re\u{FFFD}nder \u{FFFD}\u{FFFD}", shown[:title]
    assert_equal "O", shown[:header][2]
    assert_includes shown[:image], "\u{FFFD}\u{FFFD}png"
    assert_includes shown[:environment], "Zur\u{FFFD}cksetzen"
  end

  # A default proc may run any code, even `new` with something that is not a
  # table: the panel reads on in the table it checked.
  def test_a_default_proc_that_stores_another_table
    setup = <<~RUBY
      t = Hash.new { |_, key| Velmar::OptionsPanelWindow.new([1, 2]); "made for \#{key}" }
      t.update(OptionsPanelTexts::EN)
      t.delete("opt-window-title")
      Velmar::OptionsPanelWindow.new(t).show
    RUBY
    want = expected { |k| k == "opt-window-title" ? "made for #{k}" : TEXTS.fetch(k) }
    assert_equal want, screen_texts(setup)
  end
end
