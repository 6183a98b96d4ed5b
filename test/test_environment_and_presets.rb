require_relative "test_helper"

# The Environment tab's setters and Reset button, and the preset list.
class TestEnvironmentAndPresets < Minitest::Test
  include PanelTest

  # Setter suffix => the box it sets, in the order OK reports the boxes.
  OPTIONS = { clay: :clay, caustic: :caustics,
              spherical_point_lights: :spherical_point_lights, information_bar: :information_bar,
              caching: :caching, translucent_color: :translucent_color,
              automatic_materials: :automatic_materials }.freeze

  def setup
    reset_panel
  end

  def set_option(option, value)
    panel.public_send("set_environment_#{option}", value)
  end

  def box_states
    OPTIONS.values.map { |name| control(name)[:state] }
  end

  def sliders
    [control(:intensity)[:value], control(:exposure)[:value]]
  end

  def combo
    control(:preset).values_at(:items, :selected, :text)
  end

  # The boxes' states as OK reports them, in the order of OPTIONS.
  def reported_boxes
    events = press_ok
    events["environment_changed"][1..3] + events["options_changed"]
  end

  def test_only_true_turns_an_option_on
    OPTIONS.each do |option, name|
      [false, nil, 1, "true", :on].each do |value|
        assert_equal true, set_option(option, true)
        assert_equal true, set_option(option, value)
        assert_equal 0, control(name)[:state], "#{option} with #{value.inspect}"
      end
    end
  end

  def test_each_option_reaches_its_own_box_and_is_reported
    refute control(:caching)[:in_window], "the caching box is never on screen"
    OPTIONS.each_with_index do |(option, _), index|
      reset_panel
      set_option(option, true)
      expected = Array.new(OPTIONS.size, 0).tap { |a| a[index] = 1 }
      assert_equal expected, box_states, option.to_s
      assert_equal expected, reported_boxes, option.to_s
    end
  end

  def test_background_words
    cells = -> { cell_states(:background) }
    assert_equal true, panel.set_environment_background("sky")
    assert_equal [0, 1, 0], cells.call
    panel.set_environment_background("default")
    assert_equal [1, 0, 0], cells.call
    panel.set_environment_background("sky\0trailing")
    assert_equal [0, 1, 0], cells.call, "NUL ends the word"
    ["Sky", "sky2", "", "sky ", "DEFAULT", "sunset", "sky\xFF".b].each do |word|
      panel.set_environment_background("sky")
      panel.set_environment_background(word)
      assert_equal [0, 0, 1], cells.call, word.inspect
    end
    assert_equal "sky2", press_ok["environment_changed"][0]

    panel.show
    panel.set_environment_background("sky")
    assert_raises(TypeError) { panel.set_environment_background(nil) }
    assert_raises(TypeError) { panel.set_environment_background(:default) }
    assert_equal [0, 1, 0], cells.call
    assert_equal "sky", press_ok["environment_changed"][0]
  end

  def test_slider_values
    assert_equal true, panel.set_environment_brightness(75)
    assert_equal true, panel.set_environment_contrast(20)
    assert_equal [75, 20], sliders
    { 49.9 => 49, 0.99 => 0, -0.7 => 0, 100 => 100, -3 => 0, 250 => 100,
      2**31 - 1 => 100, -2**31 => 0 }.each do |given, shown|
      panel.set_environment_brightness(given)
      panel.set_environment_contrast(given)
      assert_equal [shown, shown], sliders, "#{given} is pinned and truncated"
    end

    panel.set_environment_brightness(30)
    panel.set_environment_contrast(70)
    [[nil, TypeError], ["60", TypeError], [true, TypeError],
     [2**31, RangeError], [-2**31 - 1, RangeError], [2**40, RangeError]].each do |value, error|
      assert_raises(error) { panel.set_environment_brightness(value) }
      assert_raises(error) { panel.set_environment_contrast(value) }
      assert_equal [30, 70], sliders, "#{value.inspect} keeps both sliders"
    end

    panel.set_environment_brightness(-3)
    panel.set_environment_contrast(250)
    assert_equal [0, 100], press_ok["environment_changed"][4..5]
  end

  def test_reset_puts_only_the_sliders_back
    panel.set_environment_brightness(80)
    panel.set_environment_contrast(20)
    panel.set_environment_clay(true)
    panel.set_environment_caching(true)
    panel.set_environment_background("sky")
    Driver.choose_tab(1)
    Driver.click_titled(1, TEXTS["opt-tab2-reset-btn"])
    assert_equal [50, 50], sliders
    assert_equal [0, 1, 0], cell_states(:background)
    assert_equal [1, 0, 0, 0, 1, 0, 0], box_states
    assert_empty LOG.names, "Reset sends nothing"
    assert Driver.window_state[:visible], "Reset leaves the panel open"
    assert_equal ["sky", 1, 0, 0, 50, 50], press_ok["environment_changed"]
  end

  def test_populate_presets_splits_at_every_bar_without_trimming
    { "Default|Draft|Final" => %w[Default Draft Final],
      "" => [""],
      "Only" => ["Only"],
      "|a||b |" => ["", "a", "", "b ", ""],
      " Draft | Draft|Draft" => [" Draft ", " Draft", "Draft"] }.each do |joined, items|
      panel.preset = "Default"
      assert_equal true, panel.populate_presets(joined)
      assert_equal [items, -1, ""], combo, "#{joined.inspect} leaves nothing selected"
    end
    panel.populate_presets("Night|Day")
    assert_equal [%w[Night Day], -1, ""], combo, "a second list replaces the first"
  end

  def test_preset_selects_the_first_exact_match_only
    panel.populate_presets("Draft|Final|Draft| Final|")
    assert_equal true, panel.public_send(:preset=, "Draft")
    assert_equal 0, combo[1], "the first of two equal names"
    panel.preset = "Final"
    assert_equal [1, "Final"], combo[1..2]
    ["final", "Final ", "FINAL", "Nope", "Draft|Final"].each do |name|
      panel.preset = name
      assert_equal [1, "Final"], combo[1..2], "#{name.inspect} keeps the selection"
    end
    panel.preset = " Final"
    assert_equal 3, combo[1]
    panel.preset = ""
    assert_equal 4, combo[1], "the empty name is an item like any other"
    events = press_ok
    assert_equal [""], events["preset_changed"]

    panel.show
    Driver.pick(:preset, 3)
    assert_equal " Final", press_ok["output_changed"].last
  end

  def test_ok_without_a_selected_preset
    panel.populate_presets("A|B")
    events = press_ok
    assert_equal [""], events["preset_changed"]
    assert_equal "", events["output_changed"].last
    refute Driver.window_state[:visible]
  end

  def test_invalid_bytes_and_nul_in_preset_names
    panel.populate_presets("Caf\xC3\xA9|Bad\xFF|Cut\0|Lost".b)
    assert_equal [["Café", "Bad\u{FFFD}", "Cut"], -1, ""], combo
    panel.preset = "Bad\xFF".b
    assert_equal 1, combo[1]
    name = press_ok["preset_changed"][0]
    assert_equal "Bad\u{FFFD}", name
    assert_predicate name, :valid_encoding?
  end

  def test_non_strings_leave_the_list_and_selection_alone
    panel.preset = "Draft"
    before = combo
    [nil, 3, :Final, ["Final"]].each do |value|
      error = assert_raises(TypeError) { panel.populate_presets(value) }
      assert_match(/no implicit conversion/, error.message)
      assert_raises(TypeError) { panel.preset = value }
    end
    assert_equal before, combo
  end
end
