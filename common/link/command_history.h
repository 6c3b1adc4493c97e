#pragma once

#include <QByteArray>
#include <QString>
#include <deque>

/// The last commands with their answers, and what the user was told between them, for whoever looks for a fault later.
/// In memory only. GUI thread.
class CommandHistory {
public:
    static constexpr int Commands = 200;    ///< kept
    static constexpr int Messages = 200;    ///< kept, of those among them
    static constexpr int BytesOfEach = 120; ///< of a command and of an answer; the rest is told as a number

    /// tookMs: from asking to the end. answer: the reply, "+OK", or the error.
    void noteCommand(const QByteArray& command, const QByteArray& answer, qint64 tookMs);
    void noteMessage(const QString& text);

    /// One line each, the oldest first: time of day with date, milliseconds taken, command and answer.
    QByteArray text() const;

private:
    struct Entry {
        qint64 endedAt; ///< ms since the epoch
        bool isCommand;
        QByteArray line;
    };
    void add(bool isCommand, const QByteArray& line);

    std::deque<Entry> m_entries;
    int m_count[2] = {0, 0}; ///< of messages, of commands
};
