require_relative "test_helper"

# The toolkit looks up each control's images by name when it first draws the
# control. Those lookups must not search under every image type the host's
# image classes know (ImageMagick's some 250 types cost tens of milliseconds per
# image, and listing them loads ImageMagick's coder modules, which these tests
# look for), however the panel comes on screen, whichever tab the user opens,
# and when a key presses a box or a button, which draws it lit.
class ImageLookupTest < Minitest::Test
  include PanelTest

  def test_both_tabs_and_pressed_controls_draw_without_the_host_image_types_whether_show_or_a_setter_builds_the_panel
    ["panel.show", "panel.set_environment_clay(true)"].each do |build|
      out, err, status = run_ruby(<<~RUBY)
        OptionsPanelDriver.start_application
        panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
        #{build}
        OptionsPanelDriver.process_events until OptionsPanelDriver.drawn?
        OptionsPanelDriver.choose_tab(1)
        OptionsPanelDriver.process_events
        OptionsPanelDriver.click(:clay)
        OptionsPanelDriver.choose_tab(0)
        OptionsPanelDriver.process_events
        OptionsPanelDriver.click(:ok)
        puts File.read("/proc/self/maps").lines.count { |l| l =~ %r{/ImageMagick[^/]*/.*/coders/} }
      RUBY
      assert_equal [true, "0\n"], [status.success?, out], "#{build}: status and coder modules loaded; #{err}"
    end
  end
end
