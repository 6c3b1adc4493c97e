#pragma once

#include <QString>

/// Makes a path of the device's data folders absolute.
class CVeldaPath {
public:
    /// relative: a path below the data root, such as "/kavor/list/"; may be empty.
    explicit CVeldaPath(const QString& relative = {});

    /// The absolute path. A slash at the end of the relative path is kept. Nothing is created.
    QString get_path() const;

private:
    QString m_relative;
};
