require "minitest/autorun"
require "tmpdir"

# bench/ is a tool of ours, not code a plugin author copies: it is written for
# Ruby 3 (endless methods), which older Rubies cannot even parse.
BENCH_PARSES = RUBY_VERSION >= "3.0"
require_relative "../bench/report" if BENCH_PARSES

# What `make bench` prints from its figures: the ratios peer/ours, each held to
# its target, and every miss named at the end.
class BenchReportTest < Minitest::Test
  def setup
    skip "bench/ needs Ruby 3.0 or later, this is #{RUBY_VERSION}" unless BENCH_PARSES
  end

  def figures(ours_combo:, ours_rss_growth:, ours_chooser:)
    base = { "cold_ns" => 300e6, "peak_rss_kib" => 50_000, "construction_ns" => 20e6,
             "dialog_rss_kib" => 1024, "setter_text_ns" => 4000, "setter_check_ns" => 1000,
             "setter_radio_ns" => 2000, "setter_slider_ns" => 500, "setter_combo_ns" => ours_combo,
             "ok_ns" => 30_000, "chooser_first_ns" => ours_chooser, "chooser_again_ns" => 100e6,
             "rss_1000_kib" => 60_000, "rss_10000_kib" => 60_000 + ours_rss_growth }
    peer = ->(factor) { base.to_h { |k, v| [k, k.start_with?("rss") ? v * 2 : v * factor] } }
    html = peer.(100).merge("chooser_first_ns" => nil, "chooser_again_ns" => nil)
    { "ours" => base, "gtk" => peer.(9).merge("setter_combo_ns" => 14_000), "html" => html }
  end

  def events(ours:)
    { 100 => { "ours" => ours, "loop" => 300.0, "observable" => 300.0, "direct" => 110.0,
               "method_call" => 100.0 } }
  end

  def report(combo: 2000, growth: 0, ours_event: 100.0, chooser: 100e6)
    results = { figures: figures(ours_combo: combo, ours_rss_growth: growth, ours_chooser: chooser),
                events: events(ours: ours_event) }
    Bench::Report.new(results, runs: 3, cycles: [1000, 10_000])
  end

  def test_ratios_meet_their_targets
    text = report.markdown
    assert_includes text, "| setter: combo | µs/call | 2.00 | 14.0 | 7.00x (≥ 6x met) |"
    assert_includes text, "| cold start | ms | 300 | 2700 | 9.00x (≥ 3x met) | 30000 | 100x (≥ 4x met) |"
    assert_includes text, "| construction until drawn | ms | 20.0 (≤ 25 met) | 180 | 9.00x (≥ 4x met) |"
    assert_includes text, "| folder chooser shown, first time | ms | 100 (≤ 150 met) | 900 | 9.00x | n/a | n/a |"
    assert_includes text, "| 100 | 100 | 300 (3.00x) | 300 (3.00x) | 110 (1.10x) | 100 (1.00x) |"
    assert_match(/Every target met\.\n\z/, text)
  end

  def test_every_miss_is_named
    text = report(combo: 4000, growth: 2048, ours_event: 200.0, chooser: 140e6).markdown
    assert_includes text, "3.50x (≥ 6x MISSED)"
    assert_includes text, "| folder chooser shown, first time | ms | 140 (≤ 150 MISSED) |"
    misses = text[/Targets missed:\n\n(.*)\z/m, 1].lines.map(&:chomp)
    assert_equal ["- setter: combo: GTK 3 3.50x, target 6x with 10 % to spare",
                  "- folder chooser shown, first time: 140 ms, target ≤ 150 ms with 10 % to spare",
                  "- 100 observers: 0.67x the cost of `Observable`, target ≤ 0.5x with 10 % to spare",
                  "- 100 observers: 1.82x the cost of direct calls, target ≤ 1.1x with 10 % to spare",
                  "- OptionsPanel grew 2048 KiB from 1000 to 10000 cycles"], misses
  end

  def test_a_target_met_without_its_margin_is_missed
    text = report(combo: 14_000 / 6.5).markdown
    assert_includes text, "| setter: combo | µs/call | 2.15 | 14.0 | 6.50x (≥ 6x MISSED) |"
  end

  def test_the_tables_replace_only_what_lies_between_the_markers
    Dir.mktmpdir do |dir|
      path = File.join(dir, "PERFORMANCE.md")
      File.write(path, "# Head\n\n#{Bench::Report::BEGIN_MARK}\nold\n#{Bench::Report::END_MARK}\n\nTail\n")
      report.write(path)
      text = File.read(path)
      assert text.start_with?("# Head\n\n#{Bench::Report::BEGIN_MARK}\nMeasured ")
      assert text.end_with?("Every target met.\n#{Bench::Report::END_MARK}\n\nTail\n")
      refute_includes text, "\nold\n"
    end
  end
end
