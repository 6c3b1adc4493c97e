#include "common/update/package_installer.h"

#include "common/update/process_run.h"
#include "platform/logger.h"

#include <QDir>
#include <QFileInfo>
#include <sys/stat.h>

namespace {

enum Code { Done = 0, NoManifest = -1, ScratchStays = -2, NoScratch = -3, NotUnpacked = -4, ActionFailed = -5 };

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

fwThread::fwThread(const MANIFEST_DATA* manifest, const InstallSettings& settings, QObject* parent)
    : QThread(parent), m_manifest(manifest), m_settings(settings), m_marker(settings.markerFile) {}

fwThread::~fwThread() {
    wait();
}

void fwThread::run() {
    fwUpgrade();
}

void fwThread::fwUpgrade() {
    const int code = install();
    m_end.code = code;
    endAndUnmark();
    emit fwUpgraded(code);
}

int fwThread::fail(int code, const QString& what) {
    m_end.failure = what;
    return code;
}

int fwThread::install() {
    info("fwThread::fwUpgrade start");
    if (!m_manifest) {
        failure("fwThread::fwUpgrade: manifest is null");
        return fail(NoManifest, QStringLiteral("There is no manifest"));
    }
    if (const int code = prepareScratch(); code != Done)
        return code;
    if (!unpack())
        return fail(NotUnpacked, QStringLiteral("Unpacking %1").arg(QFileInfo(m_manifest->package_path).fileName()));
    mark();
    const int code = carryOutAll();
    if (code == Done)
        info("fwThread::fwUpgrade completed successfully");
    return code;
}

int fwThread::carryOutAll() {
    for (const auto& component : m_manifest->components) {
        ++m_step;
        if (!component) {
            failure("fwThread::fwUpgrade: null manifest component");
            return fail(NoManifest, stepName(QStringLiteral("is missing")));
        }
        if (const int code = installComponent(*component); code != Done)
            return code;
    }
    return Done;
}

QString fwThread::stepName(const QString& subject) const {
    return QStringLiteral("Step %1 of %2: %3").arg(m_step).arg(m_manifest->components.size()).arg(subject);
}

void fwThread::mark() {
    if (!m_marker.set(m_manifest->name + ' ' + m_manifest->version))
        failure("%s cannot be written: an installation that is cut off will not be told of", m_settings.markerFile);
    m_isMarked = true;
}

void fwThread::endAndUnmark() {
    if (m_settings.ending)
        m_settings.ending(m_end);
    // The mark of an older installation stays until one has changed something again.
    if (m_isMarked && !m_marker.clear())
        failure("%s cannot be removed", m_settings.markerFile);
    m_isMarked = false;
}

int fwThread::prepareScratch() {
    const QString& folder = m_settings.scratchFolder;
    info("fwThread::fwUpgrade if /tmpfw exists delete folder");
    // The folder stands unquoted in the command texts: one that the shell would split must never be used.
    if (!isPlainWord(folder) || !QDir::isAbsolutePath(folder)) {
        failure("fwThread::fwUpgrade failed creating %s", folder);
        return fail(NoScratch, QStringLiteral("Creating %1").arg(folder));
    }
    if (!removePath(folder)) {
        failure("fwThread::fwUpgrade failed deleting %s", folder);
        return fail(ScratchStays, QStringLiteral("Deleting %1").arg(folder));
    }
    // For this account alone: what was checked must still be that when it is copied from here.
    if (!QDir().mkpath(QFileInfo(folder).path()) || ::mkdir(QFile::encodeName(folder).constData(), S_IRWXU) != 0) {
        failure("fwThread::fwUpgrade failed creating %s", folder);
        return fail(NoScratch, QStringLiteral("Creating %1").arg(folder));
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
            return fail(ActionFailed, stepName(command));
        }
    }
    if (plan.mayReboot)
        endAndUnmark();
    const bool done = plan.known && carryOut(plan, component);
    if (plan.mayReboot && !(done && m_step == static_cast<int>(m_manifest->components.size())))
        mark(); // the instrument is still up, and what follows is part of the installation
    if (done)
        return Done;
    failure("fwThread::fwUpgrade %s: %s", plan.failure, plan.subject);
    if (plan.stops)
        return fail(ActionFailed, stepName(plan.subject));
    if (++m_end.failedSteps == 1)
        m_end.firstFailure = plan.subject;
    return Done;
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
