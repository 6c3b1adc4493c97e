#pragma once

#include "common/update/datafw.h"
#include "platform/veldapath.h"

#include <functional>

/// A package that was copied to the instrument: manifest, signature and package, in a folder of mode 0700 that was made
/// for it alone and that goes with this object. Only the copies are checked and used, so a medium that answers
/// otherwise the next time, or is pulled, changes nothing. One object serves one package. Blocks for as long as the
/// medium takes: not for the GUI thread.
class PackageStaging {
public:
    enum class Result {
        Ok,
        NoPackage, ///< the package is no regular file that can be opened
        NoRoom,    ///< the disk would be too full
        NotCopied, ///< reading, writing or syncing failed, or a file ended before its size
        Changed,   ///< the manifest is not, byte for byte, the one that was asked about
        Damaged    ///< the package is not the one that its manifest gives the hash of
    };

    /// 0 to 100, from the thread that stages.
    using Progress = std::function<void(int percent)>;

    /// parent: where the folder is made, and that it may fill but for KeptFree bytes.
    explicit PackageStaging(const QString& parent = CVeldaPath("/kavor/upgrade").get_path());
    ~PackageStaging();
    PackageStaging(const PackageStaging&) = delete;
    PackageStaging& operator=(const PackageStaging&) = delete;

    /// Left free on the disk.
    static constexpr qint64 KeptFree = qint64{8} * 1024 * 1024;

    /// Copies and syncs, then reads the copies. The manifest that was asked about is only read. A request to interrupt
    /// the thread ends it as NotCopied.
    [[nodiscard]] Result stage(const MANIFEST_DATA& asked, const QVector<QByteArray>& keys,
                               const Progress& progress = {});

    /// After Ok: the manifest of the copies, with their paths and the seal of the copied signature.
    MANIFEST_DATA& manifest() { return *m_manifest; }

    /// After NoRoom and NotCopied: why, for a person.
    QString why() const { return m_why; }

    /// Removes what a staging that was killed left below that folder. Not while another one is under way there.
    static void sweep(const QString& parent = CVeldaPath("/kavor/upgrade").get_path());

private:
    Result copy(const QString& from, const QString& name, qint64 most, const Progress& progress);
    Result fail(Result result, const QString& why);
    bool makeFolder();
    bool hasRoomFor(qint64 bytes);
    bool isWhole(const Progress& progress);

    QString m_parent;
    QString m_folder;
    QString m_why;
    std::unique_ptr<MANIFEST_DATA> m_manifest;
};
