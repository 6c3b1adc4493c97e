#include "common/update/fpga_datagram.h"

#include <QtEndian>
#include <algorithm>
#include <cstring>

namespace FpgaWire {

void writeHeader(char* to, quint16 block, quint16 length, quint32 counter) {
    std::fill_n(to, HeaderSize, '\0');
    std::copy_n(Magic, MagicSize, to);
    qToBigEndian(block, to + BlockAt);
    qToBigEndian(length, to + LengthAt);
    std::fill_n(to + OnesAt, OnesSize, '\xFF');
    qToLittleEndian(counter, to + CounterAt);
}

std::optional<Reply> readReply(const char* data, qint64 size) {
    if (size < HeaderSize || std::memcmp(data, Magic, MagicSize) != 0)
        return std::nullopt;
    Reply reply;
    reply.block = qFromBigEndian<quint16>(data + BlockAt);
    reply.ended =
        qFromBigEndian<quint16>(data + LengthAt) == AllOnes || qFromBigEndian<quint16>(data + StateAt) == AllOnes;
    reply.bytesDone = qFromLittleEndian<quint32>(data + CounterAt);
    return reply;
}

} // namespace FpgaWire
