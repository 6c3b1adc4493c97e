#include "common/link/command_history.h"

#include <QDateTime>
#include <algorithm>
#include <cctype>

namespace {

/// The beginning, on one line: a block of steps is data.
QByteArray readable(const QByteArray& bytes) {
    QByteArray shown = bytes.left(CommandHistory::BytesOfEach).trimmed();
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return std::isprint(static_cast<unsigned char>(c)) == 0; }, '.');
    const int more = bytes.size() - CommandHistory::BytesOfEach;
    return more > 0 ? shown + " (and " + QByteArray::number(more) + " bytes)" : shown;
}

} // namespace

void CommandHistory::noteCommand(const QByteArray& command, const QByteArray& answer, qint64 tookMs) {
    add(true, QByteArray::number(tookMs).rightJustified(5) + " ms  " + readable(command) + "  ->  " + readable(answer));
}

void CommandHistory::noteMessage(const QString& text) {
    add(false, "told:     " + text.simplified().toUtf8());
}

void CommandHistory::add(bool isCommand, const QByteArray& line) {
    m_entries.push_back({QDateTime::currentMSecsSinceEpoch(), isCommand, line});
    ++m_count[isCommand ? 1 : 0];
    while (m_count[1] > Commands || m_count[0] > Messages) {
        --m_count[m_entries.front().isCommand ? 1 : 0];
        m_entries.pop_front();
    }
}

QByteArray CommandHistory::text() const {
    QByteArray lines;
    for (const Entry& entry : m_entries)
        lines +=
            QDateTime::fromMSecsSinceEpoch(entry.endedAt).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz")).toUtf8() +
            "  " + entry.line + '\n';
    return lines;
}
