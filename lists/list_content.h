#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QString>

/// What stands in the file of a list: JSON as the device keeps it, or a CSV table (step_csv.h), told by the ending of
/// the name. What fails returns false and gives a sentence for the user. Any thread; the files block for as long as the
/// medium takes.
namespace ListContent {

/// What a file may hold to be read, so that showing it does not stop the screen (under 100 ms on a workstation). A step
/// takes about 300 bytes.
constexpr int MostSteps = 10000;
constexpr qint64 MostBytes = 4000000;

bool isCsv(const QString& name);

/// root: the key that holds the steps.
[[nodiscard]] bool parse(const QByteArray& content, const QString& name, const QString& root, QJsonArray& steps,
                         QString& error);
[[nodiscard]] bool compose(const QJsonArray& steps, const QString& name, const QString& root, QByteArray& content,
                           QString& error);

[[nodiscard]] bool readFile(const QString& path, const QString& root, QJsonArray& steps, QString& error);

/// In place of a file that is there; on the disk when it returns.
[[nodiscard]] bool writeFile(const QString& path, const QJsonArray& steps, const QString& root, QString& error);

/// Says that a file is too large; false.
[[nodiscard]] bool refuseSize(QString& error);

} // namespace ListContent
