# An example render plugin to copy: it keeps the renderer's settings in a Ruby
# object, presets the options panel from them, shows it, and writes back what
# the user chose when OK is pressed, so the next showing starts from there.
#
# Run it in the reference host, which handles the panel's events:
#
#   build/velmar-host examples/render_settings_plugin.rb -- [--lang en|de|ja|fr|...]
#                     [--interactive] [--shots DIR]
#
# --interactive leaves the panel to you. Without it the plugin acts as the user
# through the test driver (OptionsPanelDriver, built next to the extension):
# it saves a screenshot of each tab into DIR (a temporary folder unless given)
# and presses OK.
require "optparse"
require "tmpdir"
require "OptionsPanel"

module RenderSettingsPlugin
  # One text table each in examples/texts/: English, German, Japanese, French,
  # Spanish, Italian, Brazilian Portuguese, Russian, Polish, Korean and
  # Simplified Chinese.
  LANGUAGES = %w[en de ja fr es it pt_br ru pl ko zh_cn].freeze

  # The text table of the panel in one of LANGUAGES.
  def self.texts(language)
    require_relative "texts/#{language}"
    OptionsPanelTexts.const_get(language.upcase)
  end

  # What the renderer reads. The panel names everything by the same words as
  # its setters and events ("fixed", "jpg", "custom", "sky", ...).
  Settings = Struct.new(
    :presets, :preset,
    :size_mode, :width, :height, :viewport_width, :viewport_height,
    :format, :save_mode, :folder,
    :background, :brightness, :contrast,
    :spherical_point_lights, :caustics, :clay, :caching,
    :information_bar, :translucent_color, :automatic_materials,
    keyword_init: true
  ) do
    # What a new model starts with: the choices of a freshly built panel.
    def self.defaults
      new(presets: %w[Default Draft Final], preset: "Default",
          size_mode: "viewport", width: 1280, height: 720, viewport_width: 1280, viewport_height: 720,
          format: "png", save_mode: "model", folder: "",
          background: "default", brightness: 50, contrast: 50,
          spherical_point_lights: false, caustics: false, clay: false, caching: false,
          information_bar: false, translucent_color: false, automatic_materials: false)
    end

    OPTIONS = %i[spherical_point_lights caustics clay caching information_bar translucent_color
                 automatic_materials].freeze

    def summary
      on = OPTIONS.select { self[_1] }
      "preset #{preset}; #{size_mode} #{width} x #{height}; #{format} to #{save_mode} #{folder.inspect}; " \
        "#{background} background, brightness #{brightness}, contrast #{contrast}; " \
        "on: #{on.empty? ? 'nothing' : on.join(', ')}"
    end

    # A model whose settings were changed before: a real plugin reads them from
    # the model it renders.
    def self.stored
      defaults.tap do |s|
        s.presets = %w[Studio Outdoor Night]
        s.preset = "Outdoor"
        s.size_mode, s.width, s.height = "fixed", 1920, 1080
        s.format, s.save_mode, s.folder = "jpg", "custom", "/home/artist/Renders"
        s.background, s.brightness, s.contrast = "sky", 70, 40
        s.clay = s.information_bar = true
      end
    end
  end

  # Fills the panel from the settings, and the settings from the panel's events.
  class SettingsDialog
    attr_reader :settings

    def initialize(panel, settings, out: $stdout)
      @panel = panel
      @settings = settings
      @out = out
      @open = false
      panel.observe(self)
    end

    def open?
      @open
    end

    # The panel keeps its controls between showings; filling it every time
    # makes it show the settings even when something else changed them.
    def show
      fill
      @panel.show
      @open = true
    end

    # ---- the panel's events: OK sends the first four, then close ----

    def preset_changed(payload)
      report(__method__, payload)
      settings.preset = payload[0]
    end

    def output_changed(payload)
      report(__method__, payload)
      mode, width, height, format, save_mode, folder, = payload
      settings.size_mode = mode
      # The fields hold whatever the user typed; keep the old size for what is no number.
      settings.width = whole_number(width) || settings.width
      settings.height = whole_number(height) || settings.height
      settings.format, settings.save_mode, settings.folder = format, save_mode, folder
    end

    def environment_changed(payload)
      report(__method__, payload)
      settings.background = payload[0]
      settings.clay, settings.caustics, settings.spherical_point_lights = payload[1, 3].map { _1 == 1 }
      settings.brightness, settings.contrast = payload[4], payload[5]
    end

    def options_changed(payload)
      report(__method__, payload)
      settings.information_bar, settings.caching, settings.translucent_color,
        settings.automatic_materials = payload.map { _1 == 1 }
    end

    # Sent only by hide_render_all=, which this plugin doesn't call.
    def options_changed_show_render_all(payload)
      report(__method__, payload)
    end

    # Every closing sends this: after OK's four events, or alone for Close.
    def close(payload)
      report(__method__, payload)
      @open = false
    end

    private

    # Every setter that changes the panel. set_output_format and text= change
    # nothing, and hide_render_all= only echoes a value to the observers.
    def fill
      s = settings
      @panel.populate_presets(s.presets.join("|"))
      @panel.preset = s.preset
      @panel.set_output_dimensions(s.size_mode, s.width, s.height, s.viewport_width, s.viewport_height)
      # "png" keeps the transparency box as the user left it; "pnga" ticks it.
      @panel.output_format = s.format
      @panel.set_output_directory(s.save_mode, s.folder)
      @panel.set_environment_background(s.background)
      @panel.set_environment_brightness(s.brightness)
      @panel.set_environment_contrast(s.contrast)
      fill_options(s)
    end

    def fill_options(s)
      @panel.set_environment_spherical_point_lights(s.spherical_point_lights)
      @panel.set_environment_caustic(s.caustics)
      @panel.set_environment_clay(s.clay)
      @panel.set_environment_caching(s.caching)
      @panel.set_environment_information_bar(s.information_bar)
      @panel.set_environment_translucent_color(s.translucent_color)
      @panel.set_environment_automatic_materials(s.automatic_materials)
    end

    def whole_number(text)
      Integer(text, 10, exception: false)&.then { _1.positive? ? _1 : nil }
    end

    def report(event, payload)
      @out.puts("#{event}: #{payload.inspect}")
    end
  end

  # Plays the user with the test driver: a screenshot of each tab, then OK.
  def self.act_as_user(shots)
    require "fileutils"
    require "OptionsPanelDriver"
    FileUtils.mkdir_p(shots)
    OptionsPanelDriver.process_events
    %w[image environment].each_with_index do |tab, index|
      OptionsPanelDriver.choose_tab(index)
      path = File.join(shots, "#{tab}-tab.png")
      OptionsPanelDriver.screenshot(path)
      puts "screenshot: #{path}"
    end
    OptionsPanelDriver.choose_tab(0)
    OptionsPanelDriver.click(:ok)
  end

  def self.parse(arguments)
    options = { lang: "en", interactive: false, shots: File.join(Dir.tmpdir, "render-settings-plugin") }
    parser = OptionParser.new do |o|
      o.banner = "usage: velmar-host #{$PROGRAM_NAME} -- [options]"
      o.on("--lang LANG", LANGUAGES, "texts: #{LANGUAGES.join(', ')}") { options[:lang] = _1 }
      o.on("--interactive", "leave the panel to a person") { options[:interactive] = true }
      o.on("--shots DIR", "where the automatic run saves its screenshots") { options[:shots] = _1 }
    end
    parser.parse!(arguments)
    options
  rescue OptionParser::ParseError => e
    abort "#{e.message}\n#{parser}"
  end

  def self.run(arguments)
    $stdout.sync = true
    options = parse(arguments)
    panel = Velmar::OptionsPanelWindow.new(texts(options[:lang]))
    dialog = SettingsDialog.new(panel, Settings.stored)
    # The host handles the panel's events once this script has returned, and
    # runs at_exit handlers once the panel has closed.
    at_exit { puts "settings now: #{dialog.settings.summary}" }
    dialog.show
    if options[:interactive]
      puts "The panel is yours: press OK or close it."
    else
      act_as_user(options[:shots])
    end
  end
end

RenderSettingsPlugin.run(ARGV) if File.expand_path($PROGRAM_NAME) == File.expand_path(__FILE__)
