#pragma once

#include <QByteArray>
#include <optional>

namespace Sim {

/// One request as it came.
struct Request {
    QByteArray line;    ///< without its line end; of an upload everything, its bytes included
    QByteArray header;  ///< of an upload: its header without colon; otherwise empty
    QByteArray block;   ///< of an upload: the bytes alone
    QByteArray refusal; ///< set when the request cannot even be read
};

/// Cuts the received bytes into requests: lines that end in LF or CR LF, and step uploads (":LIST:DATA #...",
/// ":PATT:DATA #..."), whose bytes are counted and may be anything. Empty lines are skipped. One connection each.
class RequestReader {
public:
    static constexpr int LongestLine = 64 * 1024;
    static constexpr int LargestBlock = 16 * 1024 * 1024;

    void add(const QByteArray& bytes) { m_buffer += bytes; }

    /// The next whole request; none while more bytes are needed.
    std::optional<Request> next();

private:
    enum class Upload { No, Incomplete, Yes };
    Upload takeUpload(Request& request);

    QByteArray m_buffer;
};

} // namespace Sim
