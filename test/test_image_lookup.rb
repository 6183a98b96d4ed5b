require_relative "test_helper"

# The toolkit looks up each control's images by name when it first draws the
# control. Those lookups must not search under every image type the host's
# image classes know (ImageMagick's some 250 types cost tens of milliseconds per
# image, and listing them loads ImageMagick's coder modules, which these tests
# look for), however the panel comes on screen and whichever tab the user opens.
class ImageLookupTest < Minitest::Test
  include PanelTest

  def loaded_coders_after(code)
    out, err, status = run_ruby(<<~RUBY)
      OptionsPanelDriver.start_application
      panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
      #{code}
      OptionsPanelDriver.process_events until OptionsPanelDriver.drawn?
      OptionsPanelDriver.choose_tab(1)
      OptionsPanelDriver.process_events
      OptionsPanelDriver.choose_tab(0)
      OptionsPanelDriver.process_events
      puts File.read("/proc/self/maps").lines.count { |l| l =~ %r{/ImageMagick[^/]*/.*/coders/} }
    RUBY
    assert status.success?, err
    out.lines.map(&:chomp)
  end

  def test_a_panel_built_by_a_setter_and_both_tabs_draw_without_the_host_image_types
    assert_equal %w[0], loaded_coders_after("panel.set_environment_clay(true)")
  end

  def test_a_panel_built_by_show_and_both_tabs_draw_without_the_host_image_types
    assert_equal %w[0], loaded_coders_after("panel.show")
  end
end
