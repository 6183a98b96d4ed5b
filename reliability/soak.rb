# Soak test: runs the whole life of a panel session over and over (presets,
# every setter, show, typing, OK, close) and reports how far the resident set
# grew, whether any run-loop mode holds more timers than after the first
# cycle, and every line the toolkit printed (such as the warnings GNUstep gives
# when it leaks objects for want of an autorelease pool, or when timers pile
# up in a mode). It runs in the reference host, whose application has
# launched, so that the panel becomes the key window and typing runs the field
# editor's cursor timers as it does for a person:
#
#   build/velmar-host reliability/soak.rb -- --cycles N [--warmup M]
require "optparse"
require_relative "toolkit_lines"

module Soak
  GROWTH_LIMIT_KIB = 4096
  FORMATS = %w[png pnga jpg hdr].freeze
  BACKGROUNDS = %w[default sky sky2].freeze
  # The environment tab's setters that are not check boxes.
  NOT_BOXES = %i[set_environment_background set_environment_brightness set_environment_contrast].freeze

  # Every check box's setter, as the extension defines them.
  def self.box_setters
    Velmar::OptionsPanelWindow.public_instance_methods(false).grep(/\Aset_environment_/) - NOT_BOXES
  end

  def self.options(argv)
    options = { warmup: 200 }
    OptionParser.new do |o|
      o.banner = "usage: ruby -I build #{$PROGRAM_NAME} --cycles N [--warmup M]"
      o.on("--cycles N", Integer, "measured cycles") { |n| options[:cycles] = n }
      o.on("--warmup M", Integer, "cycles before the first measurement (200)") do |m|
        options[:warmup] = m
      end
    end.parse!(argv)
    abort "soak: --cycles N (N > 0) is required" unless options[:cycles]&.positive?
    abort "soak: --warmup M must not be negative" if options[:warmup].negative?
    options
  end

  def self.resident_kib
    GC.start
    trim_heap
    File.read("/proc/self/status")[/^VmRSS:\s+(\d+)\s+kB/, 1].to_i
  end

  # Memory that the collector or the toolkit freed stays resident in malloc's
  # free lists and would hide the first megabytes of a leak; glibc gives it back.
  def self.trim_heap
    @malloc_trim ||= begin
      require "fiddle"
      symbol = Fiddle.dlopen(nil)["malloc_trim"]
      Fiddle::Function.new(symbol, [Fiddle::TYPE_SIZE_T], Fiddle::TYPE_INT)
    rescue LoadError, StandardError # no glibc: measured without
      ->(_) {}
    end
    @malloc_trim.call(0)
  end
end

# Counts what OK reports, so a run in which the events stopped arriving can't pass.
class SoakObserver
  attr_reader :oks, :closes

  def initialize
    @oks = 0
    @closes = 0
  end

  def preset_changed(_) = nil
  def output_changed(_) = nil
  def environment_changed(_) = nil
  def options_changed(_) = @oks += 1
  def options_changed_show_render_all(_) = nil
  def close(_) = @closes += 1
end

class SoakSession
  def initialize(panel, driver)
    @panel = panel
    @driver = driver
    @box_setters = Soak.box_setters
  end

  # One session as a host script and its user go through it; the numbers vary
  # with the cycle so that every text the panel holds is new each time.
  def cycle(i)
    preset(i)
    every_setter(i)
    @panel.show
    type_width(i)
    @driver.click(:ok)
    @panel.show
    @panel.close
    # The host's event loop gets its turn, as it would between two sessions.
    @driver.process_events
  end

  private

  def preset(i)
    @panel.populate_presets("Default|Draft|Final|Night #{i % 97}")
    @panel.preset = "Night #{i % 97}"
  end

  def every_setter(i)
    @panel.text = "Render Options #{i}"
    @panel.set_output_dimensions("fixed", 640 + i % 500, 480, 1024, 768)
    @panel.output_format = Soak::FORMATS[i % 4]
    @panel.set_output_directory(i.even? ? "custom" : "model", "/renders/#{i}")
    @box_setters.each { |setter| @panel.public_send(setter, i.odd?) }
    @panel.set_environment_background(Soak::BACKGROUNDS[i % 3])
    @panel.set_environment_brightness(i % 101)
    @panel.set_environment_contrast(100 - i % 101)
    @panel.set_output_format("png", "model", "")
    @panel.hide_render_all = i.even?
    @panel.output_directory("C:\\renders\\#{i}")
  end

  def type_width(i)
    @driver.clear(:width)
    @driver.type(:width, (1000 + i % 900).to_s)
  end
end

def soak(cycles, warmup)
  captured, real_stderr = ToolkitLines.capture("soak")
  begin
    observer, grown, timers = run_cycles(cycles, warmup)
  ensure
    # Also when a cycle raises: the exception's report then reaches the real stderr.
    STDERR.reopen(real_stderr)
    warnings = ToolkitLines.count(captured)
  end
  finish(cycles, warmup, grown, timers, warnings, observer)
end

# Returns the observer and how far the resident set grew over the measured cycles.
def run_cycles(cycles, warmup)
  require "OptionsPanel"
  require "OptionsPanelDriver"
  require_relative "../examples/texts/en"

  panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
  observer = SoakObserver.new
  panel.observe(observer)
  session = SoakSession.new(panel, OptionsPanelDriver)

  session.cycle(0)
  timers = OptionsPanelDriver.run_loop_timers
  puts "soak: run-loop timers after the first cycle: #{timers}"
  (1...warmup).each { |i| session.cycle(i) }
  before = Soak.resident_kib
  puts "soak: #{warmup} warm-up cycles, resident set #{before} KiB"
  cycles.times { |i| session.cycle(warmup + i) }
  after = Soak.resident_kib
  puts "soak: #{cycles} more cycles, resident set #{after} KiB"
  [observer, after - before, piled_up_timers(timers, OptionsPanelDriver.run_loop_timers)]
end

# The modes that hold more timers than they did after the first cycle.
def piled_up_timers(first, last)
  last.select { |mode, count| count > first.fetch(mode, 0) }
end

def finish(cycles, warmup, grown, timers, warnings, observer)
  total = cycles + warmup
  # Each cycle closes twice: by OK and by the script.
  heard = observer.oks == total && observer.closes == 2 * total
  unless heard
    puts "soak: expected #{total} OK reports and #{2 * total} closes, " \
         "heard #{observer.oks} and #{observer.closes}"
  end
  puts "soak: timers piled up in #{timers}" unless timers.empty?
  puts "soak: #{cycles} cycles, grew #{grown} KiB, #{timers.size} modes with more timers, " \
       "#{warnings} toolkit warnings"
  exit 1 unless heard && grown < Soak::GROWTH_LIMIT_KIB && timers.empty? && warnings.zero?
end

if $PROGRAM_NAME == __FILE__
  $stdout.sync = true
  options = Soak.options(ARGV)
  soak(options[:cycles], options[:warmup])
end
