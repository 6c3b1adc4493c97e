#pragma once

#include <QString>

class QCommandLineParser;

/// What the release tools say and how they end: 0 done, 1 refused or failed, 2 called the wrong way.
namespace Console {

inline constexpr int kDone = 0;
inline constexpr int kRefused = 1;
inline constexpr int kUsage = 2;

/// A line on standard output.
void say(const QString& line);

/// A line on standard error, with the program's name in front; returns the exit code.
int refuse(const QString& why, int code = kRefused);

/// Parses the program's arguments. True: go on. False: end with `code`, help was shown or the arguments refused.
[[nodiscard]] bool parse(QCommandLineParser& parser, int& code);

/// Replaces a file as a whole. Returns why not, or nothing.
[[nodiscard]] QString writeFile(const QString& path, const QByteArray& bytes);

/// Reads a regular file of at most `most` bytes as a whole. Returns why not, or nothing.
[[nodiscard]] QString readFile(const QString& path, qint64 most, QByteArray& bytes);

} // namespace Console
