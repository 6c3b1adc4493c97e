#include "portable/screens/about/diagnostics.h"

#include "common/instrument/handlerscpi.h"
#include "common/link/record_texts.h"
#include "common/update/process_run.h"
#include "platform/devicepaths.h"
#include "platform/durable_file.h"
#include "platform/veldapath.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QWidget>
#include <utility>

namespace Kavor::HandheldGui {

namespace {

constexpr int TarStartMs = 5000;

QByteArray versions(EventHandler& handler) {
    QByteArray text = "panel " VELDA_VERSION ", built " VELDA_BUILD_DAY "\n";
    const auto add = [&text](const char* what, const QString& value) {
        text += QByteArray(what) + ' ' + value.toUtf8() + '\n';
    };
    add("Qt", QString::fromLatin1(qVersion()));
    add("system", QSysInfo::prettyProductName());
    add("kernel", QSysInfo::kernelVersion() + QLatin1Char(' ') + QSysInfo::currentCpuArchitecture());
    int channel = 0;
    for (const ChannelRecord& record : handler.publishedRecords()) {
        text += "channel " + QByteArray::number(channel++) + (record.connected != 0 ? ":" : " (not connected):");
        for (const auto* field :
             {&record.model, &record.serial, &record.options, &record.firmwareVersion, &record.calibrationDate})
            text += " \"" + QByteArray::fromStdString(recordText(*field)) + '"';
        text += '\n';
    }
    add("link", handler.isLinkUp() ? QStringLiteral("up") : QStringLiteral("down"));
    add("service", handler.isAnswering() ? QStringLiteral("answers") : QStringLiteral("does not answer"));
    return text;
}

/// The variables that configure the panel, Qt and the unit. USER, HOME and whatever else stands there are nobody's
/// business, nor is the account in VELDA_USER.
QByteArray environment() {
    static const QRegularExpression wanted(
        QStringLiteral("^(VELDA_(?!USER$)|QT_|LANG$|LC_|NOTIFY_SOCKET$|WATCHDOG_|INVOCATION_ID$)"));
    const QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
    QStringList names = all.keys();
    names.sort();
    QByteArray text;
    for (const QString& name : qAsConst(names)) {
        if (wanted.match(name).hasMatch())
            text += (name + QLatin1Char('=') + all.value(name)).toUtf8() + '\n';
    }
    return text;
}

QByteArray configurations() {
    const QDir folder(CVeldaPath(QStringLiteral("/kavor/preset")).get_path() + QStringLiteral("/preset"));
    return folder.entryList(QDir::Files | QDir::Hidden, QDir::Name).join(QLatin1Char('\n')).toUtf8() + '\n';
}

/// What was logged names the stick's folder, which is called by the account, and the network at each look at the LAN
/// page.
QByteArray withoutNames(const QByteArray& bytes, const QString& account) {
    static const QRegularExpression network(QStringLiteral("(Localhost name:|IP =|MAC =|Netmask =)[^\n]*"));
    QString text = QString::fromUtf8(bytes).replace(network, QStringLiteral("\\1 -"));
    if (!account.isEmpty())
        text.replace(
            QRegularExpression(QStringLiteral("(/media|/home)/%1(?![\\w-])").arg(QRegularExpression::escape(account))),
            QStringLiteral("\\1/USER"));
    return text.toUtf8();
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

DiagnosticsContent collectDiagnostics(EventHandler& handler, QWidget& window) {
    DiagnosticsContent content;
    QString serial = QString::fromStdString(recordText(handler.snapshot().serial));
    serial.remove(QRegularExpression(QStringLiteral("[^A-Za-z0-9-]")));
    content.name = QStringLiteral("velda-diagnostics-%1%2")
                       .arg(serial.isEmpty() ? QString() : serial + QLatin1Char('-'),
                            QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")));
    content.members = {{QStringLiteral("versions.txt"), versions(handler)},
                       {QStringLiteral("environment.txt"), environment()},
                       {QStringLiteral("configurations.txt"), configurations()},
                       {QStringLiteral("commands.txt"), handler.history().text()}};
    int channel = 0;
    for (const ChannelRecord& record : handler.publishedRecords())
        content.members.push_back({QStringLiteral("record-%1.bin").arg(channel++),
                                   QByteArray(reinterpret_cast<const char*>(&record), sizeof record)});
    content.screen = window.grab().toImage();
    content.logFolder = DevicePaths::logFolder();
    content.account = DevicePaths::userName();
    return content;
}

DiagnosticsJob::DiagnosticsJob(DiagnosticsContent content, const QString& media, QObject* parent)
    : QThread(parent), m_content(std::move(content)), m_media(media) {}

DiagnosticsJob::~DiagnosticsJob() {
    wait();
}

void DiagnosticsJob::run() {
    QString problem = QStringLiteral("no stick that can be written");
    const QDir media(m_media);
    for (const QString& stick : media.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name)) {
        const QString path = media.absoluteFilePath(stick);
        if (!QFileInfo(path).isWritable())
            continue;
        problem = write(path);
        if (problem.isEmpty())
            break;
    }
    emit done(problem.isEmpty() ? m_content.name + QStringLiteral(".tar.gz") : QString(), problem);
}

/// Empty when the archive is on the stick, otherwise why it is not.
QString DiagnosticsJob::write(const QString& stick) const {
    const QTemporaryDir scratch;
    const QDir folder(scratch.filePath(m_content.name));
    bool collected = folder.mkpath(QStringLiteral("logs"));
    for (const DiagnosticsContent::Member& member : m_content.members) {
        const bool isText = member.name.endsWith(QLatin1String(".txt"));
        collected = collected && writeFile(folder.absoluteFilePath(member.name),
                                           isText ? withoutNames(member.bytes, m_content.account) : member.bytes);
    }
    collected = collected && m_content.screen.save(folder.absoluteFilePath(QStringLiteral("screen.png")));
    const QDir logs(m_content.logFolder);
    for (const QString& log : logs.entryList({QStringLiteral("*.log")}, QDir::Files)) {
        QFile file(logs.absoluteFilePath(log));
        if (file.open(QIODevice::ReadOnly)) // one that was rotated away meanwhile is in the next
            collected = collected && writeFile(folder.absoluteFilePath(QStringLiteral("logs/") + log),
                                               withoutNames(file.readAll(), m_content.account));
    }
    if (!collected)
        return QStringLiteral("no room to collect them");

    const QString archive = scratch.filePath(QStringLiteral("archive.tar.gz"));
    const ProcessResult packed =
        runProcess(QStringLiteral("tar"),
                   {QStringLiteral("--owner=0"), QStringLiteral("--group=0"), QStringLiteral("-czf"), archive,
                    QStringLiteral("-C"), scratch.path(), m_content.name},
                   TarStartMs);
    QFile file(archive);
    if (!packed.ok || !file.open(QIODevice::ReadOnly))
        return QStringLiteral("they cannot be packed");
    const QString target = QDir(stick).absoluteFilePath(m_content.name + QStringLiteral(".tar.gz"));
    return DurableFile::replace(target, file.readAll()) == DurableFile::Result::Ok
               ? QString()
               : QStringLiteral("the stick cannot be written");
}

} // namespace Kavor::HandheldGui
