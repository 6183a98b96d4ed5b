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

    # label, figure key, unit, unit scale, minimum ratio per peer (nil: shown, not held)
    ROWS = [
      ["cold start", "cold_ns", "ms", 1e-6, { "gtk" => 3, "html" => 4 }],
      ["cold start, peak resident set", "peak_rss_kib", "MiB", 1 / 1024.0, { "gtk" => 3 }],
      ["construction until drawn", "construction_ns", "ms", 1e-6, { "gtk" => 2 }],
      *SETTERS.map { |s| ["setter: #{s}", "setter_#{s}_ns", "µs/call", 1e-3, { "gtk" => 5 }] },
      ["OK until the fifth event", "ok_ns", "µs", 1e-3, { "gtk" => 4, "html" => 50 }]
    ].freeze

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
      return "#{number(ratio)}x" unless minimum

      met = ratio >= minimum
      @misses << "#{label}: #{PEERS[peer]} #{number(ratio)}x, target #{minimum}x" unless met
      "#{number(ratio)}x (≥ #{minimum}x #{met ? 'met' : 'MISSED'})"
    end

    def figures_table
      head = "| Figure | Unit | OptionsPanel | #{PEERS.values.map { |p| "#{p} | ratio" }.join(' | ')} |"
      rule = "|---|---|---:|#{'---:|---|' * PEERS.size}"
      rows = ROWS.map do |label, key, unit, scale, targets|
        ours = @figures["ours"][key]
        cells = PEERS.keys.map do |peer|
          theirs = @figures[peer][key]
          "#{number(theirs * scale)} | #{ratio_cell(label, peer, theirs.fdiv(ours), targets[peer])}"
        end
        "| #{label} | #{unit} | #{number(ours * scale)} | #{cells.join(' | ')} |"
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
      @misses << "#{count} observers: under 2x cheaper than Observable" if row["observable"] < 2 * ours
      @misses << "#{count} observers: over 1.5x direct calls" if ours > 1.5 * row["direct"]
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
