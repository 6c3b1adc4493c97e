#pragma once

#include <QString>

/// A file that is there from the first change of an installation to its end: one that is there otherwise tells of an
/// installation that was cut off. A power cut leaves it there or not, never half. Any thread.
class InstallationMarker {
public:
    explicit InstallationMarker(const QString& path) : m_path(path) {}

    /// On the disk when this returns true.
    [[nodiscard]] bool set(const QString& what) const;

    /// Gone from the disk when this returns true, also when it was not there.
    [[nodiscard]] bool clear() const;

    /// What was being installed, on one line of at most 256 bytes; empty when nothing was.
    [[nodiscard]] QString what() const;

private:
    QString m_path;
};
