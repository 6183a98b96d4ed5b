// The panel as the binding sees it: plain C++, no toolkit types. fetch builds
// the one controller; every other call works on it once fetched. Each runs
// inside an autorelease pool and turns a toolkit exception into a
// ToolkitFailure, so nothing but a return value crosses back into the caller's
// frames.
#pragma once

#include "panel/choices.h"
#include "panel/text_keys.h"

#include <cstdint>
#include <string>

namespace velmar {
namespace panel {

struct ToolkitFailure {
  std::string name;
  std::string reason;
};
// What a call did: succeeded, or failed with the toolkit's exception.
struct Outcome {
  bool failed = false;
  ToolkitFailure failure;
};

bool is_built();
// Builds the panel with the texts on the first call; later calls change no text.
Outcome fetch(const PanelTexts &texts);
Outcome show();
Outcome close();

// What set_output_dimensions was given. Its arguments convert one by one and
// the remembered viewport width is replaced as soon as it converts: when what
// follows fails, `complete` is false and nothing else changes.
struct OutputDimensions {
  SizeMode mode;
  int32_t width, height, viewport_width, viewport_height;
  bool complete;
};
Outcome set_output_dimensions(const OutputDimensions &size);
// A tick stays until the user clears it: without `tick` the box keeps its own.
Outcome set_output_format(ImageFormat format, bool tick_transparency);
Outcome set_output_directory(SaveLocation location, const std::string &folder);

enum class Option {
  SphericalLights,
  Caustics,
  Clay,
  Caching,
  InformationBar,
  TranslucentColor,
  AutomaticMaterials
};
Outcome set_option(Option option, bool on);
Outcome set_background(Background background);

enum class Slider { Intensity, Exposure };
Outcome set_slider(Slider slider, int32_t value);

Outcome populate_presets(const std::string &joined_names);
Outcome select_preset(const std::string &name);
// An empty preset list, nothing selected.
Outcome clear_presets();

// Closes the panel and puts every control back as it was built; for tests.
Outcome reset_to_start();

} // namespace panel
} // namespace velmar
