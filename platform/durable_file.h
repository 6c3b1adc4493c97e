#pragma once

#include <QByteArray>
#include <QString>

/// Files that a power cut at any moment leaves either as they were or as they shall be. Any thread.
namespace DurableFile {

enum class Result { Ok, CannotOpen, CannotWrite };

/// Makes a folder with all its parents and sees to it that they last. True also for one that is there.
[[nodiscard]] bool makeFolder(const QString& folder);

/// Puts a folder's entries on the disk, after a file in it got its name.
[[nodiscard]] bool syncFolder(const QString& folder);

/// Puts a file in the place of the one at `path`, or makes it: content and folder entry are on the disk afterwards.
/// What had been there stays untouched on failure, and no other name is left behind.
[[nodiscard]] Result replace(const QString& path, const QByteArray& content);

/// Deletes what a replace() that was killed left in a folder: plain files named as one whose name ends in `suffix`,
/// then a dot and six letters or digits.
void sweep(const QString& folder, const QString& suffix);

} // namespace DurableFile
