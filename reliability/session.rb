# A scripted session for the memory checkers: builds the panel, then runs the
# script methods, the user's clicks and typing, OK, close and show in cycles,
# with the error paths (wrong argument types, raising observers) in every cycle.
#
#   ruby -I build reliability/session.rb [--cycles N]
#
# scripts/check-reliability.sh runs it under valgrind's memcheck and, built
# with the sanitizers, under ASan and UBSan. Last line: `session: <N> cycles`.
require "optparse"
require "OptionsPanel"
require "OptionsPanelDriver"
require_relative "../examples/texts/en"

cycles = 300
OptionParser.new do |o|
  o.banner = "usage: ruby -I build #{$PROGRAM_NAME} [--cycles N]"
  o.on("--cycles N", Integer, "number of cycles (300)") { |n| cycles = n }
end.parse!(ARGV)
abort "session: --cycles N needs N > 0" unless cycles.positive?

Driver = OptionsPanelDriver

# Counts the events; raises in one of them when asked to, as a broken plugin would.
class Recorder
  attr_reader :count
  attr_accessor :raise_in

  def initialize = @count = 0

  %w[preset_changed output_changed environment_changed options_changed
     options_changed_show_render_all close].each do |event|
    define_method(event) do |payload|
      @count += 1
      raise ArgumentError, "observer refuses #{event} #{payload.size}" if event == raise_in
    end
  end
end

def expect_error(kind)
  yield
  abort "session: #{kind} expected"
rescue kind
  nil
end

quiet = File.open(File::NULL, "w")
panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
recorder = Recorder.new
panel.observe(recorder)

sizes = [["viewport", 0, 0], ["fixed", 1920, 1080], ["fixed", 33, 44], ["panorama", 2000, 0],
         ["panorama", 4000, 2000]]
formats = %w[png pnga jpg hdr]
options = %i[spherical_point_lights information_bar clay caching caustic translucent_color
             automatic_materials]

cycles.times do |i|
  panel.populate_presets("Default|Draft|Final|Ünïcödé #{i}|bad \xFF bytes")
  panel.preset = %w[Default Draft Final nothing][i % 4]
  mode, width, height = sizes[i % sizes.size]
  panel.set_output_dimensions(mode, width, height, 1280 + i, 720)
  panel.output_format = formats[i % formats.size]
  panel.set_output_directory(i.even? ? "custom" : "model", "/srv/renders/#{i}\0cut")
  options.each_with_index { |o, k| panel.public_send("set_environment_#{o}", (i + k).odd?) }
  panel.set_environment_background(%w[default sky sky2][i % 3])
  panel.set_environment_brightness(i % 120 - 10)
  panel.set_environment_contrast(2**31 - 1 - i)
  panel.set_output_format(1, 2, 3)
  panel.text = "title #{i}"
  panel.output_directory("C:\\renders\\#{i}")
  panel.send(:hide_render_all=, i)

  # Arguments of the wrong kind are refused with a Ruby exception.
  expect_error(TypeError) { panel.output_format = i }
  expect_error(TypeError) { panel.set_output_dimensions("fixed", "1", 2, 3, 4) }
  expect_error(RangeError) { panel.set_environment_brightness(2**40) }
  expect_error(TypeError) { panel.set_output_directory("custom", nil) }
  expect_error(TypeError) { panel.populate_presets(:symbol) }

  # A raising observer: the script method re-raises its exception afterwards.
  recorder.raise_in = "options_changed_show_render_all"
  expect_error(ArgumentError) { panel.send(:hide_render_all=, nil) }
  recorder.raise_in = nil

  panel.show
  Driver.process_events
  # The driver refuses unknown and disabled controls with a Ruby exception too.
  expect_error(RuntimeError) { Driver.control(:no_such_control) }
  expect_error(RuntimeError) { Driver.click(:choose_folder) } if i.odd?
  Driver.choose_tab(0)
  Driver.click_cell(:size_mode, i % 3)
  Driver.pick(:size, i % 10) if Driver.control(:size)[:enabled]
  if Driver.control(:width)[:enabled]
    # Typed behind the text the script set this cycle; no selection is made, since
    # one goes to the pasteboard server, which a slow process under valgrind can lose.
    Driver.type(:width, (640 + i).to_s)
    Driver.press_return(:width)
  end
  Driver.click_cell(:format, i % 3)
  Driver.click_cell(:save_location, 1)
  Driver.type(:folder, "/out #{i} ✓")
  Driver.choose_tab(1)
  Driver.click(:clay)
  Driver.click_cell(:background, i % 3)
  Driver.click_titled(1, OptionsPanelTexts::EN["opt-tab2-reset-btn"])
  Driver.pick(:preset, i % 3)
  Driver.control(:preset)
  Driver.window_state

  # The ways of closing, in turn; OK reports first, raising in one event every third cycle.
  # A user's action has no caller to raise to: the observer's failure goes to $stderr.
  recorder.raise_in = "environment_changed" if (i % 3).zero?
  $stderr = quiet
  case i % 4
  when 0 then Driver.click(:ok)
  when 1 then Driver.click(:close)
  when 2 then Driver.close_box
  else panel.close
  end
  $stderr = STDERR
  recorder.raise_in = nil
  panel.close
  panel.show
  Driver.process_events
  panel.close
end

GC.start
puts "session: #{cycles} cycles, #{recorder.count} events"
$stdout.flush
# Ends without running the process's exit handlers: at exit the toolkit's image
# library unloads its modules and, with them, libraries whose data still points
# at the toolkit's caches, which a leak check run afterwards would count as lost.
exit!(0)
