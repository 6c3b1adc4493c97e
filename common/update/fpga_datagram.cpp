#include "common/update/fpga_datagram.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace FpgaWire {

void writeHeader(char* to, quint16 block, quint16 length, quint32 counter) {
    std::fill_n(to, kHeaderSize, '\0');
    std::copy_n(kMagic, kMagicSize, to);
    qToBigEndian(block, to + kBlockAt);
    qToBigEndian(length, to + kLengthAt);
    std::fill_n(to + kOnesAt, kOnesSize, '\xFF');
    qToLittleEndian(counter, to + kCounterAt);
}

std::optional<Reply> readReply(const char* data, qint64 size) {
    if (size < kHeaderSize || std::memcmp(data, kMagic, kMagicSize) != 0)
        return std::nullopt;
    Reply reply;
    reply.block = qFromBigEndian<quint16>(data + kBlockAt);
    reply.ended =
        qFromBigEndian<quint16>(data + kLengthAt) == kAllOnes || qFromBigEndian<quint16>(data + kStateAt) == kAllOnes;
    reply.bytesDone = qFromLittleEndian<quint32>(data + kCounterAt);
    return reply;
}

} // namespace FpgaWire
