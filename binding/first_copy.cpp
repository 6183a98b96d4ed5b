#include "binding/first_copy.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstring>

namespace velmar {

namespace {

// Not an @name, so Ruby code cannot see or change it.
const char kLoadedFrom[] = "__velmar_loaded_from__";

bool same_bytes(FILE *a, FILE *b) {
  static char block_a[65536], block_b[65536];
  for (;;) {
    size_t read_a = fread(block_a, 1, sizeof block_a, a);
    size_t read_b = fread(block_b, 1, sizeof block_b, b);
    if (read_a != read_b || std::memcmp(block_a, block_b, read_a) != 0)
      return false;
    if (read_a < sizeof block_a)
      return true;
  }
}

// Whether two files hold the same build; one that cannot be read differs.
bool same_build(const char *first, const char *second) {
  FILE *a = std::fopen(first, "rb");
  FILE *b = std::fopen(second, "rb");
  bool same = a && b && same_bytes(a, b);
  if (a)
    std::fclose(a);
  if (b)
    std::fclose(b);
  return same;
}

} // namespace

bool claim_first_copy(VALUE owner, const void *own_symbol) {
  Dl_info info;
  // Finding the symbol, dladdr always names its file.
  const char *own_path = dladdr(own_symbol, &info) ? info.dli_fname : "";
  ID key = rb_intern(kLoadedFrom);
  if (!rb_ivar_defined(owner, key)) {
    rb_ivar_set(owner, key, rb_str_new_cstr(own_path));
    return true;
  }
  VALUE first = rb_ivar_get(owner, key);
  if (!same_build(StringValueCStr(first), own_path))
    rb_warn("%s is another build than %s, which was loaded first and stays in use", own_path,
            StringValueCStr(first));
  return false;
}

} // namespace velmar
