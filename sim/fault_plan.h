#pragma once

#include <QByteArray>
#include <list>
#include <mutex>
#include <optional>

namespace Sim {

/// One thing that goes wrong.
struct Fault {
    enum Kind {
        Silent,    ///< the request is neither carried out nor answered
        Lost,      ///< carried out, not answered
        Late,      ///< carried out at once, answered `milliseconds` later; later answers queue up behind it
        Refuse,    ///< not carried out, answered "-ERR " and `text`
        Answer,    ///< carried out, answered with the line `text`
        Split,     ///< carried out, answered byte by byte, one every `milliseconds`
        Merge,     ///< carried out, the answer goes out together with the next one, in one piece
        Double,    ///< carried out, answered twice
        NoLineEnd, ///< carried out, the answer lacks its line end
        Drop,      ///< carried out, the connection is closed after half of the answer
        Keep,      ///< acknowledged but not carried out: the record keeps its value
        Other,     ///< acknowledged, carried out with the argument `text` in the place of its own
        Stale,     ///< carried out and acknowledged, the record shows it with the next change only
        Gone       ///< not carried out; the service closes its port and all connections for `milliseconds`
    };

    Kind kind = Silent;
    QByteArray header; ///< only requests that begin like this, in any case, a leading colon aside; empty: all
    int count = -1;    ///< how many requests it befalls; negative: all
    int milliseconds = 0;
    QByteArray text;
};

/// The faults that wait for their requests. Any thread.
class FaultPlan {
public:
    void add(const Fault& fault);
    void clear();

    /// The oldest fault that waits for a request like this, its count lessened by one.
    std::optional<Fault> take(const QByteArray& line);

    /// Number of faults that are not used up.
    int pending() const;

private:
    mutable std::mutex m_mutex;
    std::list<Fault> m_faults;
};

} // namespace Sim
