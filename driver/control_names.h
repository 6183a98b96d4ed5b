// The driver's names for the panel's controls, as a plugin author reads them
// off the panel, beside the controller's own names, which the driver also
// takes. The driver, the API reference and the fuzzer all go by this table.
#pragma once

#include <cstring>

struct ControlName {
  const char *readable;
  const char *controller;
};

constexpr ControlName kControlNames[] = {
    {"ok", "m_pButton"},
    {"close", "m_cButton"},
    {"preset", "myPresetCombo"},
    {"tabs", "myTabView"},
    {"size_mode", "aImageSizeMatrix"},
    {"size", "mySizeCombo"},
    {"width", "myWidthValueText"},
    {"height", "myHeightValueText"},
    {"format", "aImageTypeLMatrix"},
    {"transparent_background", "myTransCButton"},
    {"save_location", "aISLMatrix"},
    {"folder", "mySaveLocText"},
    {"choose_folder", "myDirButton"},
    {"background", "matrix"},
    {"spherical_point_lights", "mySOLCButton"},
    {"caustics", "myCausticsCButton"},
    {"clay", "myClayCButton"},
    {"information_bar", "myIBCButton"},
    {"translucent_color", "myTCCButton"},
    {"automatic_materials", "myAMCButton"},
    {"caching", "myGCCButton"},
    {"intensity", "myIntensitySlider"},
    {"exposure", "myExposureSlider"},
};

// The title bar's close box, which the controller keeps no name for; the
// driver finds it through the window. (Reset, the other such control, is
// found by its title, which the caller gives.)
constexpr const char kCloseBoxName[] = "close_box";

// The controller's name for a readable one; any other name as it is.
inline const char *ControllerName(const char *name) {
  for (const ControlName &entry : kControlNames)
    if (std::strcmp(entry.readable, name) == 0)
      return entry.controller;
  return name;
}

// The readable name of a control the controller keeps under `controller`, or nullptr.
inline const char *ReadableName(const char *controller) {
  for (const ControlName &entry : kControlNames)
    if (std::strcmp(entry.controller, controller) == 0)
      return entry.readable;
  return nullptr;
}
