// Text from scripts is taken as UTF-8 whatever its encoding tag says.
#pragma once

#include <cstddef>
#include <string>

namespace velmar {

// The bytes up to the first NUL, with every byte that is not part of a valid
// UTF-8 sequence replaced by U+FFFD, so the result is always valid UTF-8.
std::string scrub_utf8(const char *bytes, size_t length);
// The same written to `out`, which has room for it; returns its length, and
// with `out` nullptr writes nothing, to learn that length.
size_t scrub_utf8_into(const char *bytes, size_t length, char *out);

} // namespace velmar
