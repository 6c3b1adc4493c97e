#pragma once

#include "platform/log_files.h"

#include <QObject>
#include <QString>
#include <QVariant>

namespace Logger {

/// The way of every log line that carries its own place. Valid from the first to the last moment of the process and
/// from any thread.
class Log {
public:
    constexpr Log() = default;

    /// Fills a printf-style format (see fillFormat) and hands the text to Qt's message handler, which is the log's own
    /// while a LogManager is in use. QtFatalMsg ends the process, as qFatal does. Null texts are borne.
    void log(const char* file, const char* function, int line, const char* category, QtMsgType type, const char* format,
             const QVariant& arg1 = {}, const QVariant& arg2 = {}, const QVariant& arg3 = {}, const QVariant& arg4 = {},
             const QVariant& arg5 = {}, const QVariant& arg6 = {}, const QVariant& arg7 = {}, const QVariant& arg8 = {},
             const QVariant& arg9 = {}, const QVariant& arg10 = {}) const;
};

inline constexpr Log instance{};

/// Opens the log files and, until it is destroyed, takes every message of Qt into them. A handler that somebody had
/// installed before still sees each message and is put back at the end. One manager at a time; GUI thread.
class LogManager : public QObject {
    Q_OBJECT

public:
    enum Flag { NoFlags = 0, AlsoStandardError = 1 };

    explicit LogManager(QObject* parent = nullptr);
    ~LogManager() override;

    /// true: each Qt message type also gets a file of its own, NAME-warning.log and so on. Takes effect at init.
    void set_log_QtMsgType_file(bool on);

    /// Size at which a file is put aside, in bytes, and how many of those are kept. Takes effect at init.
    void set_rotation(std::size_t bytesPerFile, std::size_t files);

    /// Opens DIRECTORY/NAME.log and installs the message handler. A directory that cannot be written is not fatal: the
    /// log then goes to kavor/log in the user's state folder and to standard error, at worst to standard error alone.
    /// Returns whether the directory asked for is in use; false as well, and without effect, while another manager is.
    bool init(const QString& directory, const QString& name, int flags = NoFlags);

    /// The folder in use; empty before init and when there is only standard error.
    QString directory() const { return m_directory; }

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void release();

    LogLayout m_layout;
    QString m_directory;
    int m_flushTimer = 0;
};

} // namespace Logger

#define VELDA_LOG(category, type, ...)                                                                                 \
    ::Logger::instance.log(__FILE__, static_cast<const char*>(__func__), __LINE__, category, type, __VA_ARGS__)
