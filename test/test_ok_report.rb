require_relative "test_helper"

# What OK reports when observers change the panel while it reports. What a
# user's choices report is each group's own test's.
class OkReportTest < Minitest::Test
  include PanelTest

  def setup
    reset_panel
  end

  # The preset's name is read once, before any observer can change the list;
  # the other groups are read as each event is sent.
  def test_observers_changing_the_panel_change_later_events_but_not_the_preset_name
    hook do |event, _|
      next unless event == "preset_changed"
      panel.populate_presets("Other|List")
      panel.preset = "List"
      panel.set_environment_background("sky")
      panel.set_environment_caching(true)
    end
    Driver.pick(:preset, 1)
    events = press_ok
    assert_equal [["Draft"], "Draft"], [events["preset_changed"], events["output_changed"][6]], "the preset"
    assert_equal ["sky", 1], [events["environment_changed"][0], events["options_changed"][1]],
                 "background and caching"
  end
end
