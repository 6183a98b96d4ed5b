# frozen_string_literal: true

# The Render Options dialog as an HTML page in an embedded WebKitGTK view,
# driven from Ruby the way a plugin would drive a web-based dialog.
require "json"
require_relative "glib_peer"

module Bench
  module Dialogs
    class HtmlDialog
      include GLibPeer

      NAME = "WebKitGTK HTML"
      PAGE = File.join(__dir__, "html", "dialog.html")
      HANDLER = "dialog" # window.webkit.messageHandlers.dialog on the page

      def self.start_toolkit
        return if @started

        # A bare X server: no GPU for accelerated compositing, no accessibility bus.
        ENV["WEBKIT_DISABLE_COMPOSITING_MODE"] ||= "1"
        ENV["NO_AT_BRIDGE"] ||= "1"
        # JavaScriptCore takes SIGUSR1 for its collector and logs a line when
        # it finds Ruby's handler there; it replaces that handler either way.
        trap("USR1", "SYSTEM_DEFAULT")
        require "gtk3"
        require "webkit2-gtk"
        Gtk.init
        WebKit2Gtk.const_get(:WebView) # loads the WebKit2 namespace now, not at first use
        # Messages arrive as JavaScriptCore values; their classes live in this namespace.
        unless defined?(::JavaScriptCore::Value)
          Object.const_set(:JavaScriptCore, Module.new) unless defined?(::JavaScriptCore)
          GObjectIntrospection::Loader.load("JavaScriptCore", ::JavaScriptCore)
        end
        @started = true
      end

      def build_and_show
        return show if @window

        content = WebKit2Gtk::UserContentManager.new
        content.signal_connect("script-message-received::#{HANDLER}") do |_manager, result|
          name, payload = JSON.parse(result.js_value.to_s)
          received(name, payload)
        end
        content.register_script_message_handler(HANDLER)
        @view = WebKit2Gtk::WebView.new(user_content_manager: content)
        @window = Gtk::Window.new(:toplevel)
        @window.title = "Render Options"
        @window.set_default_size(420, 315)
        @window.resizable = false
        @window.signal_connect("delete-event") { close; true } # the close box hides, like Close
        @window.add(@view)
        @drawn = false
        @view.load_html(File.read(PAGE, encoding: "UTF-8"), "about:blank")
        @window.show_all
        iterate_until { @drawn }
        true
      end

      def show
        return build_and_show unless @window

        @window.show_all
        @drawn = false
        @view.run_javascript("drawn()", nil) # page posts "drawn" after its next painted frame
        iterate_until { @drawn }
        true
      end

      def press_ok
        @view.run_javascript("document.getElementById('ok').click()", nil)
        true
      end

      def close
        return true unless @window&.visible?

        @window.hide
        emit("close", [1.0])
        true
      end

      def set_text(folder) = call("setFolder", folder.to_str)
      def set_check(on) = call("setClay", on == true)
      def set_radio(background) = call("setBackground", background.to_str)
      def set_slider(value) = call("setIntensity", Integer(value))
      def set_combo(name) = call("selectPreset", name.to_str)
      def populate_presets(names) = call("populatePresets", names.map(&:to_str))

      # The page's folder button opens nothing: a page cannot learn a folder's
      # path from the browser to put into its field.
      def time_folder_chooser = nil

      private

      def received(name, payload)
        case name
        when "drawn" then @drawn = true
        when "close" then close # the page's Close or OK; JSON would turn 1.0 into 1
        else emit(name, payload)
        end
      end

      # Runs fn(args...) on the page, arguments as JSON, and returns once it has run.
      def call(fn, *args)
        build_and_show unless @window
        done = error = nil
        @view.run_javascript("#{fn}(#{args.map(&:to_json).join(', ')})", nil) do |view, result|
          view.run_javascript_finish(result)
        rescue StandardError => e
          error = e # raised below, outside the signal callback
        ensure
          done = true
        end
        iterate_until { done }
        raise error if error

        true
      end

      def iterate_until
        context = GLib::MainContext.default
        context.iteration(true) until yield
      end
    end
  end
end
