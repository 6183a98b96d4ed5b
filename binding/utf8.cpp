#include "binding/utf8.h"

#include <cstring>

namespace velmar {

static const char kReplacement[] = "\xEF\xBF\xBD";

// Length of the valid sequence that starts at bytes[0], or 0 when that byte
// starts none (overlong forms, surrogates and code points past U+10FFFF included).
static size_t valid_sequence_length(const unsigned char *bytes, size_t available) {
  unsigned char lead = bytes[0];
  if (lead < 0x80)
    return 1;
  size_t length;
  unsigned char low = 0x80, high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0)
      low = 0xA0;
    if (lead == 0xED)
      high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0)
      low = 0x90;
    if (lead == 0xF4)
      high = 0x8F;
  } else {
    return 0;
  }
  if (available < length || bytes[1] < low || bytes[1] > high)
    return 0;
  for (size_t i = 2; i < length; ++i)
    if (bytes[i] < 0x80 || bytes[i] > 0xBF)
      return 0;
  return length;
}

size_t scrub_utf8_into(const char *bytes, size_t length, char *out) {
  const void *nul = std::memchr(bytes, '\0', length);
  if (nul)
    length = static_cast<size_t>(static_cast<const char *>(nul) - bytes);
  const auto *data = reinterpret_cast<const unsigned char *>(bytes);
  size_t written = 0;
  for (size_t i = 0; i < length;) {
    size_t sequence = valid_sequence_length(data + i, length - i);
    const char *piece = sequence == 0 ? kReplacement : bytes + i;
    size_t piece_length = sequence == 0 ? sizeof kReplacement - 1 : sequence;
    if (out)
      std::memcpy(out + written, piece, piece_length);
    written += piece_length;
    i += sequence == 0 ? 1 : sequence;
  }
  return written;
}

std::string scrub_utf8(const char *bytes, size_t length) {
  std::string text(scrub_utf8_into(bytes, length, nullptr), '\0');
  scrub_utf8_into(bytes, length, &text[0]);
  return text;
}

} // namespace velmar
