#include "common/instrument/scpireply.h"

#include <algorithm>

#include "common/instrument/scpi_words.h"

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

void ScpiReply::reset() {
    m_bytes = QByteArray();
    m_begin = 0;
    m_scanned = 0;
    m_blockLength = -1;
    m_payload = QByteArray();
}

void ScpiReply::append(QIODevice& device) {
    dropConsumed();
    const int before = m_bytes.size();
    m_bytes.resize(before + static_cast<int>(device.bytesAvailable()));
    const qint64 got = device.read(m_bytes.data() + before, m_bytes.size() - before);
    m_bytes.resize(before + static_cast<int>(std::max<qint64>(got, 0)));
}

void ScpiReply::append(const QByteArray& bytes) {
    dropConsumed();
    m_bytes.append(bytes);
}

// Keeps a service that only acknowledges, endlessly, from filling the memory; seldom enough to cost nothing.
void ScpiReply::dropConsumed() {
    constexpr int kWorthMoving = 0x10000;
    if (m_begin < kWorthMoving)
        return;
    m_bytes.remove(0, m_begin);
    m_scanned = std::max(0, m_scanned - m_begin);
    m_begin = 0;
}

ScpiReply::Progress ScpiReply::advance(bool isQuery, QString& error) {
    error.clear();
    for (;;) {
        if (isQuery && (m_blockLength >= 0 || (remaining() > 0 && m_bytes.at(m_begin) == '#'))) {
            const BlockState block = parseBlock(error);
            if (block == BlockComplete)
                return Progress::Answered;
            if (block == BlockIncomplete)
                return Progress::Waiting;
            if (!error.isEmpty())
                return Progress::Failed;
        }
        QByteArray line;
        const bool complete = tryExtractLine(line);
        if (line.size() > kMaximumSize || (!complete && remaining() > kMaximumSize)) {
            error = QStringLiteral("reply-too-large");
            return Progress::Failed;
        }
        if (!complete)
            return Progress::Waiting;
        line = line.trimmed();
        const LineClass kind = classifyLine(line);
        if (kind == Refused) {
            error = QString::fromUtf8(line);
            return Progress::Failed;
        }
        const bool decides = isQuery ? kind == Other && !line.isEmpty() : kind == Acknowledged;
        if (decides) {
            m_payload = line;
            return Progress::Answered;
        }
    }
}

QByteArray ScpiReply::takePayload() {
    QByteArray payload;
    payload.swap(m_payload);
    return payload;
}

bool ScpiReply::tryExtractLine(QByteArray& line) {
    const int end = m_bytes.indexOf('\n', std::max(m_begin, m_scanned));
    if (end < 0) {
        m_scanned = m_bytes.size();
        return false;
    }
    line = m_bytes.mid(m_begin, end + 1 - m_begin);
    m_begin = end + 1;
    if (m_begin == m_bytes.size()) {
        m_bytes.clear();
        m_begin = 0;
        m_scanned = 0;
    }
    return true;
}

ScpiReply::LineClass ScpiReply::classifyLine(const QByteArray& line) {
    if (line == Scpi::Acknowledge)
        return Acknowledged;
    return line.startsWith(Scpi::Refusal) ? Refused : Other;
}

ScpiReply::BlockState ScpiReply::parseBlock(QString& error) {
    if (m_blockLength >= 0)
        return takeBlock();
    if (remaining() < 2)
        return BlockIncomplete;
    const char digitCount = m_bytes.at(m_begin + 1);
    if (!isDigit(digitCount)) {
        error = QStringLiteral("invalid-block-format(nd)");
        return NoBlock;
    }
    if (digitCount == '0')
        return NoBlock; // a block of unknown length is not supported: what follows is read as a line
    const int digits = digitCount - '0';
    const QByteArray lengthText = m_bytes.mid(m_begin + 2, digits);
    if (!std::all_of(lengthText.begin(), lengthText.end(), isDigit)) {
        error = QStringLiteral("invalid-block-format(len-digit)");
        return NoBlock;
    }
    if (lengthText.size() < digits)
        return BlockIncomplete;
    bool converted = false;
    const qint64 length = lengthText.toLongLong(&converted);
    if (!converted) {
        error = QStringLiteral("invalid-block-len");
        return NoBlock;
    }
    if (length > kMaximumSize) {
        error = QStringLiteral("block-len-out-of-range");
        return NoBlock;
    }
    m_blockLength = static_cast<int>(length);
    m_bytes.remove(0, m_begin + 2 + digits);
    m_begin = 0;
    m_bytes.reserve(m_blockLength + 2); // the line end may come along
    return takeBlock();
}

ScpiReply::BlockState ScpiReply::takeBlock() {
    if (m_bytes.size() < m_blockLength)
        return BlockIncomplete;
    m_payload.swap(m_bytes);
    m_payload.truncate(m_blockLength);
    m_bytes.clear();
    m_blockLength = -1;
    return BlockComplete;
}
