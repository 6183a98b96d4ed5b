// The keys of the text table, in the order the panel reads them when it is built.
#pragma once

#include <array>
#include <string>

namespace velmar {

enum TextKey {
  kWindowTitle,
  kPresetLabel,
  kOkButton,
  kCloseButton,
  kImageTabLabel,
  kEnvironmentTabLabel,
  kImageSizeHeading,
  kViewportRadio,
  kFixedRadio,
  kPanoramaRadio,
  kSizeLabel,
  kWidthLabel,
  kHeightLabel,
  kImageFormatHeading,
  kPngRadio,
  kJpgRadio,
  kHdrRadio,
  kTransparencyBox,
  kSaveLocationHeading,
  kModelRadio,
  kCustomRadio,
  kOptionsHeading,
  kSphericalLightsBox,
  kCausticsBox,
  kClayBox,
  kCachingBox,
  kInformationBarBox,
  kTranslucentColorBox,
  kAutomaticMaterialsBox,
  kBackgroundHeading,
  kDefaultBackgroundRadio,
  kSkyBackgroundRadio,
  kSky2BackgroundRadio,
  kBrightnessHeading,
  kIntensityLabel,
  kExposureLabel,
  kResetButton,
  kTextKeyCount
};

// One copy per file that uses it: C++14 has no inline variables.
constexpr std::array<const char *, kTextKeyCount> kTextKeys = {
    "opt-window-title",          "opt-preset-lbl",
    "opt-ok-btn-title",          "opt-close-btn-title",
    "opt-tab-bar-title1",        "opt-tab-bar-title2",
    "opt-tab1-image-size-lbl",   "opt-tab1-vport-rbtn",
    "opt-tab1-fixed-rbtn",       "opt-tab1-panaroma-rbtn",
    "opt-tab1-size-lbl",         "opt-tab1-width-lbl",
    "opt-tab1-height-lbl",       "opt-tab1-image-format-lbl",
    "opt-tab1-png-rbtn",         "opt-tab1-jpg-rbtn",
    "opt-tab1-hdr-rbtn",         "opt-tab1-trans-cbox",
    "opt-tab1-iml-lbl",          "opt-tab1-model-rbtn",
    "opt-tab1-custom-rbtn",      "opt-tab2-options-lbl",
    "opt-tab2-options-sol-lbl",  "opt-tab2-options-caus-lbl",
    "opt-tab2-options-clay-lbl", "opt-tab2-options-gc-lbl",
    "opt-tab2-options-ib-lbl",   "opt-tab2-options-tc-lbl",
    "opt-tab2-options-am-lbl",   "opt-tab2-background-lbl",
    "opt-tab2-defaul-bk-rbtn",   "opt-tab2-pps1-bk-rbtn",
    "opt-tab2-pps2-bk-rbtn",     "opt-tab2-bright-lbl",
    "opt-tab2-intensity-lbl",    "opt-tab2-exposure-lbl",
    "opt-tab2-reset-btn",
};

// A key left out of the list above leaves its last entry empty.
static_assert(kTextKeys[kTextKeyCount - 1] != nullptr, "one key for each TextKey");

// Every text of the panel, valid UTF-8, indexed by TextKey.
using PanelTexts = std::array<std::string, kTextKeyCount>;

} // namespace velmar
