#pragma once

#include <QString>
#include <QStringList>

struct ProcessResult {
    bool ok = false; ///< started, left normally, exit code 0
    QString output;  ///< the end of what it wrote, at most 4096 bytes of both channels; or why it did not start
};

/// Runs a program found on PATH with an empty standard input and waits for its end without limit, but no longer than
/// startTimeoutMs for its start. Blocks: not for the GUI thread.
[[nodiscard]] ProcessResult runProcess(const QString& program, const QStringList& arguments, int startTimeoutMs);
