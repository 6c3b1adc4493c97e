#pragma once

#include "common/update/update_memory.h"

namespace Kavor::HandheldGui {

// What the user reads of a package, in the list, in the question and in the history.

/// A kind of package.
QString kindName(PackageType kind);

/// What a seal is, in a word.
QString sealWord(Seal seal);

/// The version of a kind that is installed; empty when nobody knows. Where no update of the software is remembered, it
/// is this program's own.
QString installedVersion(const UpdateMemory& memory, PackageType kind);

} // namespace Kavor::HandheldGui
