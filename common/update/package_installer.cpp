#include "common/update/package_installer.h"

#include "common/update/process_run.h"
#include "platform/durable_file.h"
#include "platform/logger.h"

#include <QDir>
#include <QFileInfo>

namespace {

enum Code { Done = 0, NoManifest = -1, ScratchStays = -2, NoScratch = -3, NotUnpacked = -4, ActionFailed = -5 };

constexpr qint64 LongestMark = 256;

template <typename... Args>
void info(const char* format, const Args&... args) {
    VELDA_LOG("update", QtInfoMsg, format, args...);
}

template <typename... Args>
void failure(const char* format, const Args&... args) {
    VELDA_LOG("update", QtCriticalMsg, format, args...);
}

// A link or file in the folder's place goes by itself; what a link points to is not ours.
bool removePath(const QString& path) {
    const QFileInfo info(path);
    if (info.isSymLink() || info.isFile())
        return QFile::remove(path);
    return !info.exists() || QDir(path).removeRecursively();
}

} // namespace

QString unfinishedInstallation(const InstallSettings& settings) {
    QFile marker(settings.markerFile);
    if (!QFileInfo(marker).isFile() || !marker.open(QIODevice::ReadOnly))
        return {};
    const QString what = QString::fromUtf8(marker.read(LongestMark)).simplified();
    return what.isEmpty() ? QStringLiteral("?") : what;
}

fwThread::fwThread(const MANIFEST_DATA* manifest, const InstallSettings& settings, QObject* parent)
    : QThread(parent), m_manifest(manifest), m_settings(settings) {}

fwThread::~fwThread() {
    wait();
}

void fwThread::run() {
    fwUpgrade();
}

void fwThread::fwUpgrade() {
    const int code = install();
    emit fwUpgraded(code);
}

int fwThread::install() {
    info("fwThread::fwUpgrade start");
    if (!m_manifest) {
        failure("fwThread::fwUpgrade: manifest is null");
        return NoManifest;
    }
    if (const int code = prepareScratch(); code != Done)
        return code;
    if (!unpack())
        return NotUnpacked;
    mark();
    const int code = carryOutAll();
    unmark();
    if (code == Done)
        info("fwThread::fwUpgrade completed successfully");
    return code;
}

int fwThread::carryOutAll() {
    for (const auto& component : m_manifest->components) {
        if (!component) {
            failure("fwThread::fwUpgrade: null manifest component");
            return NoManifest;
        }
        if (const int code = installComponent(*component); code != Done)
            return code;
    }
    return Done;
}

void fwThread::mark() {
    const QString& path = m_settings.markerFile;
    const QByteArray what = (m_manifest->name + ' ' + m_manifest->version).simplified().toUtf8();
    if (!DurableFile::makeFolder(QFileInfo(path).path()) || DurableFile::replace(path, what) != DurableFile::Result::Ok)
        failure("%s cannot be written: an installation that is cut off will not be told of", path);
}

void fwThread::unmark() {
    const QString& path = m_settings.markerFile;
    if (QFileInfo::exists(path) && !(QFile::remove(path) && DurableFile::syncFolder(QFileInfo(path).path())))
        failure("%s cannot be removed", path);
}

int fwThread::prepareScratch() {
    const QString& folder = m_settings.scratchFolder;
    info("fwThread::fwUpgrade if /tmpfw exists delete folder");
    // The folder stands unquoted in the command texts: one that the shell would split must never be used.
    if (!isPlainWord(folder) || !QDir::isAbsolutePath(folder)) {
        failure("fwThread::fwUpgrade failed creating %s", folder);
        return NoScratch;
    }
    if (!removePath(folder)) {
        failure("fwThread::fwUpgrade failed deleting %s", folder);
        return ScratchStays;
    }
    if (!QDir().mkpath(folder)) {
        failure("fwThread::fwUpgrade failed creating %s", folder);
        return NoScratch;
    }
    return Done;
}

bool fwThread::unpack() {
    const QString& package = m_manifest->package_path;
    info("fwThread::fwUpgrade extract file");
    // tar would wait for ever on a pipe of that name.
    if (QFileInfo(package).isFile() && RunSytemLinuxCommand("tar", {"-zxf", package, "-C", m_settings.scratchFolder}))
        return true;
    failure("fwThread::fwUpgrade failed extracting package %s", package);
    removePath(m_settings.scratchFolder); // half a package, or one that has filled the disk, is of no use
    return false;
}

int fwThread::installComponent(const MANIFEST_DATA_COMPONENT& component) {
    const ComponentPlan plan = planComponent(component, m_settings.scratchFolder);
    if (plan.kindKnown)
        info("fwThread::fwUpgrade %s", component.type);
    if (plan.known)
        info("fwThread::fwUpgrade %s", component.action);
    if (plan.reboots) {
        info("fwThread::fwUpgrade rm patch folder before reboot");
        const QString command = "rm -rf " + patchFolder(m_settings.scratchFolder);
        if (!RunSystemShellCommand(command)) {
            failure("fwThread::fwUpgrade failed cleanup before reboot: %s", command);
            return ActionFailed;
        }
        unmark();
    }
    if (plan.known && carryOut(plan, component))
        return Done;
    if (plan.reboots)
        mark(); // what follows is part of the installation
    failure("fwThread::fwUpgrade %s: %s", plan.failure, plan.subject);
    if (++m_failedSteps == 1)
        m_firstFailure = plan.subject;
    return plan.stops ? ActionFailed : Done;
}

bool fwThread::carryOut(const ComponentPlan& plan, const MANIFEST_DATA_COMPONENT& component) {
    if (!plan.refusal.isEmpty()) {
        info("\"%s\" is not run: %s", plan.command, plan.refusal);
        return false;
    }
    if (plan.isCommand && component.type == QLatin1String("dir"))
        info("command: %s", plan.command);
    return RunSystemShellCommand(plan.command);
}

bool fwThread::RunSytemLinuxCommand(const QString& program, const QStringList& arguments) {
    const ProcessResult result = runProcess(program, arguments, m_settings.startTimeoutMs);
    if (!result.ok && !result.output.isEmpty())
        info("%s: %s", program, result.output);
    return result.ok;
}

bool fwThread::RunSystemShellCommand(const QString& command) {
    return RunSytemLinuxCommand("sh", {"-c", command});
}
