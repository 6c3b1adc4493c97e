#pragma once

#include <QString>

namespace Kavor::HandheldGui {

/// A text that has no blanks to wrap at, with places where a label may break it: in a word of more characters than
/// longestWord, behind a slash and behind every character once so many stand in a row.
QString breakable(const QString& text, int longestWord);

} // namespace Kavor::HandheldGui
