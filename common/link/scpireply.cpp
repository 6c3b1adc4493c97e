#include "common/link/scpireply.h"

#include "common/wire/scpi_words.h"

#include <QBuffer>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

template <typename Buffer>
void readTo(Buffer& buffer, int count, QIODevice& device) {
    const auto before = buffer.size();
    buffer.resize(before + static_cast<decltype(before)>(count));
    const qint64 got = device.read(buffer.data() + before, count);
    buffer.resize(before + static_cast<decltype(before)>(std::max<qint64>(got, 0)));
}

// ASCII without a NUL, eight words at a time: a reply may have megabytes. A byte that is neither shows in its highest
// bit, of itself or, for a NUL, when one is taken from each byte.
bool isPlain(const char* text, std::size_t size) {
    constexpr std::uint64_t Ones = 0x0101010101010101U;
    std::array<std::uint64_t, 8> words{};
    std::array<std::uint64_t, 8> seen{};
    std::size_t at = 0;
    for (; at + sizeof words <= size; at += sizeof words) {
        std::memcpy(words.data(), text + at, sizeof words);
        for (std::size_t i = 0; i < words.size(); ++i)
            seen[i] |= words[i] | (words[i] - Ones);
    }
    const bool wordsArePlain =
        std::all_of(seen.begin(), seen.end(), [](std::uint64_t bits) { return (bits & (Ones << 7)) == 0; });
    return wordsArePlain &&
           std::all_of(text + at, text + size, [](char c) { return static_cast<unsigned char>(c - 1) < 0x7F; });
}

} // namespace

void ScpiReply::reset() {
    m_bytes = QByteArray();
    m_begin = 0;
    m_scanned = 0;
    m_blockLength = -1;
    m_payload = std::string();
    m_payloadIsPlain = true;
}

void ScpiReply::append(QIODevice& device) {
    dropConsumed();
    int available = static_cast<int>(device.bytesAvailable());
    const int ofBlock = std::min(available, m_blockLength - static_cast<int>(m_payload.size()));
    if (m_blockLength >= 0 && ofBlock > 0) {
        const std::size_t before = m_payload.size();
        readTo(m_payload, ofBlock, device);
        notePayload(before);
        available -= ofBlock;
    }
    if (available > 0)
        readTo(m_bytes, available, device);
}

void ScpiReply::append(const QByteArray& bytes) {
    QBuffer device;
    device.setData(bytes);
    device.open(QIODevice::ReadOnly);
    append(device);
}

// Keeps a service that only acknowledges, endlessly, from filling the memory; seldom enough to cost nothing.
void ScpiReply::dropConsumed() {
    constexpr int WorthMoving = 0x10000;
    if (m_begin < WorthMoving)
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
        if (line.size() > MaximumSize || (!complete && remaining() > MaximumSize)) {
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
            m_payload = line.toStdString();
            notePayload(0);
            return Progress::Answered;
        }
    }
}

std::string ScpiReply::takePayload() {
    std::string payload = std::exchange(m_payload, std::string());
    if (m_payloadIsPlain)
        return payload;
    return QString::fromUtf8(payload.data(), static_cast<int>(strnlen(payload.data(), payload.size()))).toStdString();
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
        return blockState();
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
    if (length > MaximumSize) {
        error = QStringLiteral("block-len-out-of-range");
        return NoBlock;
    }
    m_blockLength = static_cast<int>(length);
    m_begin += 2 + digits;
    const int come = std::min(remaining(), m_blockLength);
    m_payload.reserve(static_cast<std::size_t>(m_blockLength));
    m_payload.assign(m_bytes.constData() + m_begin, static_cast<std::size_t>(come));
    m_begin += come;
    notePayload(0);
    return blockState();
}

ScpiReply::BlockState ScpiReply::blockState() {
    if (static_cast<int>(m_payload.size()) < m_blockLength)
        return BlockIncomplete;
    m_blockLength = -1;
    return BlockComplete;
}

void ScpiReply::notePayload(std::size_t from) {
    m_payloadIsPlain = m_payloadIsPlain && isPlain(m_payload.data() + from, m_payload.size() - from);
}
