#pragma once

#include <QString>
#include <QtGlobal>
#include <array>
#include <cstddef>
#include <memory>

namespace spdlog {
class logger;
namespace sinks {
class sink;
}
} // namespace spdlog

namespace Logger {

/// How the files of a log are laid out. A full file is renamed to NAME.1.log and so on; the oldest goes.
struct LogLayout {
    std::size_t bytesPerFile = std::size_t{1} << 20;
    std::size_t files = 5; ///< kept beside the current one
    bool filePerType = false;
    bool standardError = false;
};

/// The open files of one log. Any thread may write.
class LogFiles {
public:
    /// Opens FOLDER/NAME.log, creating the folder; null with a sentence in error when that cannot be. An empty folder
    /// opens no file and leaves standard error alone.
    [[nodiscard]] static std::unique_ptr<LogFiles> open(const QString& folder, const QString& name,
                                                        const LogLayout& layout, QString& error);
    ~LogFiles();

    /// One line: time, thread, level, category, file:line, function, text. From warnings on it is flushed at once.
    void write(QtMsgType type, const QMessageLogContext& context, const QString& text);

    void flush();

private:
    LogFiles();
    void add(const std::shared_ptr<spdlog::sinks::sink>& sink);

    static constexpr std::size_t Types = 5;
    std::unique_ptr<spdlog::logger> m_all;
    std::array<std::unique_ptr<spdlog::logger>, Types> m_byType;
};

} // namespace Logger
