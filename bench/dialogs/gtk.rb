# frozen_string_literal: true

# The Render Options dialog rebuilt in Ruby with GTK 3, as the benchmark's peer
# of our panel: the same controls and English texts in a window of about the
# same size, the same rules between the controls, and the same events on OK.
require_relative "../../examples/texts/en"
require_relative "glib_peer"

module Bench
  module Dialogs
    class Gtk3Dialog
      include GLibPeer

      NAME = "GTK 3"
      TEXTS = OptionsPanelTexts::EN
      SIZES = ["Custom", "230 x 150", "640 x 480", "1024 x 768", "2048 x 1536", "3076 x 2034",
               "4076 x 3304", "852 x 480", "1600 x 900", "1920 x 1080"].freeze
      # Radio groups: the word OK reports for each button, and the key of its text.
      SIZE_MODES = { "viewport" => "opt-tab1-vport-rbtn", "fixed" => "opt-tab1-fixed-rbtn",
                     "panorama" => "opt-tab1-panaroma-rbtn" }.freeze
      FORMATS = { "png" => "opt-tab1-png-rbtn", "jpg" => "opt-tab1-jpg-rbtn",
                  "hdr" => "opt-tab1-hdr-rbtn" }.freeze
      LOCATIONS = { "model" => "opt-tab1-model-rbtn", "custom" => "opt-tab1-custom-rbtn" }.freeze
      BACKGROUNDS = { "default" => "opt-tab2-defaul-bk-rbtn", "sky" => "opt-tab2-pps1-bk-rbtn",
                      "sky2" => "opt-tab2-pps2-bk-rbtn" }.freeze

      def self.start_toolkit
        # A bare X server has no accessibility bus; GTK may warn when it looks for one.
        ENV["NO_AT_BRIDGE"] ||= "1"
        require "gtk3"
        # ruby-gtk3 removes Gtk.init once it has run, so this is safe to repeat.
        Gtk.init if Gtk.respond_to?(:init)
        true
      end

      def build_and_show
        build unless @window
        show
      end

      def show
        # A window already on screen gets no new first draw to wait for.
        @window.visible? ? @window.present : until_drawn { @window.present }
        true
      end

      def press_ok = @ok_button.clicked

      def close
        return true unless @window&.visible?

        @window.hide
        emit(:close, [1.0])
        true
      end

      # The setters: one GTK call each, like the corresponding calls of our panel.
      def set_text(folder) = @folder_entry.text = folder
      def set_check(on) = @clay_check.active = on
      def set_radio(background) = @background_radios[background].active = true
      def set_slider(value) = @intensity_scale.value = value
      def set_combo(name) = @preset_combo.active_id = name

      # The user's click on the folder button, until the chooser has drawn
      # itself and the X server has done the drawing; then it is cancelled.
      def time_folder_chooser
        @location_radios["custom"].active = true
        shown = nil
        @on_chooser_drawn = lambda do |dialog|
          next if shown

          @display.sync
          shown = Probe.now
          GLib::Idle.add { dialog.response(Gtk::ResponseType::CANCEL); false }
        end
        start = Probe.now
        @folder_button.clicked
        @on_chooser_drawn = nil
        shown - start
      end

      def populate_presets(names)
        @preset_combo.remove_all
        names.each { |name| @preset_combo.append(name, name) }
      end

      private

      # Runs the block, then the main loop until the window has drawn itself
      # once, then waits for the X server to have done the drawing.
      def until_drawn
        @drawn = false
        yield
        pump until @drawn
        @display.sync
        true
      end

      # Each event reads the controls just before it is sent, as our panel does.
      def on_ok
        preset = @preset_combo.active_id || ""
        emit(:preset_changed, [preset])
        emit(:output_changed, [chosen(@size_radios), @width_entry.text, @height_entry.text, image_format,
                               chosen(@location_radios), @folder_entry.text, preset])
        emit(:environment_changed, [chosen(@background_radios), bit(@clay_check), bit(@caustics_check),
                                    bit(@lights_check), @intensity_scale.value.round,
                                    @exposure_scale.value.round])
        emit(:options_changed, [bit(@info_check), bit(@caching_check), bit(@translucent_check),
                                bit(@materials_check)])
        close
      end

      def chosen(radios) = radios.find { |_, button| button.active? }.first
      def bit(check) = check.active? ? 1 : 0

      def image_format
        word = chosen(@format_radios)
        word == "png" && @trans_check.active? ? "pnga" : word
      end

      # The rules between the controls, run only by the user's clicks.
      def on_size_mode
        mode = chosen(@size_radios)
        @size_combo.sensitive = mode == "fixed"
        @width_entry.sensitive = @height_entry.sensitive = mode != "viewport"
        @size_combo.active = 0 if mode == "panorama"
      end

      def on_size_item
        index = @size_combo.active
        return unless index >= 0 && @size_radios["fixed"].active?

        @width_entry.text, @height_entry.text = index.zero? ? %w[0 0] : SIZES[index].split(" x ")
        @width_entry.sensitive = @height_entry.sensitive = index.zero?
      end

      def on_location
        @folder_entry.sensitive = @folder_button.sensitive = @location_radios["custom"].active?
      end

      def choose_folder
        dialog = Gtk::FileChooserDialog.new(parent: @window, action: :select_folder,
                                            buttons: [["_Cancel", :cancel], ["_Open", :accept]])
        dialog.signal_connect_after("draw") { @on_chooser_drawn&.call(dialog); false }
        @folder_entry.text = dialog.filename if dialog.run == Gtk::ResponseType::ACCEPT
        dialog.destroy
      end

      def build
        @window = Gtk::Window.new(:toplevel)
        @window.title = TEXTS["opt-window-title"]
        @window.set_default_size(420, 315)
        @window.resizable = false
        @window.signal_connect("delete-event") { close; true }
        @window.signal_connect_after("draw") { @drawn = true; false }
        # Held here: a display wrapper fetched anew at each show was seen to be
        # collected from under ruby-gnome after some thousand cycles (a crash).
        @display = @window.display
        @preset_combo = Gtk::ComboBoxText.new
        @preset_combo.hexpand = true
        @ok_button = button("opt-ok-btn-title") { on_ok }
        buttons = box(:horizontal, @ok_button, button("opt-close-btn-title") { close })
        buttons.halign = :end
        notebook = Gtk::Notebook.new
        notebook.append_page(image_tab, Gtk::Label.new(TEXTS["opt-tab-bar-title1"]))
        notebook.append_page(environment_tab, Gtk::Label.new(TEXTS["opt-tab-bar-title2"]))
        root = box(:vertical, box(:horizontal, heading("opt-preset-lbl"), @preset_combo), notebook, buttons)
        root.border_width = 8
        @window.add(root)
        root.show_all
        on_size_mode
        on_location
      end

      def image_tab
        @size_radios = radios(SIZE_MODES) { on_size_mode }
        @size_combo = Gtk::ComboBoxText.new
        SIZES.each { |item| @size_combo.append_text(item) }
        @size_combo.active = 0
        @size_combo.signal_connect("changed") { on_size_item }
        @width_entry, @height_entry = Array.new(2) { entry(6, 0.5) }
        @trans_check = check("opt-tab1-trans-cbox")
        @format_radios = radios(FORMATS) { @trans_check.sensitive = @format_radios["png"].active? }
        @location_radios = radios(LOCATIONS) { on_location }
        @folder_entry = entry(14, 0)
        @folder_button = Gtk::Button.new(label: "...")
        @folder_button.signal_connect("clicked") { choose_folder }
        columns(
          [heading("opt-tab1-image-size-lbl"), box(:vertical, *@size_radios.values),
           form("opt-tab1-size-lbl" => @size_combo, "opt-tab1-width-lbl" => @width_entry,
                "opt-tab1-height-lbl" => @height_entry)],
          [heading("opt-tab1-image-format-lbl"), box(:horizontal, *@format_radios.values), @trans_check,
           heading("opt-tab1-iml-lbl"), box(:horizontal, *@location_radios.values),
           box(:horizontal, @folder_entry, @folder_button)]
        )
      end

      def environment_tab
        @lights_check, @caustics_check, @clay_check, @caching_check, @info_check, @translucent_check,
          @materials_check = %w[sol caus clay gc ib tc am].map { |key| check("opt-tab2-options-#{key}-lbl") }
        @background_radios = radios(BACKGROUNDS)
        @intensity_scale, @exposure_scale = Array.new(2) { scale }
        reset = button("opt-tab2-reset-btn") { @intensity_scale.value = @exposure_scale.value = 50 }
        reset.halign = :end
        columns(
          [heading("opt-tab2-background-lbl"), box(:vertical, *@background_radios.values),
           heading("opt-tab2-bright-lbl"),
           form("opt-tab2-intensity-lbl" => @intensity_scale, "opt-tab2-exposure-lbl" => @exposure_scale),
           reset],
          # The caching box is built but never placed, as on our panel.
          [heading("opt-tab2-options-lbl"), @lights_check, @caustics_check, @clay_check, @info_check,
           @translucent_check, @materials_check]
        )
      end

      # Widget helpers.
      def heading(key)
        bold = Pango::AttrList.new.tap { |list| list.insert(Pango::AttrWeight.new(:bold)) }
        Gtk::Label.new(TEXTS[key]).tap { |label| label.attributes = bold; label.xalign = 0 }
      end

      def button(key, &action)
        Gtk::Button.new(label: TEXTS[key]).tap { |button| button.signal_connect("clicked", &action) }
      end

      def check(key) = Gtk::CheckButton.new(TEXTS[key])

      def radios(texts)
        group = nil
        texts.to_h do |word, key|
          radio = Gtk::RadioButton.new(label: TEXTS[key], member: group)
          group ||= radio
          radio.signal_connect("toggled") { yield if radio.active? } if block_given?
          [word, radio]
        end
      end

      def entry(chars, xalign) = Gtk::Entry.new.tap { |e| e.width_chars = chars; e.xalign = xalign }

      def scale
        scale = Gtk::Scale.new(:horizontal, 0, 100, 1)
        scale.draw_value = false
        scale.hexpand = true
        scale.width_request = 100
        scale.value = 50
        scale
      end

      def box(orientation, *children)
        box = Gtk::Box.new(orientation, 4)
        children.each { |child| box.pack_start(child, expand: child.hexpand?, fill: true) }
        box
      end

      # Labels in the first column, their controls in the second.
      def form(rows)
        grid = Gtk::Grid.new
        grid.row_spacing = grid.column_spacing = 4
        rows.each_with_index do |(key, control), row|
          label = Gtk::Label.new(TEXTS[key])
          label.xalign = 0
          grid.attach(label, 0, row, 1, 1)
          grid.attach(control, 1, row, 1, 1)
        end
        grid
      end

      # A tab's page: two columns of stacked controls with a line between them.
      def columns(left, right)
        left, right = [left, right].map { |controls| box(:vertical, *controls) }
        left.hexpand = right.hexpand = true
        page = box(:horizontal, left, Gtk::Separator.new(:vertical), right)
        page.spacing = 10
        page.border_width = 8
        page
      end
    end
  end
end
