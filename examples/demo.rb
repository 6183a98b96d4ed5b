# Presets the options panel the way a plugin script would, shows it, and then
# either lets a person work in it (--interactive) or acts as the user itself:
# it saves a screenshot of each tab and presses OK.
#
#   ruby -I build examples/demo.rb [--interactive] [--shots DIR]
require "fileutils"
require "OptionsPanel"
require "OptionsPanelDriver"
require_relative "texts/en"

# Prints each event as it arrives.
class EventPrinter
  attr_reader :closed

  %w[preset_changed output_changed environment_changed options_changed
     options_changed_show_render_all].each do |event|
    define_method(event) { |payload| puts "#{event}: #{payload.inspect}" }
  end

  def close(payload)
    puts "close: #{payload.inspect}"
    @closed = true
  end
end

interactive = ARGV.include?("--interactive")
shots = ARGV.include?("--shots") ? ARGV[ARGV.index("--shots") + 1] : "build/demo"

panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
printer = EventPrinter.new
panel.observe(printer)

panel.populate_presets("Studio|Outdoor|Night")
panel.preset = "Outdoor"
panel.set_output_dimensions("fixed", 1920, 1080, 1280, 720)
panel.output_format = "jpg"
panel.set_output_directory("custom", "/home/artist/Renders")
panel.set_environment_background("sky")
panel.set_environment_clay(true)
panel.set_environment_brightness(70)
panel.set_environment_contrast(40)
panel.set_environment_information_bar(true)
panel.show

if interactive
  puts "The panel is yours: press OK or close it."
  until printer.closed
    OptionsPanelDriver.process_events
    sleep 0.02
  end
else
  FileUtils.mkdir_p(shots)
  OptionsPanelDriver.process_events
  %w[image environment].each_with_index do |tab, index|
    OptionsPanelDriver.choose_tab(index)
    path = File.join(shots, "#{tab}-tab.png")
    OptionsPanelDriver.screenshot(path)
    puts "screenshot: #{path}"
  end
  OptionsPanelDriver.choose_tab(0)
  OptionsPanelDriver.click(:m_pButton)
end
