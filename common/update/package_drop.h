#pragma once

#include <QString>

namespace Kavor::HandheldGui {

enum class DropResult { Copied, NoFolder, NotCopied };

/// Copies a package into a folder, which is made with its parents, in place of a file that is there. The target is the
/// old file or the whole new one, at every moment, and is on the disk before this returns. Blocks for as long as the
/// medium takes: not for the GUI thread.
[[nodiscard]] DropResult dropPackage(const QString& package, const QString& folder, const QString& target);

} // namespace Kavor::HandheldGui
