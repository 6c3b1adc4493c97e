#include "common/update/package_scan.h"

#include "platform/logger.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <filesystem>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;

// No medium of ours comes near these: they end the walk through one that was made to keep the panel busy.
constexpr int Deepest = 32;

[[noreturn]] void fail(const std::string& why) {
    throw std::runtime_error("Error reading fw files " + why);
}

QString nameOf(const fs::directory_entry& entry) {
    return QFile::decodeName(entry.path().filename().c_str());
}

// Empty for a path that cannot be told as a text and opened by it again.
QString pathOf(const fs::directory_entry& entry) {
    const QByteArray bytes(entry.path().c_str());
    const QString path = QFile::decodeName(bytes);
    return QFile::encodeName(path) == bytes ? path : QString();
}

} // namespace

QStringList findManifests(const QString& root) {
    const fs::path start(QFile::encodeName(root).toStdString());
    std::error_code error;
    if (!fs::is_directory(start, error))
        return {};
    QStringList found;
    fs::recursive_directory_iterator at(start, fs::directory_options::skip_permission_denied, error);
    for (const fs::recursive_directory_iterator end; !error && at != end; at.increment(error)) {
        const QString name = nameOf(*at);
        if (name.startsWith('.') || at.depth() >= Deepest)
            at.disable_recursion_pending();
        // In any spelling of case: FAT media show short names in one case only.
        std::error_code gone;
        if (name.compare(QLatin1String("Manifest"), Qt::CaseInsensitive) == 0 && at->is_regular_file(gone)) {
            const QString path = pathOf(*at);
            if (!path.isEmpty())
                found << path;
            else
                VELDA_LOG("update", QtInfoMsg, "a manifest below %s lies in a folder whose name is no text", root);
        }
        if (QThread::currentThread()->isInterruptionRequested())
            break;
        if (found.size() > MostManifests) {
            VELDA_LOG("update", QtInfoMsg, "%s holds more than %d manifests, the others are left out", root,
                      MostManifests);
            break;
        }
    }
    if (error)
        fail(error.message());
    found.sort();
    return found;
}

std::unique_ptr<fwData> readPackages(const QStringList& manifestPaths) {
    std::unique_ptr<fwData> packages;
    try {
        packages = std::make_unique<fwData>();
        packages->setCut(manifestPaths.size() > MostManifests);
        for (const QString& path : manifestPaths.mid(0, MostManifests)) {
            if (QThread::currentThread()->isInterruptionRequested())
                throw std::runtime_error("interrupted");
            packages->init_cmd_config({path});
        }
    } catch (const std::exception& error) {
        fail(error.what());
    }
    for (const QString& path : manifestPaths) {
        if (!QFileInfo::exists(path))
            fail(path.toStdString() + ": the medium was removed");
    }
    return packages;
}

std::unique_ptr<fwData> packagesBelow(const QString& root) {
    return readPackages(findManifests(root));
}
