#include "platform/logger.h"

#include "platform/log_format.h"

#include <QCoreApplication>
#include <QDir>
#include <QMessageLogContext>
#include <algorithm>
#include <mutex>

namespace Logger {
namespace {

constexpr int FlushEveryMs = 1000;

struct Current {
    std::mutex mutex;
    const LogManager* owner = nullptr;
    std::shared_ptr<LogFiles> files;
    QtMessageHandler former = nullptr; ///< null while it is Qt's own, which would write every line twice
};

// Never destroyed: threads may still log while the process leaves main.
Current& current() {
    static Current& instance = *new Current;
    return instance;
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    std::shared_ptr<LogFiles> files;
    QtMessageHandler former = nullptr;
    {
        std::lock_guard<std::mutex> lock(current().mutex);
        files = current().files;
        former = current().former;
    }
    if (files)
        files->write(type, context, text);
    if (former)
        former(type, context, text);
}

QString stateFolder() {
    QString base = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(base))
        base = QDir::homePath() + "/.local/state";
    return base + "/kavor/log";
}

void installHandler() {
    const QtMessageHandler before = qInstallMessageHandler(nullptr);
    const QtMessageHandler qtsOwn = qInstallMessageHandler(handleMessage);
    std::lock_guard<std::mutex> lock(current().mutex);
    current().former = before == qtsOwn ? nullptr : before;
}

void removeHandler() {
    QtMessageHandler former = nullptr;
    {
        std::lock_guard<std::mutex> lock(current().mutex);
        former = current().former;
        current().former = nullptr;
    }
    const QtMessageHandler installed = qInstallMessageHandler(former);
    if (installed != handleMessage)
        qInstallMessageHandler(installed); // somebody stands above this log: not ours to take away
}

} // namespace

void Log::log(const char* file, const char* function, int line, const char* category, QtMsgType type,
              const char* format, const QVariant& arg1, const QVariant& arg2, const QVariant& arg3,
              const QVariant& arg4, const QVariant& arg5, const QVariant& arg6, const QVariant& arg7,
              const QVariant& arg8, const QVariant& arg9, const QVariant& arg10) const {
    QVector<QVariant> values{arg1, arg2, arg3, arg4, arg5, arg6, arg7, arg8, arg9, arg10};
    while (!values.isEmpty() && !values.last().isValid())
        values.removeLast();
    const QMessageLogContext context(file, line, function, category ? category : "default");
    qt_message_output(type, context, fillFormat(format, values));
}

LogManager::LogManager(QObject* parent) : QObject(parent) {}

LogManager::~LogManager() {
    release();
}

void LogManager::set_log_QtMsgType_file(bool on) {
    m_layout.filePerType = on;
}

void LogManager::set_rotation(std::size_t bytesPerFile, std::size_t files) {
    m_layout.bytesPerFile = std::max<std::size_t>(bytesPerFile, 1);
    m_layout.files = files;
}

bool LogManager::init(const QString& directory, const QString& name, int flags) {
    release();
    {
        std::lock_guard<std::mutex> lock(current().mutex);
        if (current().owner)
            return false;
        current().owner = this;
    }
    LogLayout layout = m_layout;
    layout.standardError = (flags & AlsoStandardError) != 0;
    QString error = directory.isEmpty() ? QStringLiteral("no folder given") : QString();
    std::shared_ptr<LogFiles> files;
    if (!directory.isEmpty())
        files = LogFiles::open(directory, name, layout, error);
    const bool asked = files != nullptr;
    m_directory = directory;
    if (!asked) {
        QString second;
        layout.standardError = true;
        m_directory = stateFolder();
        files = LogFiles::open(m_directory, name, layout, second);
        if (!files) {
            m_directory.clear();
            files = LogFiles::open(m_directory, name, layout, second);
        }
    }
    {
        std::lock_guard<std::mutex> lock(current().mutex);
        current().files = files;
    }
    installHandler();
    if (!asked) {
        VELDA_LOG("log", QtWarningMsg, "the log goes to %s: %s",
                  m_directory.isEmpty() ? QStringLiteral("standard error") : m_directory, error);
    }
    if (QCoreApplication::instance())
        m_flushTimer = startTimer(FlushEveryMs, Qt::VeryCoarseTimer);
    return asked;
}

void LogManager::release() {
    {
        std::lock_guard<std::mutex> lock(current().mutex);
        if (current().owner != this)
            return;
    }
    if (m_flushTimer != 0)
        killTimer(m_flushTimer);
    m_flushTimer = 0;
    removeHandler();
    m_directory.clear();
    std::shared_ptr<LogFiles> files;
    std::lock_guard<std::mutex> lock(current().mutex);
    current().owner = nullptr;
    files.swap(current().files);
}

void LogManager::timerEvent(QTimerEvent*) {
    std::shared_ptr<LogFiles> files;
    {
        std::lock_guard<std::mutex> lock(current().mutex);
        files = current().files;
    }
    if (files)
        files->flush();
}

} // namespace Logger
