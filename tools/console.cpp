#include "tools/console.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cstdio>

namespace Console {

void say(const QString& line) {
    std::fprintf(stdout, "%s\n", line.toUtf8().constData());
}

int refuse(const QString& why, int code) {
    std::fprintf(stderr, "%s: %s\n",
                 QFileInfo(QCoreApplication::applicationFilePath()).fileName().toLocal8Bit().constData(),
                 why.toUtf8().constData());
    return code;
}

int run(int argc, char** argv, const Tool& tool, const Carry& carry) {
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(tool.description);
    parser.addPositionalArgument("command", tool.commands);
    parser.addPositionalArgument("arguments", tool.places, tool.placeholder);
    parser.addOptions(tool.options);
    const QCommandLineOption help({"h", "help"}, "Shows this help.");
    parser.addOption(help);
    if (!parser.parse(QCoreApplication::arguments()))
        return refuse(parser.errorText(), Usage);
    if (parser.isSet(help)) {
        say(parser.helpText());
        return Done;
    }
    const QStringList arguments = parser.positionalArguments();
    const std::optional<int> code = carry(parser, arguments.value(0), arguments.mid(1));
    return code ? *code : refuse(QStringLiteral("say %1, or --help").arg(tool.commands), Usage);
}

QString visible(const QString& text) {
    QString shown;
    for (const uint c : text.toUcs4()) {
        if (c == '\\')
            shown += QStringLiteral("\\\\");
        else if (QChar::isPrint(c) && (c == ' ' || !QChar::isSpace(c)))
            shown += QString::fromUcs4(&c, 1);
        else
            shown += QStringLiteral("\\u{%1}").arg(c, 0, 16);
    }
    return shown;
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
