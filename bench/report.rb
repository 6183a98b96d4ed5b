# frozen_string_literal: true

# The benchmark's tables: figures of each dialog, the ratios peer/ours and the
# targets they are held to, in Markdown for the terminal and for
# docs/PERFORMANCE.md, where they replace the part between the two markers.
require "etc"

module Bench
  class Report
    BEGIN_MARK = "<!-- bench:begin -->"
    END_MARK = "<!-- bench:end -->"
    PEERS = { "gtk" => "GTK 3", "html" => "WebKitGTK HTML" }.freeze
    SETTERS = %w[text check radio slider combo].freeze

    # A target counts as met only when the median clears it by this factor,
    # so that a lucky run cannot meet it.
    MARGIN = 1.1

    # label, figure key, unit, unit scale, minimum ratio per peer (absent: shown,
    # not held), and the most our figure may be, in the unit (nil: none)
    ROWS = [
      ["cold start", "cold_ns", "ms", 1e-6, { "gtk" => 3, "html" => 4 }, nil],
      ["cold start, peak resident set", "peak_rss_kib", "MiB", 1 / 1024.0, { "gtk" => 3 }, nil],
      ["construction until drawn", "construction_ns", "ms", 1e-6, { "gtk" => 4 }, 25],
      ["memory of the dialog in a running toolkit", "dialog_rss_kib", "MiB", 1 / 1024.0, {}, 2],
      *SETTERS.map { |s| ["setter: #{s}", "setter_#{s}_ns", "µs/call", 1e-3, { "gtk" => 6 }, nil] },
      ["OK until the fifth event", "ok_ns", "µs", 1e-3, { "gtk" => 8, "html" => 50 }, nil],
      ["folder chooser shown, first time", "chooser_first_ns", "ms", 1e-6, {}, 150],
      ["folder chooser shown, again", "chooser_again_ns", "ms", 1e-6, {}, 150]
    ].freeze

    # Event delivery: ours at most this many times the other way's cost per call.
    EVENT_LIMITS = { "observable" => 0.5, "direct" => 1.1 }.freeze

    EVENT_SENDERS = {
      "loop" => "`public_send` loop", "observable" => "`Observable`",
      "direct" => "direct calls", "method_call" => "one method call"
    }.freeze

    def initialize(results, runs:, cycles:)
      @figures = results[:figures] || results["figures"]
      @events = results[:events] || results["events"]
      @runs = runs
      @cycles = cycles
      @misses = []
    end

    def markdown
      @misses = []
      [machine, figures_table, events_table, memory_table, verdict].join("\n\n") + "\n"
    end

    def write(path)
      text = File.read(path)
      first = text.index(BEGIN_MARK) or raise "#{path} has no #{BEGIN_MARK}"
      last = text.index(END_MARK) or raise "#{path} has no #{END_MARK}"
      File.write(path, "#{text[0, first]}#{BEGIN_MARK}\n#{markdown}#{text[last..]}")
    end

    private

    def version(package)
      `dpkg-query -W -f='${Version}' #{package} 2>/dev/null`.strip
    end

    def machine
      cpu = File.foreach("/proc/cpuinfo").find { |l| l.start_with?("model name") }&.split(":")&.last&.strip
      <<~TEXT.chomp
        Measured #{Time.now.utc.strftime('%Y-%m-%d')} on #{cpu} (#{Etc.nprocessors} cores), #{`uname -sr`.strip},
        Ruby #{RUBY_VERSION}, GNUstep gui #{version('libgnustep-gui0.29')}, GTK #{version('libgtk-3-0')}
        with ruby-gtk3 #{version('ruby-gtk3')}, WebKitGTK #{version('libwebkit2gtk-4.0-37')} with
        ruby-webkit2-gtk #{version('ruby-webkit2-gtk')}; Xvfb. Medians of #{@runs} runs; ratios are peer/ours.
        Command: `make bench` (`ruby bench/run.rb --runs #{@runs} --cycles #{@cycles.join(',')}`).
      TEXT
    end

    def number(value)
      return "n/a" unless value

      value >= 100 ? value.round.to_s : format("%.#{value >= 10 ? 1 : 2}f", value)
    end

    def ratio_cell(label, peer, ratio, minimum)
      return ratio && "#{number(ratio)}x" unless minimum && ratio

      met = ratio >= minimum * MARGIN
      @misses << "#{label}: #{PEERS[peer]} #{number(ratio)}x, target #{minimum}x#{margin_note}" unless met
      "#{number(ratio)}x (≥ #{minimum}x #{met ? 'met' : 'MISSED'})"
    end

    def ours_cell(label, value, unit, limit)
      return number(value) unless limit

      met = value * MARGIN <= limit
      @misses << "#{label}: #{number(value)} #{unit}, target ≤ #{limit} #{unit}#{margin_note}" unless met
      "#{number(value)} (≤ #{limit} #{met ? 'met' : 'MISSED'})"
    end

    def margin_note = " with #{((MARGIN - 1) * 100).round} % to spare"

    def figures_table
      head = "| Figure | Unit | OptionsPanel | #{PEERS.values.map { |p| "#{p} | ratio" }.join(' | ')} |"
      rule = "|---|---|---:|#{'---:|---|' * PEERS.size}"
      rows = ROWS.map do |label, key, unit, scale, targets, limit|
        ours = @figures["ours"][key]
        cells = PEERS.keys.map do |peer|
          theirs = @figures[peer][key]
          ratio = theirs && ours.positive? ? theirs.fdiv(ours) : nil
          "#{number(theirs && theirs * scale)} | #{ratio_cell(label, peer, ratio, targets[peer]) || 'n/a'}"
        end
        "| #{label} | #{unit} | #{ours_cell(label, ours * scale, unit, limit)} | #{cells.join(' | ')} |"
      end
      [head, rule, *rows].join("\n")
    end

    def events_table
      head = "| Observers | OptionsPanel ns/call | #{EVENT_SENDERS.values.join(' | ')} |"
      rule = "|---:|---:|#{'---:|' * EVENT_SENDERS.size}"
      rows = @events.map do |count, row|
        ours = row["ours"]
        check_events(count, ours, row)
        cells = EVENT_SENDERS.keys.map { |k| "#{number(row[k])} (#{number(row[k] / ours)}x)" }
        "| #{count} | #{number(ours)} | #{cells.join(' | ')} |"
      end
      ["Event delivery, ns per delivered observer call (in brackets: that way / ours):",
       [head, rule, *rows].join("\n")].join("\n\n")
    end

    def check_events(count, ours, row)
      @misses << "#{count} observers: slower than the public_send loop" if ours > row["loop"]
      EVENT_LIMITS.each do |way, limit|
        next if ours * MARGIN <= limit * row[way]

        @misses << "#{count} observers: #{number(ours / row[way])}x the cost of #{EVENT_SENDERS[way]}, " \
                   "target ≤ #{limit}x#{margin_note}"
      end
    end

    def memory_table
      first, last = @cycles.minmax
      head = "| Resident set, MiB | OptionsPanel | #{PEERS.values.join(' | ')} |"
      rule = "|---|---:|#{'---:|' * PEERS.size}"
      rows = @cycles.map do |c|
        "| after #{c} show/OK/close cycles | #{(%w[ours] + PEERS.keys).map { |d| number(rss(d, c) / 1024.0) }.join(' | ')} |"
      end
      growth = (%w[ours] + PEERS.keys).map { |d| rss(d, last) - rss(d, first) }
      @misses << "OptionsPanel grew #{growth.first} KiB from #{first} to #{last} cycles" if growth.first >= 1024
      rows << "| growth from #{first} to #{last}, KiB | #{growth.join(' | ')} |"
      [head, rule, *rows].join("\n")
    end

    def rss(dialog, cycles) = @figures[dialog]["rss_#{cycles}_kib"]

    def verdict
      return "Every target met." if @misses.empty?

      "Targets missed:\n\n#{@misses.map { |m| "- #{m}" }.join("\n")}"
    end
  end
end
