require_relative "test_helper"
require "stringio"
require_relative "../examples/render_settings_plugin"

# The example plugin: its settings fill every group of the panel, OK writes the
# user's choices back into them, and the next showing starts from there.
class RenderSettingsPluginTest < Minitest::Test
  include PanelTest

  def setup
    @plugin = RenderSettingsPlugin::SettingsDialog.new(reset_panel, RenderSettingsPlugin::Settings.stored,
                                                       out: StringIO.new)
  end

  # The panel as the user sees it, group by group.
  def shown
    { preset: control(:preset)[:text], size: cell_states(:size_mode), fields: [text_of(:width), text_of(:height)],
      format: cell_states(:format), transparent: control(:transparent_background)[:state],
      save: cell_states(:save_location), folder: text_of(:folder), background: cell_states(:background),
      sliders: [control(:intensity)[:value], control(:exposure)[:value]],
      boxes: RenderSettingsPlugin::OPTIONS.map { |box| control(box)[:state] } }
  end

  def test_showing_fills_every_group_and_ok_writes_the_choices_back_for_the_next_showing
    @plugin.show
    assert_equal({ preset: "Outdoor", size: [0, 1, 0], fields: %w[1920 1080], format: [0, 1, 0], transparent: 0,
                   save: [0, 1], folder: "/home/artist/Renders", background: [0, 1, 0], sliders: [70, 40],
                   boxes: [0, 0, 1, 0, 1, 0, 0] }, shown)
    # The user changes every group, then presses OK: Night; Panorama, where the height becomes
    # half the width; PNG with transparency, "pnga"; Model; sky2; clay off, caustics on; Reset
    # puts both sliders at 50.
    [[:pick, :preset, 2], [:click_cell, :size_mode, 2], [:click_cell, :format, 0], [:click, :transparent_background],
     [:click_cell, :save_location, 0], [:choose_tab, 1], [:click_cell, :background, 2], [:click, :clay],
     [:click, :caustics], [:click_titled, 1, "Reset"], [:click, :ok]].each { |step| Driver.public_send(*step) }
    refute @plugin.open?
    assert_equal "preset Night; panorama 1920 x 960; pnga to model \"/home/artist/Renders\"; " \
                 "sky2 background, brightness 50, contrast 50; on: caustics, information_bar",
                 @plugin.settings.summary

    # Whatever else set the panel meanwhile, the next showing is the plugin's.
    reset_panel
    @plugin.show
    assert_equal({ preset: "Night", size: [0, 0, 1], fields: %w[1920 960], format: [1, 0, 0], transparent: 1,
                   save: [1, 0], folder: "/home/artist/Renders", background: [0, 0, 1], sliders: [50, 50],
                   boxes: [0, 1, 0, 0, 1, 0, 0] }, shown)
  end

  def test_close_leaves_the_settings_and_ok_keeps_their_size_for_a_text_that_is_no_number
    @plugin.show
    Driver.click_cell(:format, 0)
    Driver.click(:close)
    assert_equal RenderSettingsPlugin::Settings.stored, @plugin.settings, "Close writes nothing back"

    @plugin.settings.width, @plugin.settings.height = 800, 600 # no size item: the fields are free
    @plugin.show
    { width: "wide", height: "450" }.each { |field, text| Driver.replace(field, text) }
    Driver.click(:ok)
    assert_equal ["fixed", 800, 450], @plugin.settings.to_h.values_at(:size_mode, :width, :height)
  end
end
