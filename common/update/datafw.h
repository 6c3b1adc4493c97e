#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

/// A manifest of more bytes is not read.
inline constexpr qint64 LargestManifest = qint64{1024} * 1024;

/// One step of a software package. All texts are as the manifest has them, unchecked.
struct MANIFEST_DATA_COMPONENT {
    QString type;        ///< "file" or "dir"
    QString name;        ///< below the package's patch folder; for an "action" the command itself
    QString action;      ///< "copy", "delete" or "action"
    QString destination; ///< where a copy goes on the instrument
};

/// What the file beside a manifest, of its name and ".sig", proves of it.
enum class Seal {
    Unsigned,   ///< there is none
    NotChecked, ///< there is one, and the panel has no key
    Signed,     ///< it fits, and the manifest says all that a signed one must
    Broken
};

/// What one manifest says of its package. A manifest that cannot be read leaves every text empty.
struct MANIFEST_DATA {
    QString manifest_version;
    QString name; ///< decides the type of the package, see packageType
    QString version;
    QString description;
    QString package;      ///< file name, relative to the manifest's folder
    QString package_path; ///< absolute folder of the manifest, "/", package
    std::vector<std::unique_ptr<MANIFEST_DATA_COMPONENT>> components;

    QString package_sha256; ///< of the package's bytes, 64 hexadecimal digits
    QString model;          ///< of the instrument that the package is for, as its record has it
    int release = 0;        ///< counts the releases of a kind, from 1; 0 when the manifest holds no such number

    QString manifest_path;
    QByteArray bytes;     ///< of the manifest as they were read: what a signature is of
    QByteArray signature; ///< null when there is none
    Seal seal = Seal::Unsigned;
};

enum class PackageType { Unknown, Software, Fpga, Module };

/// Looks for "FW", "FPGA" and "NMX" in a manifest's name, in that order and case-sensitively; the first one found wins.
PackageType packageType(const QString& name);

/// The file that a manifest's signature lies in.
inline QString signaturePath(const QString& manifestPath) {
    return manifestPath + QStringLiteral(".sig");
}

/// The record of one manifest, with the texts that its JSON has. `folder` is the absolute folder of the manifest. Bytes
/// that are no JSON object give empty texts. Any thread.
std::unique_ptr<MANIFEST_DATA> manifestFromJson(const QByteArray& json, const QString& folder);

/// The packages of a medium, in the order in which their manifests were given. Owns the records: a pointer to one is
/// good until this object goes. Any thread, one at a time.
class fwData {
public:
    /// As init_cmd_config.
    explicit fwData(const QStringList& manifestPaths = {});

    /// Appends one record per path. A file that is missing, too large, no regular file or no JSON object gives
    /// a record of empty texts; the seal is not looked at here. Throws std::runtime_error, "Error reading fw file " and
    /// why, when a file that was opened cannot be read to its end; the records before it stay.
    void init_cmd_config(const QStringList& manifestPaths);

    const std::vector<std::unique_ptr<MANIFEST_DATA>>& manifests() const { return m_manifests; }

    /// Gives the first record away. There is one.
    std::unique_ptr<MANIFEST_DATA> takeFirst();

    /// The medium holds more packages than these.
    bool isCut() const { return m_isCut; }
    void setCut(bool isCut) { m_isCut = isCut; }

private:
    std::vector<std::unique_ptr<MANIFEST_DATA>> m_manifests;
    bool m_isCut = false;
};
