#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

namespace Logger {

/// Fills a printf-style format from typed values; safe whatever the format says, from any thread.
///
/// Known conversions: d i u x X o c s f F e E g G p and %%. Flags, width and precision are honoured (clamped to 200 and
/// 60), length modifiers are skipped: the value knows its own type. A value that is not of the conversion's kind is
/// written as the text it is. A conversion without a value gives "(missing)", values left over follow in "(surplus:
/// ...)", anything else after a per cent sign, %n included, is copied as it stands.
QString fillFormat(const char* format, const QVector<QVariant>& values);

} // namespace Logger
