#include "sim/request_reader.h"

#include "sim/scpi_text.h"

#include <algorithm>
#include <array>

namespace Sim {
namespace {

constexpr std::array<const char*, 2> UploadHeaders{":LIST:DATA", ":PATT:DATA"};
constexpr int LongestHeader = 32;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Where the "#" of an upload stands in the bytes: behind the header and blanks. -1: this is no upload.
int uploadMark(const QByteArray& bytes) {
    const int mark = bytes.left(LongestHeader).indexOf('#');
    if (mark < 1 || bytes.at(mark - 1) != ' ')
        return -1;
    const QByteArray header = splitLine(bytes.left(mark)).header;
    const bool known = std::any_of(UploadHeaders.begin(), UploadHeaders.end(),
                                   [&header](const char* upload) { return headerMatches(upload, header); });
    return known ? mark : -1;
}

} // namespace

std::optional<Request> RequestReader::next() {
    int blanks = 0;
    while (blanks < m_buffer.size() && QByteArray("\r\n \t").contains(m_buffer.at(blanks)))
        ++blanks;
    m_buffer.remove(0, blanks);
    Request request;
    switch (takeUpload(request)) {
    case Upload::Yes:
        return request;
    case Upload::Incomplete:
        return std::nullopt;
    case Upload::No:
        break;
    }
    const int end = m_buffer.indexOf('\n');
    if (end < 0 && m_buffer.size() <= LongestLine)
        return std::nullopt;
    if (end < 0) {
        request.line = m_buffer;
        request.refusal = refusal(InputOverrun, "Line too long");
        m_buffer.clear();
        return request;
    }
    request.line = m_buffer.left(end);
    m_buffer.remove(0, end + 1);
    if (request.line.endsWith('\r'))
        request.line.chop(1);
    return request;
}

RequestReader::Upload RequestReader::takeUpload(Request& request) {
    const int mark = uploadMark(m_buffer);
    if (mark < 0)
        return Upload::No;
    if (m_buffer.size() < mark + 2)
        return Upload::Incomplete;
    // "#0", a block of unknown length, and anything that is no length at all are read, and refused, as a line.
    const int digits = m_buffer.at(mark + 1) - '0';
    if (digits < 1 || digits > 9)
        return Upload::No;
    const QByteArray length = m_buffer.mid(mark + 2, digits);
    if (!std::all_of(length.begin(), length.end(), isDigit))
        return Upload::No;
    if (length.size() < digits)
        return Upload::Incomplete;
    if (length.toLongLong() > LargestBlock)
        return Upload::No;
    const int begin = mark + 2 + digits;
    const int end = begin + length.toInt();
    if (m_buffer.size() <= end || (m_buffer.at(end) == '\r' && m_buffer.size() <= end + 1))
        return Upload::Incomplete;
    request.header = splitLine(m_buffer.left(mark)).header;
    request.block = m_buffer.mid(begin, end - begin);
    request.line = m_buffer.left(end);
    m_buffer.remove(0, end);
    if (m_buffer.startsWith("\r\n"))
        m_buffer.remove(0, 2);
    else if (m_buffer.startsWith('\n'))
        m_buffer.remove(0, 1);
    else
        request.refusal = refusal(InvalidBlock, "Block longer than announced");
    return Upload::Yes;
}

} // namespace Sim
