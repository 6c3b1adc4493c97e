#include "common/update/package_look.h"

#include "common/update/package_trust.h"

#include <QDir>
#include <QFile>
#include <exception>
#include <sys/stat.h>
#include <utility>

namespace Kavor::HandheldGui {

namespace {

// A medium is a folder of its own below the root, and while it is mounted on another device than the root. Nothing of
// it is read.
QByteArray mediaBelow(const QString& root) {
    QByteArray media;
    QStringList names = QDir(root).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    names.prepend(QString());
    for (const QString& name : qAsConst(names)) {
        struct stat about {};
        const QByteArray path = QFile::encodeName(root + '/' + name);
        if (::stat(path.constData(), &about) != 0)
            continue;
        media += path + '\n';
        for (const auto number :
             {static_cast<qint64>(about.st_dev), static_cast<qint64>(about.st_ino),
              static_cast<qint64>(about.st_mtim.tv_sec), static_cast<qint64>(about.st_mtim.tv_nsec)})
            media += QByteArray::number(number) + ' ';
    }
    return media;
}

} // namespace

PackageScan::~PackageScan() {
    requestInterruption();
    wait();
    // Orders what the thread wrote before its end also for who cannot see into wait().
    const std::lock_guard<std::mutex> lock(m_mutex);
}

void PackageScan::lookBelow(const QString& root) {
    m_next = root;
    if (isRunning())
        requestInterruption();
    else
        looksAgain();
}

void PackageScan::glanceBelow(const QString& root) {
    if (isRunning() || !m_next.isEmpty())
        return;
    begin(root, true);
}

bool PackageScan::looksAgain() {
    if (isRunning()) // the end that is told of is an older look's
        return true;
    if (m_next.isEmpty())
        return false;
    begin(std::exchange(m_next, QString()), false);
    return true;
}

void PackageScan::begin(const QString& root, bool onlyIfChanged) {
    wait(); // finished() comes a moment before the end
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_root = root;
        m_onlyIfChanged = onlyIfChanged;
    }
    start(QThread::LowPriority);
}

std::optional<PackageScan::Result> PackageScan::takeResult() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_result, std::nullopt);
}

void PackageScan::run() {
    // Before the look: what comes while it is under way is found by the next glance.
    QString root;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        root = m_root;
    }
    const QByteArray media = mediaBelow(root);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (media == std::exchange(m_media, media) && m_onlyIfChanged)
            return;
    }
    Result result;
    try {
        result.packages = m_look(root);
        const Trust trust = readTrust(m_trust);
        for (const auto& package : result.packages->manifests())
            package->seal = sealOf(*package, trust.keys);
    } catch (const std::exception& error) {
        result.error = QString::fromLocal8Bit(error.what());
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_result = std::move(result);
}

} // namespace Kavor::HandheldGui
