// The choices that scripts make on the panel and that OK reports: the words of
// each radio group, the cell and title of each word, and the size presets.
// Plain C++: the binding parses the words with the same tables.
#pragma once

#include "panel/text_keys.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmar {

// One choice of a radio group: the word that scripts and events use, the
// index of its cell (counted in the order of the group's cells) and the key of
// its title.
struct Choice {
  const char *word;
  long cell;
  TextKey title;
};

// A radio group's choices, indexed by its enumeration. The last choice takes
// every word and cell the group does not know.
template <typename Value, size_t Count> struct RadioGroup {
  Choice choices[Count];

  const Choice &operator[](Value value) const { return choices[static_cast<size_t>(value)]; }
  // Words are compared exactly, letter case included; Text is anything that
  // compares with a C string.
  template <typename Text> Value named(const Text &word) const {
    return find([&](const Choice &choice) { return word == choice.word; });
  }
  Value at_cell(long cell) const {
    return find([=](const Choice &choice) { return cell == choice.cell; });
  }

private:
  template <typename Test> Value find(Test test) const {
    for (size_t i = 0; i + 1 < Count; ++i)
      if (test(choices[i]))
        return static_cast<Value>(i);
    return static_cast<Value>(Count - 1);
  }
};

enum class SizeMode { Viewport, Fixed, Panorama };
constexpr RadioGroup<SizeMode, 3> kSizeModes = {
    {{"viewport", 0, kViewportRadio}, {"fixed", 1, kFixedRadio}, {"panorama", 2, kPanoramaRadio}}};

enum class ImageFormat { Png, Jpg, Hdr };
constexpr RadioGroup<ImageFormat, 3> kImageFormats = {
    {{"png", 0, kPngRadio}, {"jpg", 1, kJpgRadio}, {"hdr", 2, kHdrRadio}}};
// PNG with the transparency box ticked; the box counts with no other format.
constexpr char kTransparentPngWord[] = "pnga";
constexpr bool TakesTransparency(ImageFormat format) {
  return format == ImageFormat::Png;
}

enum class SaveLocation { Model, Custom };
constexpr RadioGroup<SaveLocation, 2> kSaveLocations = {
    {{"model", 0, kModelRadio}, {"custom", 1, kCustomRadio}}};

enum class Background { Default, Sky, Sky2 };
constexpr RadioGroup<Background, 3> kBackgrounds = {{{"default", 0, kDefaultBackgroundRadio},
                                                     {"sky", 1, kSkyBackgroundRadio},
                                                     {"sky2", 2, kSky2BackgroundRadio}}};

// An item of the size list and the width and height it writes into the fields.
struct SizePreset {
  const char *item;
  int32_t width;
  int32_t height;
};
// The first item leaves the size to the user.
constexpr size_t kCustomSize = 0;
constexpr SizePreset kSizePresets[] = {{"Custom", 0, 0},
                                       {"230 x 150", 230, 150},
                                       {"640 x 480", 640, 480},
                                       {"1024 x 768", 1024, 768},
                                       {"2048 x 1536", 2048, 1536},
                                       {"3076 x 2034", 3076, 2034},
                                       {"4076 x 3304", 4076, 3304},
                                       {"852 x 480", 852, 480},
                                       {"1600 x 900", 1600, 900},
                                       {"1920 x 1080", 1920, 1080}};
constexpr size_t kSizePresetCount = sizeof(kSizePresets) / sizeof(kSizePresets[0]);

// The preset of that size, or Custom when none has it.
inline size_t SizePresetOf(int32_t width, int32_t height) {
  for (size_t i = 0; i < kSizePresetCount; ++i)
    if (kSizePresets[i].width == width && kSizePresets[i].height == height)
      return i;
  return kCustomSize;
}

} // namespace velmar
