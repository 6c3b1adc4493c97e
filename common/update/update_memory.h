#pragma once

#include "common/update/datafw.h"
#include "common/update/trust_folder.h"
#include "platform/veldapath.h"

#include <QJsonObject>

/// What the panel remembers of its updates, in one small file that a power cut leaves old or new. It is read at every
/// call. A file that is damaged or gone remembers nothing. Any thread, one at a time a file.
class UpdateMemory {
public:
    /// How the last update of a kind ended.
    struct Last {
        QString version;
        bool ok = false;
        QString end; ///< a few words; empty when there was none
    };

    explicit UpdateMemory(const QString& path = CVeldaPath("/kavor/upgrade/updates.json").get_path()) : m_path(path) {}

    [[nodiscard]] Last last(PackageType kind) const;

    /// Of the last update that went well; empty when none did.
    [[nodiscard]] QString installedVersion(PackageType kind) const;

    /// The release counter of the last signed package that was installed, 0 when none was.
    [[nodiscard]] int installedRelease(PackageType kind) const;

    /// How the update with a package ended. An update that went well makes its version the installed one and, if the
    /// package is signed, its release. False when the file cannot be written (logged).
    bool note(const MANIFEST_DATA& package, bool ok, const QString& end) const;

    /// The policy in force: the one that is stated; where none is, the last one that was remembered, so that who
    /// deletes the policy file has not loosened it. One that was never stated allows unsigned packages.
    [[nodiscard]] UpdatePolicy policyInForce(const Trust& trust) const;

    /// Remembers the policy that is stated, if one is. False when the file cannot be written (logged).
    bool remember(const Trust& trust) const;

    /// What the user is to read of a file that cannot be written.
    QString notWritten() const;

private:
    UpdatePolicy remembered() const;
    QJsonObject read() const;
    bool write(const QJsonObject& all) const;

    QString m_path;
};
