require_relative "test_helper"

# What OK reports after a user has worked in the panel.
class OkReportTest < Minitest::Test
  include PanelTest

  def setup
    reset_panel
  end

  def test_ok_reports_what_the_user_chose
    Driver.pick(:preset, 2)
    Driver.click_cell(:size_mode, 1)
    Driver.type(:width, "1280")
    Driver.type(:height, "720")
    Driver.click_cell(:format, 1)
    Driver.click_cell(:save_location, 1)
    Driver.type(:folder, "/srv/renders ✓")
    Driver.choose_tab(1)
    %i[clay spherical_point_lights information_bar automatic_materials].each { |b| Driver.click(b) }
    Driver.click_cell(:background, 2)

    events = press_ok
    assert_equal ["Final"], events["preset_changed"]
    assert_equal ["fixed", "01280", "0720", "jpg", "custom", "/srv/renders ✓", "Final"], events["output_changed"]
    assert_equal ["sky2", 1, 0, 1, 50, 50], events["environment_changed"]
    assert_equal [1, 0, 0, 1], events["options_changed"]
    assert_equal Encoding::UTF_8, events["output_changed"][5].encoding
    refute Driver.window_state[:visible]
  end

  def test_observers_changing_the_panel_change_later_events_but_not_the_preset_name
    changer = Object.new
    changer.define_singleton_method(:preset_changed) do |_|
      next unless @armed
      @armed = false
      w = Velmar::OptionsPanelWindow.new(TEXTS)
      w.populate_presets("Other|List")
      w.preset = "List"
      w.set_environment_background("sky")
      w.set_environment_caching(true)
    end
    changer.instance_variable_set(:@armed, true)
    panel.observe(changer)
    Driver.pick(:preset, 1)
    events = press_ok
    assert_equal ["Draft"], events["preset_changed"]
    assert_equal "Draft", events["output_changed"][6]
    assert_equal "sky", events["environment_changed"][0]
    assert_equal 1, events["options_changed"][1]
  end
end
