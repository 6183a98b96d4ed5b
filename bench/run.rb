# frozen_string_literal: true

# Measures our panel beside the same dialog built with GTK 3 and as an HTML
# page in a WebKitGTK view, all in one run on one display, and prints the
# side-by-side table with the ratios peer/ours.
#
#   ruby bench/run.rb [--runs N] [--cycles 1000,10000] [--write docs/PERFORMANCE.md]
#
# `make bench` runs it under the project's own X display. Every figure is
# measured in fresh processes, the dialogs taking turns, and the median of
# the runs is kept.
require "json"
require "optparse"
require "rbconfig"
require "timeout"
require_relative "report"

module Bench
  class Run
    ROOT = File.expand_path("..", __dir__)
    PROBE = File.join(__dir__, "probe.rb")
    DIALOGS = %w[ours gtk html].freeze
    OBSERVER_COUNTS = [1, 10, 100].freeze

    def initialize(runs:, cycles:, build:)
      @runs = runs
      @cycles = cycles
      @build = build
    end

    def call
      DIALOGS.each { |dialog| probe(dialog, "cold") } # untimed: the page cache and the toolkits' daemons
      figures = DIALOGS.to_h { |dialog| [dialog, {}] }
      measure_processes(figures)
      measure_in_process(figures)
      measure_memory(figures)
      { figures: figures, events: measure_events }
    end

    private

    # Runs the probe, returns [parsed JSON line, ns from spawn until that line].
    def probe(dialog, figure, argument = nil, limit: 300)
      command = [RbConfig.ruby, "-I", @build, PROBE, dialog, figure, argument].compact
      start = Process.clock_gettime(Process::CLOCK_MONOTONIC, :nanosecond)
      IO.popen(command, chdir: ROOT) do |io|
        line = Timeout.timeout(limit) { io.gets }
        elapsed = Process.clock_gettime(Process::CLOCK_MONOTONIC, :nanosecond) - start
        raise "#{dialog} #{figure}: no result" unless line

        [JSON.parse(line), elapsed]
      rescue Timeout::Error
        Process.kill("KILL", io.pid)
        raise "#{dialog} #{figure}: no result within #{limit} s"
      end
    end

    # The dialogs in a different order each run, so none is always first.
    def in_turn(run) = DIALOGS.rotate(run)

    def median(values)
      sorted = values.sort
      mid = sorted.size / 2
      sorted.size.odd? ? sorted[mid] : (sorted[mid - 1] + sorted[mid]) / 2.0
    end

    def collect(figures, samples)
      samples.each do |dialog, rows|
        rows.first.each_key do |key|
          values = rows.map { |r| r[key] }
          figures[dialog][key] = values.include?(nil) ? nil : median(values)
        end
      end
    end

    def measure_processes(figures)
      samples = Hash.new { |h, k| h[k] = [] }
      @runs.times do |run|
        in_turn(run).each do |dialog|
          cold, elapsed = probe(dialog, "cold")
          construction, = probe(dialog, "construction")
          memory, = probe(dialog, "dialog_memory")
          samples[dialog] << { "cold_ns" => elapsed, "peak_rss_kib" => cold["peak_rss_kib"],
                               "construction_ns" => construction["construction_ns"],
                               "dialog_rss_kib" => memory["dialog_rss_kib"] }
        end
      end
      collect(figures, samples)
    end

    def measure_in_process(figures)
      samples = Hash.new { |h, k| h[k] = [] }
      @runs.times do |run|
        in_turn(run).each do |dialog|
          setters, = probe(dialog, "setters")
          ok, = probe(dialog, "ok")
          chooser, = probe(dialog, "chooser")
          samples[dialog] << setters.transform_keys { |k| "setter_#{k}_ns" }.merge(ok, chooser)
        end
      end
      collect(figures, samples)
    end

    def measure_memory(figures)
      DIALOGS.each do |dialog|
        rss, = probe(dialog, "memory", @cycles.join(","), limit: 3600)
        rss.each { |cycles, kib| figures[dialog]["rss_#{cycles}_kib"] = kib }
      end
    end

    def measure_events
      OBSERVER_COUNTS.to_h do |count|
        rows = Array.new(@runs) { probe("ours", "events", count.to_s).first }
        [count, rows.first.keys.to_h { |key| [key, median(rows.map { |r| r[key] })] }]
      end
    end
  end
end

if $PROGRAM_NAME == __FILE__
  options = { runs: 5, cycles: [1000, 10_000], build: File.join(Bench::Run::ROOT, "build"), write: nil }
  OptionParser.new do |o|
    o.on("--runs N", Integer, "repetitions of each figure (default 5)") { |v| options[:runs] = v }
    o.on("--cycles LIST", Array, "show/OK/close checkpoints (default 1000,10000)") do |v|
      options[:cycles] = v.map { |c| Integer(c) }
    end
    o.on("--build DIR", "where OptionsPanel.so is") { |v| options[:build] = File.expand_path(v) }
    o.on("--write FILE", "also put the tables into FILE") { |v| options[:write] = v }
  end.parse!
  results = Bench::Run.new(**options.slice(:runs, :cycles, :build)).call
  report = Bench::Report.new(results, runs: options[:runs], cycles: options[:cycles])
  puts report.markdown
  report.write(options[:write]) if options[:write]
end
