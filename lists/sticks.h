#pragma once

#include <QJsonArray>
#include <QString>
#include <QStringList>
#include <vector>

/// A removable medium as a place for the files of lists: those in its own folder, JSON or CSV.
struct Stick {
    QString name; ///< as the system names it
    QString path;
    quint64 device = 0; ///< of the file system: another one at the same path is another stick

    bool operator==(const Stick& other) const { return path == other.path && device == other.device; }
};

/// What is done with sticks. Each may block for as long as a medium takes: not for the GUI thread. What fails returns
/// false and gives a sentence for the user; a stick that has gone is said to have been removed. Any other thread.
namespace Sticks {

/// Those that are there, by their names.
std::vector<Stick> present();

/// The names of its files, sorted. Links and hidden files are none.
[[nodiscard]] bool enumerate(const Stick& stick, QStringList& names, QString& error);

/// root: the key of the JSON files that says which steps these are.
[[nodiscard]] bool load(const Stick& stick, const QString& name, const QString& root, QJsonArray& steps,
                        QString& error);

/// Overwrites a file of the same name; on the medium when it returns. Steps are written as the name's ending says. A
/// name that is a path, or of a hidden file, is refused.
[[nodiscard]] bool save(const Stick& stick, const QString& name, const QString& root, const QJsonArray& steps,
                        QString& error);

} // namespace Sticks
