# Saves the pictures of the panel that the docs show: both tabs as a new model
# shows them, and both tabs with every group changed, in one language.
# Runs in the reference host (`make screenshots` runs it for every language):
#
#   build/velmar-host scripts/screenshots.rb -- LANG FOLDER
#
# Writes FOLDER/LANG-image-start.png, LANG-environment-start.png,
# LANG-image-changed.png and LANG-environment-changed.png.
require "fileutils"
require "OptionsPanelDriver"
require_relative "../examples/render_settings_plugin"

language, folder = ARGV
unless RenderSettingsPlugin::LANGUAGES.include?(language) && folder
  abort "usage: velmar-host #{$PROGRAM_NAME} -- #{RenderSettingsPlugin::LANGUAGES.join('|')} FOLDER"
end
FileUtils.mkdir_p(folder)

panel = Velmar::OptionsPanelWindow.new(RenderSettingsPlugin.texts(language))
quiet = File.open(File::NULL, "w")
states = { "start" => RenderSettingsPlugin::Settings.defaults,
           "changed" => RenderSettingsPlugin::Settings.stored }

states.each do |state, settings|
  RenderSettingsPlugin::SettingsDialog.new(panel, settings, out: quiet).show
  OptionsPanelDriver.process_events
  %w[image environment].each_with_index do |tab, index|
    OptionsPanelDriver.choose_tab(index)
    path = File.join(folder, "#{language}-#{tab}-#{state}.png")
    OptionsPanelDriver.screenshot_window(path) or abort "could not write #{path}"
    puts path
  end
  OptionsPanelDriver.choose_tab(0)
end
panel.close
