#include "common/update/process_run.h"

#include <QProcess>

namespace {

constexpr int KeptOutput = 4096;

void keepEnd(QByteArray& kept, const QByteArray& more) {
    kept += more;
    if (kept.size() > KeptOutput)
        kept = kept.right(KeptOutput);
}

} // namespace

ProcessResult runProcess(const QString& program, const QStringList& arguments, int startTimeoutMs) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForStarted(startTimeoutMs))
        return {false, process.errorString()};
    // Emptied as it comes, so a talkative command does not fill the memory.
    QByteArray output;
    while (process.waitForReadyRead(-1))
        keepEnd(output, process.readAll());
    process.waitForFinished(-1);
    keepEnd(output, process.readAll());
    return {process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
            QString::fromLocal8Bit(output).trimmed()};
}
