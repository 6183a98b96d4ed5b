# Shared by every test file: one panel per process, driven through the toolkit.
require "minitest/autorun"
require "open3"
require "rbconfig"
require "OptionsPanel"
require "OptionsPanelDriver"
require_relative "../examples/texts/en"

# A run started in the background inherits SIGINT ignored, which Ruby keeps;
# the tests of Ctrl-C need Ruby's own handler, which raises Interrupt.
trap("INT", "DEFAULT")

TEXTS = OptionsPanelTexts::EN
# The script class's methods and their arities, as a script calls them: the
# class, the API reference and the signatures are each checked against it.
SCRIPT_METHODS = {
  initialize: 1, show: 0, close: 0, "text=": 1, "preset=": 1, populate_presets: 1,
  set_output_dimensions: 5, "output_format=": 1, set_environment_spherical_point_lights: 1,
  set_environment_background: 1, set_environment_information_bar: 1, set_environment_clay: 1,
  set_environment_caching: 1, set_environment_caustic: 1, set_environment_brightness: 1,
  set_environment_contrast: 1, set_environment_translucent_color: 1,
  set_environment_automatic_materials: 1, set_output_format: 3, set_output_directory: 2,
  observe: 1, output_directory: 1, "hide_render_all=": 1
}.freeze
Driver = OptionsPanelDriver
BUILD_DIR = File.expand_path(ENV.fetch("BUILD_DIR", "build"), File.join(__dir__, ".."))

EVENTS = %w[preset_changed output_changed environment_changed options_changed
            options_changed_show_render_all close].freeze

# Calls the block with each event and its payload until retired: observers
# can't be removed, so a test's own go quiet once it ends.
class Hook
  def initialize(&block)
    @block = block
    @live = true
  end

  EVENTS.each { |event| define_method(event) { |payload| @block.call(event, payload) } }

  def retire
    @live = false
  end

  def respond_to?(name, include_private = false)
    @live && super
  end
end

# Hears every event; the observer list only grows, so one recorder serves all tests.
class EventLog < Hook
  attr_reader :events

  def initialize
    @events = []
    super { |event, payload| @events << [event, payload] }
  end

  def names
    @events.map(&:first)
  end

  def clear
    @events.clear
  end
end

LOG = EventLog.new
Velmar::OptionsPanelWindow.new(TEXTS).observe(LOG)

module PanelTest
  OK_EVENTS = (EVENTS - %w[options_changed_show_render_all]).freeze

  def panel
    Velmar::OptionsPanelWindow.new(TEXTS)
  end

  # An observer of this test's own, quiet once the test ends.
  def hook(&block)
    (@hooks ||= []) << Hook.new(&block)
    @hooks.last.tap { |h| panel.observe(h) }
  end

  def after_teardown
    @hooks&.each(&:retire)
    super
  end

  def control(name)
    Driver.control(name)
  end

  def text_of(name)
    control(name)[:text]
  end

  def enabled?(name)
    control(name)[:enabled]
  end

  def cell_states(name)
    control(name)[:cells].map { |c| c[:state] }
  end

  # Handles the toolkit's events until the block gives a true value: what
  # another program, the X server or a window manager sends comes in its own
  # time. The limit is for a hung test only.
  def handle_events_until(what)
    deadline = Time.now + 60
    until yield
      flunk("waited 60 s for #{what}") if Time.now > deadline
      Driver.process_events
    end
  end

  # Presses OK and returns the payloads by event name.
  def press_ok
    LOG.clear
    Driver.click(:ok)
    assert_equal OK_EVENTS, LOG.names
    LOG.events.to_h
  end

  # A new panel on screen with three presets, heard by LOG alone.
  def reset_panel
    Driver.reset
    p = panel
    p.observe(LOG)
    p.show
    p.populate_presets("Default|Draft|Final")
    p.preset = "Default"
    LOG.clear
    p
  end

  # The start of a script for a process of its own: the panel on screen, one
  # observer that runs the code given on output_changed and prints
  # "close heard" on close, and an at_exit handler that prints "at_exit ran".
  def self.observed_panel(output_changed)
    <<~RUBY
      require "OptionsPanel"
      require "OptionsPanelDriver"
      require #{File.expand_path("../examples/texts/en", __dir__).inspect}
      panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      observer = Object.new
      def observer.output_changed(payload)
        #{output_changed}
      end

      def observer.close(payload)
        puts "close heard"
      end
      panel.observe(observer)
      at_exit { puts "at_exit ran" }
      panel.show
    RUBY
  end

  # Runs Ruby code in a fresh process with the extension on its load path, for
  # what only a panel that is not built yet can show.
  def run_ruby(code, timeout: 60)
    requires = %W[OptionsPanel OptionsPanelDriver #{File.expand_path('../examples/texts/en', __dir__)}]
    Open3.capture3("timeout", timeout.to_s, RbConfig.ruby, "-I", BUILD_DIR, *requires.map { |r| "-r#{r}" },
                   "-e", "$stdout.sync = true\n#{code}")
  end
end

# A session's plugin (test/x_session.rb) with the French texts, which widen the
# window and move its controls, but for the English texts that the session
# finds things by: the window's title and Reset's.
def in_french(plugin)
  kept = %w[opt-window-title opt-tab2-reset-btn].to_h { |key| [key, TEXTS[key]] }
  "require #{File.expand_path('../examples/texts/fr', __dir__).inspect}\n" +
    plugin.sub("OptionsPanelTexts::EN)", "OptionsPanelTexts::FR.merge(#{kept.inspect}))")
end
