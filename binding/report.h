// An exception written to $stderr as Ruby writes one that nobody rescued; the
// extension and the reference host both report this way.
#pragma once

#include <ruby.h>

namespace velmar {

// False when writing failed (a closed $stderr, a raising #message): that
// error is dropped, so nothing is raised from here.
bool report_exception(VALUE exception);

} // namespace velmar
