#include "lists/sticks.h"

#include "lists/list_content.h"
#include "platform/devicepaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <optional>
#include <sys/stat.h>

namespace {

std::optional<quint64> deviceOf(const QString& folder) {
    struct stat status {};
    if (::stat(QFile::encodeName(folder).constData(), &status) != 0 || !S_ISDIR(status.st_mode))
        return std::nullopt;
    return status.st_dev;
}

/// After a failure: that of a stick that is not there any more has one reason only.
bool failed(const Stick& stick, QString& error) {
    if (deviceOf(stick.path) != stick.device)
        error = QStringLiteral("%1 was removed").arg(stick.name);
    return false;
}

QString pathOf(const Stick& stick, const QString& name) {
    return stick.path + QLatin1Char('/') + name;
}

} // namespace

std::vector<Stick> Sticks::present() {
    const QDir media(DevicePaths::mediaFolder());
    std::vector<Stick> sticks;
    for (const QString& name : media.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name)) {
        const QString path = media.filePath(name);
        if (const auto device = deviceOf(path))
            sticks.push_back({name, path, *device});
    }
    return sticks;
}

bool Sticks::enumerate(const Stick& stick, QStringList& names, QString& error) {
    names.clear();
    if (deviceOf(stick.path) != stick.device)
        return failed(stick, error);
    names =
        QDir(stick.path)
            .entryList({QStringLiteral("*.json"), QStringLiteral("*.csv")}, QDir::Files | QDir::NoSymLinks, QDir::Name);
    return true;
}

bool Sticks::load(const Stick& stick, const QString& name, const QString& root, QJsonArray& steps, QString& error) {
    return ListContent::readFile(pathOf(stick, name), root, steps, error) || failed(stick, error);
}

bool Sticks::save(const Stick& stick, const QString& name, const QString& root, const QJsonArray& steps,
                  QString& error) {
    // A stick whose mount has gone may leave its folder behind, on the device's own disk.
    if (deviceOf(stick.path) != stick.device)
        return failed(stick, error);
    if (name.contains(QLatin1Char('/')) || name.startsWith(QLatin1Char('.'))) {
        error = QStringLiteral("A file on a stick cannot be called %1").arg(name);
        return false;
    }
    const QString path = pathOf(stick, name);
    if (QFileInfo(path).isSymLink()) { // it could lead to the device's own files
        error = QStringLiteral("Failed to open list file for writing");
        return false;
    }
    if (steps.size() > ListContent::MostSteps)
        return ListContent::refuseSize(error);
    return ListContent::writeFile(path, steps, root, error) || failed(stick, error);
}
