# frozen_string_literal: true

# Our panel behind the benchmark's dialog interface. The script methods are the
# setters; the test driver acts as the user (OK) and tells when the panel has
# been drawn, as the peers' own toolkits do for theirs.
require_relative "../../examples/texts/en"

module Bench
  module Dialogs
    class OptionsPanelDialog
      NAME = "OptionsPanel"

      def self.start_toolkit
        require "OptionsPanel"
        require "OptionsPanelDriver"
        OptionsPanelDriver.start_application
        true
      end

      def initialize
        @panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      end

      def build_and_show = show

      def show
        @panel.show
        OptionsPanelDriver.process_events until OptionsPanelDriver.drawn?
        true
      end

      def observe(observer) = @panel.observe(observer)
      def press_ok = OptionsPanelDriver.press(:ok)
      def pump = OptionsPanelDriver.process_events
      def pending? = false
      def close = @panel.close

      # The panel has no setter for a text field alone: the folder field's
      # setter also selects its save location and enables the field.
      def set_text(folder) = @panel.set_output_directory("custom", folder)
      def set_check(on) = @panel.set_environment_clay(on)
      def set_radio(background) = @panel.set_environment_background(background)
      def set_slider(value) = @panel.set_environment_brightness(value)
      def set_combo(name) = @panel.preset = name

      # The folder button's action as the toolkit sends it when a person's
      # click completes, until the chooser is drawn. The driver's `click`
      # (performClick:) would first hold the button lit for a tenth of a
      # second, as a key's press does.
      def time_folder_chooser
        @panel.set_output_directory("custom", "/tmp")
        OptionsPanelDriver.cancel_folder_chooser_once_shown(10)
        start = Probe.now
        OptionsPanelDriver.press(:choose_folder)
        shown = OptionsPanelDriver.folder_chooser_shown_at or raise "the folder chooser was not shown"
        shown - start
      end

      def populate_presets(names) = @panel.populate_presets(names.join("|"))
    end
  end
end
