# frozen_string_literal: true

# One measurement of one dialog in a fresh process; prints its figures as one
# line of JSON. bench/run.rb starts it; by hand:
#
#   scripts/with-display.sh ruby -I build bench/probe.rb gtk setters
#
# Each measurement starts from a process of its own, so that one dialog's
# toolkit never warms up another's.
$stdout.sync = true
require "json"
require "observer"
require_relative "process_memory"

module Bench
  DIALOGS = {
    "ours" => ["options_panel", "OptionsPanelDialog"],
    "gtk" => ["gtk", "Gtk3Dialog"],
    "html" => ["html", "HtmlDialog"]
  }.freeze
  PRESETS = %w[Draft Final Studio].freeze

  module Probe
    module_function

    def now = Process.clock_gettime(Process::CLOCK_MONOTONIC, :nanosecond)

    def dialog_class(key)
      file, name = DIALOGS.fetch(key)
      require_relative "dialogs/#{file}"
      Dialogs.const_get(name)
    end

    # Counts the five OK events and notes when the last one arrived.
    class Recorder
      attr_reader :count, :last_at

      def initialize = @count = 0
      %i[preset_changed output_changed environment_changed options_changed close].each do |name|
        define_method(name) do |_payload|
          @last_at = Probe.now
          @count += 1
        end
      end
    end

    def shown(key)
      klass = dialog_class(key)
      klass.start_toolkit
      klass.new.tap(&:build_and_show)
    end

    def ready(key) = shown(key).tap { |dialog| dialog.populate_presets(PRESETS) }

    # Until the panel is drawn, from ruby's start; the parent times the whole
    # process, this reports the memory of its tree at that moment.
    def cold(key, _)
      shown(key)
      { peak_rss_kib: ProcessMemory.tree_peak_kib }
    end

    def construction(key, _)
      klass = dialog_class(key)
      klass.start_toolkit
      dialog = klass.new
      start = now
      dialog.build_and_show
      { construction_ns: now - start }
    end

    # The dialog's own memory where the toolkit already runs, as in a host that
    # has started it: the process's resident set (its tree's, for the web
    # view's helpers) before the dialog and once it is drawn, each after a
    # garbage collection.
    def dialog_memory(key, _)
      klass = dialog_class(key)
      klass.start_toolkit
      GC.start
      before = ProcessMemory.tree_rss_kib
      klass.new.build_and_show
      GC.start
      { dialog_rss_kib: ProcessMemory.tree_rss_kib - before }
    end

    # From the click on the folder button until the chooser is on screen and
    # drawn, the first time in the process and the second; the chooser is
    # cancelled each time. nil for a dialog without a chooser of its own.
    def chooser(key, _)
      dialog = ready(key)
      first = dialog.time_folder_chooser
      { chooser_first_ns: first, chooser_again_ns: first && dialog.time_folder_chooser }
    end

    SETTERS = {
      text: ->(d, i) { d.set_text(i.even? ? "/tmp/renders/a" : "/tmp/renders/b") },
      check: ->(d, i) { d.set_check(i.even?) },
      radio: ->(d, i) { d.set_radio(i.even? ? "sky" : "default") },
      slider: ->(d, i) { d.set_slider(i % 101) },
      combo: ->(d, i) { d.set_combo(PRESETS[i % PRESETS.size]) }
    }.freeze

    # Doubles the number of calls until a batch takes long enough to time.
    def ns_per_call(min_ns)
      calls = 8
      loop do
        start = now
        calls.times { |i| yield i }
        elapsed = now - start
        return elapsed.fdiv(calls) if elapsed >= min_ns

        calls *= 2
      end
    end

    def setters(key, _)
      dialog = ready(key)
      SETTERS.to_h do |kind, call|
        ns = ns_per_call(200_000_000) { |i| call.(dialog, i) }
        dialog.pump while dialog.pending?
        [kind, ns]
      end
    end

    def round_trip(dialog, recorder)
      dialog.show
      dialog.pump while dialog.pending?
      before = recorder.count
      start = now
      dialog.press_ok
      dialog.pump while recorder.count < before + 5
      recorder.last_at - start
    end

    def ok(key, trips)
      dialog = ready(key)
      recorder = Recorder.new
      dialog.observe(recorder)
      times = Array.new(Integer(trips || 20)) { round_trip(dialog, recorder) }
      { ok_ns: times.sort[times.size / 2] }
    end

    # Resident set of the whole process tree after each checkpoint of
    # show/OK/close cycles.
    def memory(key, checkpoints)
      dialog = ready(key)
      recorder = Recorder.new
      dialog.observe(recorder)
      done = 0
      checkpoints.to_s.split(",").map(&:to_i).to_h do |cycles|
        (cycles - done).times { round_trip(dialog, recorder) }
        done = cycles
        GC.start
        [cycles, ProcessMemory.tree_rss_kib]
      end
    end

    # Event delivery: one event sent to k observers, by our panel and by the
    # ways a Ruby dialog would send it. Our observers cannot be removed, so each
    # k has a process of its own.
    EVENT = :options_changed_show_render_all

    class Listener
      define_method(EVENT) { |_payload| nil }
    end

    class ObservableSender
      include Observable

      def initialize(observers) = observers.each { |o| add_observer(o, EVENT) }

      def send_event(value)
        changed
        notify_observers([value])
      end
    end

    class LoopSender
      def initialize(observers) = @observers = observers

      def send_event(value)
        payload = [value]
        @observers.each { |o| o.public_send(EVENT, payload) if o.respond_to?(EVENT) }
      end
    end

    class DirectSender
      def initialize(observers) = @observers = observers

      def send_event(value)
        payload = [value]
        @observers.each { |o| o.options_changed_show_render_all(payload) }
      end
    end

    def events(_key, count)
      dialog_class("ours")
      require "OptionsPanel"
      k = Integer(count)
      observers = Array.new(k) { Listener.new }
      panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      observers.each { |o| panel.observe(o) }
      senders = { ours: ->(v) { panel.hide_render_all = v } }
      [ObservableSender, LoopSender, DirectSender].each do |klass|
        sender = klass.new(observers)
        senders[klass.name.split("::").last.delete_suffix("Sender").downcase.to_sym] = ->(v) { sender.send_event(v) }
      end
      one = observers.first
      payload = [true]
      senders[:method_call] = ->(_) { k.times { one.options_changed_show_render_all(payload) } }
      # Rounds in turn, so that a slow moment of the machine hits every sender.
      rounds = Array.new(3) do
        senders.transform_values { |send| ns_per_call(100_000_000) { |i| send.(i.even?) } / k }
      end
      senders.keys.to_h { |name| [name, rounds.map { |r| r[name] }.min] }
    end
  end
end

if $PROGRAM_NAME == __FILE__
  key, figure, argument = ARGV
  puts JSON.generate(Bench::Probe.public_send(figure, key, argument))
  # The toolkits' teardown is not measured and only slows the run down.
  exit!(0)
end
