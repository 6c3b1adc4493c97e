#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QString>

/// Steps as a table of text that spreadsheets and scripts read and write. The first line names the columns, in any
/// order and case: "frequency,power,dwell,advance" of a list, "on,off,repetition" of a pattern; advance and repetition
/// may be missing. A value is a number with a unit of the panel ("2.4 GHz", "-10 dBm", "500 µs", "Run", "2 K") or
/// without one, in hertz, dBm and seconds. Separated by commas or by semicolons, with a decimal comma too then; quoted
/// or not, with any end of line, in UTF-8 (a byte order mark may be there) or else in Latin-1.
///
/// Steps are those of the JSON files (list_config.h): what is read here and there goes the same way into a list. Any
/// thread.
namespace StepCsv {

/// root: the key of the JSON files that says which steps these are. False, with a sentence that names line and column,
/// for what is no such table.
[[nodiscard]] bool read(const QByteArray& content, const QString& root, QJsonArray& steps, QString& error);

/// What is written reads back as the very same steps. False, with a sentence that names the step, for one that holds
/// what no table can say: a unit or a word that the panel does not know.
[[nodiscard]] bool write(const QJsonArray& steps, const QString& root, QByteArray& content, QString& error);

} // namespace StepCsv
