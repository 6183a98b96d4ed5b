# frozen_string_literal: true

# What both peers share: GLib's main loop, and observers called the way our
# panel calls them (public methods of the event's name, in order).
module Bench
  module Dialogs
    module GLibPeer
      def observe(observer)
        observers << observer
        true
      end

      def pump = GLib::MainContext.default.iteration(true)
      def pending? = GLib::MainContext.default.pending?

      private

      def observers = (@observers ||= [])

      def emit(name, payload)
        observers.each { |o| o.public_send(name, payload) if o.respond_to?(name) }
      end
    end
  end
end
