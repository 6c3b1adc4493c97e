#pragma once

#include <QString>

namespace Kavor::HandheldGui {

/// A text with places where a label may break a word that is longer than that: a path behind a slash, a name anywhere
/// after so many characters.
QString breakable(const QString& text, int longestWord);

} // namespace Kavor::HandheldGui
