#pragma once

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

class QCommandLineParser;

/// What the release tools say and how they end: 0 done, 1 refused or failed, 2 called the wrong way.
namespace Console {

inline constexpr int Done = 0;
inline constexpr int Refused = 1;
inline constexpr int Usage = 2;

/// A text from elsewhere as it is to be shown: what cannot be seen, a line end or a control character for one, as
/// "\u{1b}", and a backslash as two.
QString visible(const QString& text);

/// A line on standard output.
void say(const QString& line);

/// A line on standard error, with the program's name in front; returns the exit code.
int refuse(const QString& why, int code = Refused);

/// What a tool says of itself in its help.
struct Tool {
    QString description;
    QString commands;    ///< the words that its first argument may be
    QString places;      ///< what the arguments behind it are
    QString placeholder; ///< of one of those in the usage
    QList<QCommandLineOption> options;
};

/// Does a command with the arguments behind it; returns the exit code, or nothing when it knows no such command.
using Carry = std::function<std::optional<int>(const QCommandLineParser&, const QString& command, const QStringList&)>;

/// A tool's main: parses the arguments, shows the help, refuses what is wrong with them, carries the command out.
int run(int argc, char** argv, const Tool& tool, const Carry& carry);

/// Replaces a file as a whole. Returns why not, or nothing.
[[nodiscard]] QString writeFile(const QString& path, const QByteArray& bytes);

/// Reads a regular file of at most `most` bytes as a whole. Returns why not, or nothing.
[[nodiscard]] QString readFile(const QString& path, qint64 most, QByteArray& bytes);

} // namespace Console
