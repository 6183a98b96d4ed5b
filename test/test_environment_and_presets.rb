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

  # Only true ticks a box; each setter reaches its own box, which OK reports.
  def test_each_option_reaches_its_own_box_and_only_true_ticks_it
    OPTIONS.each_with_index do |(option, name), index|
      [false, nil, 1, "true", :on].each do |value|
        set_option(option, true)
        assert_equal true, set_option(option, value)
        assert_equal 0, control(name)[:state], "#{option} with #{value.inspect}"
      end
      set_option(option, true)
      expected = Array.new(OPTIONS.size, 0).tap { |a| a[index] = 1 }
      assert_equal [expected, expected], [box_states, reported_boxes], option.to_s
      reset_panel
    end
  end

  def test_background_words
    { "sky" => [0, 1, 0], "default" => [1, 0, 0], "sky\0trailing" => [0, 1, 0] }.each do |word, cells|
      assert_equal true, panel.set_environment_background(word)
      assert_equal cells, cell_states(:background), word.inspect
    end
    ["Sky", "", "sky ", "DEFAULT", "sky\xFF".b, "sky2"].each do |word|
      panel.set_environment_background("sky")
      panel.set_environment_background(word)
      assert_equal [0, 0, 1], cell_states(:background), word.inspect
    end
    [nil, :default].each { |word| assert_raises(TypeError) { panel.set_environment_background(word) } }
    assert_equal "sky2", press_ok["environment_changed"][0]
  end

  # Pinned to 0..100 and truncated; a value that isn't an Integer in C's range
  # raises and keeps both sliders.
  def test_slider_values
    { 49.9 => 49, 0.99 => 0, -0.7 => 0, 100 => 100, -3 => 0, 250 => 100, 2**31 - 1 => 100,
      -2**31 => 0 }.each do |given, shown|
      assert_equal true, panel.set_environment_brightness(given)
      assert_equal true, panel.set_environment_contrast(given)
      assert_equal [shown, shown], sliders, "#{given} is pinned and truncated"
    end
    panel.set_environment_brightness(75)
    panel.set_environment_contrast(25)
    { nil => TypeError, "60" => TypeError, true => TypeError, 2**31 => RangeError, -2**31 - 1 => RangeError }
      .each do |value, error|
        assert_raises(error) { panel.set_environment_brightness(value) }
        assert_raises(error) { panel.set_environment_contrast(value) }
      end
    assert_equal [75, 25], press_ok["environment_changed"][4..5]
  end

  def test_reset_puts_only_the_sliders_back
    { brightness: 80, contrast: 20, clay: true, caching: true, background: "sky" }.each do |option, value|
      set_option(option, value)
    end
    Driver.choose_tab(1)
    Driver.click_titled(1, TEXTS["opt-tab2-reset-btn"])
    assert_equal [[50, 50], [0, 1, 0], [1, 0, 0, 0, 1, 0, 0]], [sliders, cell_states(:background), box_states]
    assert_empty LOG.names, "Reset sends nothing"
    assert_equal ["sky", 1, 0, 0, 50, 50], press_ok["environment_changed"], "Reset leaves the panel open"
  end

  def test_populate_presets_takes_only_a_string_and_splits_it_at_every_bar_without_trimming
    [nil, 3, :Final, ["Final"]].each { |value| assert_raises(TypeError) { panel.populate_presets(value) } }
    assert_equal [%w[Default Draft Final], 0, "Default"], combo, "a list that is no string changes nothing"
    { "Default|Draft|Final" => %w[Default Draft Final], "" => [""], "|a||b |" => ["", "a", "", "b ", ""],
      " Draft | Draft|Draft" => [" Draft ", " Draft", "Draft"],
      "Caf\xC3\xA9|Bad\xFF|Cut\0|Lost".b => ["Café", "Bad\u{FFFD}", "Cut"] }.each do |joined, items|
      panel.preset = "Default"
      assert_equal true, panel.populate_presets(joined)
      assert_equal [items, -1, ""], combo, "#{joined.inspect} leaves nothing selected"
    end
    events = press_ok
    assert_equal [[""], ""], [events["preset_changed"], events["output_changed"].last], "no preset selected"
  end

  def test_preset_selects_the_first_exact_match_only
    panel.populate_presets("Draft|Final|Draft| Final||Bad\u{FFFD}")
    assert_equal true, panel.public_send(:preset=, "Draft")
    assert_equal 0, combo[1], "the first of two equal names"
    panel.preset = "Final"
    ["final", "Final ", "FINAL", "Nope", "Draft|Final", nil, 3, :Final].each do |name|
      name.is_a?(String) ? panel.preset = name : assert_raises(TypeError) { panel.preset = name }
      assert_equal [1, "Final"], combo[1..2], "#{name.inspect} keeps the selection"
    end
    { " Final" => 3, "" => 4, "Bad\xFF".b => 5 }.each do |name, index|
      panel.preset = name
      assert_equal index, combo[1], name.inspect
    end
    assert_equal "Bad\u{FFFD}", press_ok["preset_changed"][0], "a UTF-8 name, bad bytes as U+FFFD"
    panel.show
    Driver.pick(:preset, 3)
    assert_equal [3, " Final"], combo[1..2], "a pick shows the item picked"
    assert_equal " Final", press_ok["output_changed"].last
  end
end
