#pragma once

#include <QtGlobal>
#include <optional>

/// Datagrams between the panel and the FPGA boards. Each starts with the same header; block number and length are
/// big-endian, the counter is little-endian.
namespace FpgaWire {

inline constexpr char Magic[] = "KVPD";
inline constexpr int MagicSize = sizeof(Magic) - 1;
inline constexpr int BlockAt = 4;
inline constexpr int LengthAt = 6;
inline constexpr int OnesAt = 8;
inline constexpr int OnesSize = 6;
inline constexpr int StateAt = 14; ///< zero, but in the end mark of a burn
inline constexpr int CounterAt = 16;
inline constexpr int HeaderSize = 22;
inline constexpr int BlockSize = 1024;
inline constexpr int LargestDatagram = HeaderSize + BlockSize;
inline constexpr quint16 AllOnes = 0xFFFF; ///< as a length: no payload; in a status: burnt and verified
inline constexpr int MostBlocks = 65534;   ///< so that the end marker's number still fits
inline constexpr qint64 LargestImage = qint64{MostBlocks} * BlockSize;
static_assert(MagicSize == BlockAt && OnesAt + OnesSize == StateAt && LargestDatagram == 1046);

/// Writes a header of HeaderSize bytes.
void writeHeader(char* to, quint16 block, quint16 length, quint32 counter);

/// What a board says: an acknowledgement in the transfer, a status while it burns. Which of the two it is does not show
/// in the datagram.
struct Reply {
    quint16 block = 0;
    bool ended = false;
    quint32 bytesDone = 0;
};

/// Nothing for a datagram without the magic or shorter than a header.
std::optional<Reply> readReply(const char* data, qint64 size);

} // namespace FpgaWire
