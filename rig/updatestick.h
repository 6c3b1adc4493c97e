#pragma once

#include "common/update/trust_folder.h"
#include "tests/support/test_folder.h"
#include "tools/package_build.h"

#include <QMap>

/// A removable medium with update packages, an instrument's folders, and a `sudo` that records, first on PATH; all in a
/// folder of its own. What it changes of the environment is as it was when it goes.
class UpdateStick : public TestFolder {
public:
    UpdateStick();
    ~UpdateStick();

    /// Where the package of that name lies: a folder with the manifest and the package.
    QString package(const QString& name) const { return at("media/tester/" + name); }

    /// Each component as "type|name|action|destination"; %D in it stands for the folder. manifestName: what decides the
    /// kind; empty takes the usual one.
    void addSoftware(const QString& name, const QString& version, const QStringList& components,
                     const QString& manifestName = QString());
    void addFpga(const QString& name, const QString& version, const QByteArray& image);
    void addModule(const QString& name, const QString& version, const QByteArray& bytes);

    /// Puts other bytes in the place of a package's file; its manifest then gives no hash of them.
    void spoil(const QString& name, const QString& file, const QByteArray& bytes) const;

    /// What the packages that are built from now on are signed with; without a seed they are not signed.
    Signing signing;

    /// Puts a key and a policy into the folder that says whom the panel trusts; an empty policy takes its file away.
    void trust(const QByteArray& publicKey, const QByteArray& policy = QByteArray()) const;

    /// The settings of a panel that takes that folder's owner for the one it trusts.
    TrustSettings trustSettings() const;

    /// What sudo was asked for, the folder written as %D.
    QStringList sudoed() const;

private:
    void set(const char* variable, const QByteArray& value);
    void build(PackageRequest request, PackageType type, const QString& name, const QString& version) const;

    QMap<QByteArray, QByteArray> m_before;
};
