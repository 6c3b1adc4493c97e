#include "platform/log_files.h"

#include <QDir>
#include <QFileInfo>
#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

namespace Logger {
namespace {

struct Level {
    const char* name;
    spdlog::level::level_enum level;
};

// Indexed by QtMsgType, whose numbers follow history and not severity.
constexpr std::array<Level, 5> Levels{{{"debug", spdlog::level::debug},
                                       {"warning", spdlog::level::warn},
                                       {"critical", spdlog::level::err},
                                       {"fatal", spdlog::level::critical},
                                       {"info", spdlog::level::info}}};
static_assert(QtDebugMsg == 0 && QtWarningMsg == 1 && QtCriticalMsg == 2 && QtFatalMsg == 3 && QtInfoMsg == 4);

std::unique_ptr<spdlog::logger> makeLogger() {
    auto logger = std::make_unique<spdlog::logger>("");
    logger->set_level(spdlog::level::trace);
    logger->flush_on(spdlog::level::warn);
    return logger;
}

std::shared_ptr<spdlog::sinks::sink> fileSink(const QString& folder, const QString& name, const LogLayout& layout) {
    const QString path = QDir(folder).filePath(name + ".log");
    auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(QFile::encodeName(path).toStdString(),
                                                                       layout.bytesPerFile, layout.files);
    return sink;
}

// A line stays a line, whatever text a file name or a reply of the module brings along.
QByteArray oneLine(const QString& text) {
    QString line = text;
    line.replace('\n', "\\n").replace('\r', "\\r");
    return line.toUtf8();
}

} // namespace

LogFiles::LogFiles() : m_all(makeLogger()) {}

LogFiles::~LogFiles() = default;

void LogFiles::add(const std::shared_ptr<spdlog::sinks::sink>& sink) {
    m_all->sinks().push_back(sink);
    m_all->set_pattern("%Y-%m-%d %H:%M:%S.%e [%t] %v");
}

std::unique_ptr<LogFiles> LogFiles::open(const QString& folder, const QString& name, const LogLayout& layout,
                                         QString& error) {
    std::unique_ptr<LogFiles> files(new LogFiles);
    if (layout.standardError || folder.isEmpty())
        files->add(std::make_shared<spdlog::sinks::stderr_sink_mt>());
    if (folder.isEmpty())
        return files;
    if (!QDir().mkpath(folder)) {
        error = "cannot create the folder " + folder;
        return nullptr;
    }
    try {
        files->add(fileSink(folder, name, layout));
        for (std::size_t type = 0; layout.filePerType && type < Types; ++type) {
            files->m_byType[type] = makeLogger();
            files->m_byType[type]->sinks().push_back(fileSink(folder, name + "-" + Levels[type].name, layout));
            files->m_byType[type]->set_pattern("%Y-%m-%d %H:%M:%S.%e [%t] %v");
        }
    } catch (const spdlog::spdlog_ex& failure) {
        error = QString::fromLocal8Bit(failure.what());
        return nullptr;
    }
    return files;
}

void LogFiles::write(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    const auto index = static_cast<std::size_t>(type) < Types ? static_cast<std::size_t>(type) : 0;
    const Level& level = Levels[index];
    QByteArray line = level.name;
    line += ' ';
    line += context.category ? context.category : "default";
    if (context.file) {
        line += ' ' + QFileInfo(QString::fromUtf8(context.file)).fileName().toUtf8() + ':' +
                QByteArray::number(context.line);
    }
    if (context.function)
        line += QByteArray(" ") + context.function;
    line += " | " + oneLine(text);
    const spdlog::string_view_t view(line.constData(), static_cast<std::size_t>(line.size()));
    m_all->log(level.level, view);
    if (m_byType[index])
        m_byType[index]->log(level.level, view);
}

void LogFiles::flush() {
    m_all->flush();
    for (const auto& logger : m_byType) {
        if (logger)
            logger->flush();
    }
}

} // namespace Logger
