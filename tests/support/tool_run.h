#pragma once

#include <QCoreApplication>
#include <QProcess>

struct ToolRun {
    int code = -1;
    QString output;
    QString error;
};

/// Runs a release tool of this build as its user would.
inline ToolRun runTool(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(QCoreApplication::applicationDirPath() + "/../bin/" + program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}
