#include "tools/console.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace Console {

void say(const QString& line) {
    std::fprintf(stdout, "%s\n", line.toLocal8Bit().constData());
}

int refuse(const QString& why, int code) {
    std::fprintf(stderr, "%s: %s\n",
                 QFileInfo(QCoreApplication::applicationFilePath()).fileName().toLocal8Bit().constData(),
                 why.toLocal8Bit().constData());
    return code;
}

bool parse(QCommandLineParser& parser, int& code) {
    const QCommandLineOption help = parser.addHelpOption();
    if (!parser.parse(QCoreApplication::arguments())) {
        code = refuse(parser.errorText(), kUsage);
        return false;
    }
    if (parser.isSet(help)) {
        say(parser.helpText());
        code = kDone;
        return false;
    }
    return true;
}

QString writeFile(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return {};
    return QStringLiteral("%1 cannot be written: %2").arg(path, file.errorString());
}

QString readFile(const QString& path, qint64 most, QByteArray& bytes) {
    QFile file(path);
    if (!QFileInfo(path).isFile())
        return QStringLiteral("%1 is no file").arg(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("%1 cannot be opened: %2").arg(path, file.errorString());
    if (file.size() > most)
        return QStringLiteral("%1 holds more than %2 bytes").arg(path).arg(most);
    bytes = file.readAll();
    if (file.error() != QFileDevice::NoError || bytes.size() != file.size())
        return QStringLiteral("%1 cannot be read to its end: %2").arg(path, file.errorString());
    return {};
}

} // namespace Console
