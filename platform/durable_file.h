#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryFile>

/// Files that a power cut at any moment leaves either as they were or as they shall be. Any thread.
namespace DurableFile {

enum class Result { Ok, CannotOpen, CannotWrite };

/// Makes a folder with all its parents and sees to it that they last. True also for one that is there.
[[nodiscard]] bool makeFolder(const QString& folder);

/// Puts a folder's entries on the disk, after a file in it got its name.
[[nodiscard]] bool syncFolder(const QString& folder);

/// A file that is written beside the one at `path` and then takes its place, or is gone with the object. Where `path`
/// is a link to a file, that file is replaced.
class Replacement : private QTemporaryFile {
public:
    explicit Replacement(const QString& path);

    /// False also where something else than a file that may be written stands in the way, or the name is too long.
    [[nodiscard]] bool begin();
    /// True when all of the bytes were taken.
    [[nodiscard]] bool append(const QByteArray& bytes);
    /// True when content and folder entry are on the disk under the name.
    [[nodiscard]] bool commit();

private:
    QString m_path;
};

/// Puts a file in the place of the one at `path`, or makes it: content and folder entry are on the disk afterwards.
/// What had been there stays untouched on failure, and no other name is left behind.
[[nodiscard]] Result replace(const QString& path, const QByteArray& content);

/// Deletes what a Replacement that was killed left in a folder. Not while another one is under way there.
void sweep(const QString& folder);

} // namespace DurableFile
