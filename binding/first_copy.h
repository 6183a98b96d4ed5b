// A host's plugins each ship their own copy of the extensions, and a process
// may load several of them. The first copy loaded serves every plugin: a later
// copy's require defines nothing, so its code is never reached.
#pragma once

#include <ruby.h>

namespace velmar {

// True when no copy has defined `owner` (the class or module an extension
// defines) yet: it is then marked as defined by the file that holds
// `own_symbol`. False when an earlier copy did, after one warning naming both
// files if their bytes differ.
bool claim_first_copy(VALUE owner, const void *own_symbol);

} // namespace velmar
