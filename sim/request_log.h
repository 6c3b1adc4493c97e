#pragma once

#include <QByteArrayList>
#include <QHash>
#include <QPair>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace Sim {

/// What reached the module, in order: the last lines, and how often each header came. Any thread.
class RequestLog {
public:
    /// Lines kept. Counting goes on exactly when older ones have gone.
    static constexpr int MaximumLines = 10000;

    using Predicate = std::function<bool(const QByteArrayList&)>;

    void add(const QByteArray& line);
    void clear();
    QByteArrayList lines() const;

    /// Requests with exactly this header, in any case and with or without its colon and arguments. With a question mark
    /// the queries are counted, without it the commands.
    int count(const QByteArray& header) const;

    /// Blocks until the predicate holds for the lines so far, at most ms milliseconds. Returns whether it held.
    [[nodiscard]] bool waitFor(const Predicate& predicate, int ms) const;

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_added;
    QByteArrayList m_lines;
    QHash<QPair<QByteArray, bool>, int> m_counts; ///< by header, and whether it was a query
};

} // namespace Sim
