#include "common/update/package_staging.h"

#include "common/update/package_trust.h"
#include "common/update/signature.h"
#include "platform/durable_file.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char Prefix[] = "/.velda-staged-";
constexpr int RandomCharacters = 6;
constexpr qint64 Piece = qint64{256} * 1024;
const QString ManifestName = QStringLiteral("Manifest");

/// Opens a regular file of the medium; what a name stands for may change between a look and an opening.
bool openRegular(QFile& file) {
    const int descriptor =
        ::open(QFile::encodeName(file.fileName()).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat about {};
    if (descriptor >= 0 && ::fstat(descriptor, &about) == 0 && S_ISREG(about.st_mode) &&
        file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle))
        return true;
    if (descriptor >= 0)
        ::close(descriptor);
    return false;
}

/// A file that was not there before, for this account alone.
bool create(QFile& file) {
    const int descriptor = ::open(QFile::encodeName(file.fileName()).constData(),
                                  O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    return descriptor >= 0 &&
           file.open(descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle);
}

/// The result of a part as its share of the whole.
PackageStaging::Progress between(int first, int last, const PackageStaging::Progress& whole) {
    return [first, last, whole](int percent) {
        if (whole)
            whole(first + (last - first) * percent / 100);
    };
}

bool interrupted() {
    return QThread::currentThread()->isInterruptionRequested();
}

} // namespace

PackageStaging::PackageStaging(const QString& parent) : m_parent(parent) {}

PackageStaging::~PackageStaging() {
    if (!m_folder.isEmpty())
        QDir(m_folder).removeRecursively();
}

void PackageStaging::sweep(const QString& parent) {
    const QString pattern = QLatin1String(Prefix + 1) + QString(RandomCharacters, QLatin1Char('?'));
    const QDir dir(parent);
    const QStringList names =
        dir.entryList({pattern}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QString& name : names) {
        QDir left(dir.absoluteFilePath(name));
        if (QFileInfo(left.path()).ownerId() == ::geteuid())
            left.removeRecursively();
    }
}

PackageStaging::Result PackageStaging::fail(Result result, const QString& why) {
    m_why = why;
    return result;
}

bool PackageStaging::makeFolder() {
    if (!DurableFile::makeFolder(m_parent))
        return false;
    QByteArray path = QFile::encodeName(m_parent) + Prefix + QByteArray(RandomCharacters, 'X');
    if (!::mkdtemp(path.data())) // mode 0700, and never one that was there
        return false;
    m_folder = QFile::decodeName(path);
    return true;
}

bool PackageStaging::hasRoomFor(qint64 bytes) {
    // Asked of the folder: the table of mounts that QStorageInfo looks through does not name every root.
    std::error_code error;
    const auto free =
        static_cast<qint64>(std::filesystem::space(QFile::encodeName(m_folder).constData(), error).available) -
        KeptFree;
    if (bytes <= free)
        return true;
    const qint64 mebibyte = qint64{1024} * 1024;
    fail(Result::NoRoom, QStringLiteral("%1 MiB are needed and %2 MiB are free")
                             .arg(bytes / mebibyte + 1)
                             .arg(std::max<qint64>(free, 0) / mebibyte));
    return false;
}

PackageStaging::Result PackageStaging::copy(const QString& from, const QString& name, qint64 most,
                                            const Progress& progress) {
    QFile source(from);
    if (!openRegular(source))
        return fail(Result::NoPackage, QStringLiteral("%1 cannot be opened").arg(from));
    const qint64 size = source.size();
    if (size > most)
        return fail(Result::NotCopied, QStringLiteral("%1 has become too large").arg(from));
    if (!hasRoomFor(size))
        return Result::NoRoom;
    QFile target(m_folder + '/' + name);
    if (!create(target))
        return fail(Result::NotCopied, QString::fromLocal8Bit(std::strerror(errno)));
    qint64 copied = 0;
    while (copied < size) {
        const QByteArray piece = source.read(std::min(Piece, size - copied));
        if (piece.isEmpty() || interrupted())
            return fail(Result::NotCopied, QStringLiteral("%1 cannot be read to its end").arg(from));
        if (target.write(piece) != piece.size())
            return fail(Result::NotCopied, target.errorString());
        copied += piece.size();
        progress(static_cast<int>(copied * 100 / size));
    }
    if (::fsync(target.handle()) != 0)
        return fail(Result::NotCopied, QString::fromLocal8Bit(std::strerror(errno)));
    return Result::Ok;
}

bool PackageStaging::isWhole(const Progress& progress) {
    QFile file(m_manifest->package_path);
    if (!openRegular(file))
        return false;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const qint64 size = file.size();
    for (qint64 done = 0; done < size;) {
        const QByteArray piece = file.read(Piece);
        if (piece.isEmpty() || interrupted())
            return false;
        hash.addData(piece);
        done += piece.size();
        progress(static_cast<int>(done * 100 / size));
    }
    return QString::fromLatin1(hash.result().toHex()) == m_manifest->package_sha256.toLower();
}

PackageStaging::Result PackageStaging::stage(const MANIFEST_DATA& asked, const QVector<QByteArray>& keys,
                                             const Progress& progress) {
    if (!makeFolder())
        return fail(Result::NotCopied, QString::fromLocal8Bit(std::strerror(errno)));
    // The medium's name for the package may be anything; the folder holds but these three.
    const QString packageName = QFileInfo(asked.package_path).fileName();
    const QString manifestPath = m_folder + '/' + ManifestName;
    const bool isSigned = asked.signature.size() == Signature::Size; // any other is broken as it was read
    if (packageName.isEmpty() || packageName == ManifestName || packageName == signaturePath(ManifestName))
        return fail(Result::NoPackage, QStringLiteral("%1 is no package").arg(asked.package_path));
    // The package first: without it nothing else is of interest.
    Result result = copy(asked.package_path, packageName, std::numeric_limits<qint64>::max(), between(0, 60, progress));
    if (result == Result::Ok)
        result = copy(asked.manifest_path, ManifestName, LargestManifest, between(60, 60, progress));
    else if (result == Result::NoPackage)
        return result;
    if (result == Result::Ok && isSigned)
        result = copy(signaturePath(asked.manifest_path), signaturePath(ManifestName), asked.signature.size(),
                      between(60, 60, progress));
    if (result == Result::NoPackage)
        result = Result::NotCopied;
    if (result != Result::Ok)
        return result;
    if (!DurableFile::syncFolder(m_folder) || !DurableFile::syncFolder(m_parent))
        return fail(Result::NotCopied, QString::fromLocal8Bit(std::strerror(errno)));
    try {
        m_manifest = fwData({manifestPath}).takeFirst();
    } catch (const std::exception& error) {
        return fail(Result::NotCopied, QString::fromLocal8Bit(error.what()));
    }
    if (m_manifest->bytes != asked.bytes)
        return Result::Changed;
    m_manifest->package_path = m_folder + '/' + packageName;
    if (!isSigned)
        m_manifest->signature = asked.signature;
    m_manifest->seal = sealOf(*m_manifest, keys);
    const bool hasHash = !m_manifest->package_sha256.isEmpty();
    return hasHash && !isWhole(between(60, 100, progress)) ? Result::Damaged : Result::Ok;
}
