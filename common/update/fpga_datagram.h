#pragma once

#include <QtGlobal>

#include <optional>

/// Datagrams between the panel and the FPGA boards. Each starts with the same header; block number and length are
/// big-endian, the counter is little-endian.
namespace FpgaWire {

inline constexpr char kMagic[] = "KVPD";
inline constexpr int kMagicSize = sizeof(kMagic) - 1;
inline constexpr int kBlockAt = 4;
inline constexpr int kLengthAt = 6;
inline constexpr int kOnesAt = 8;
inline constexpr int kOnesSize = 6;
inline constexpr int kStateAt = 14; ///< zero, but in the end mark of a burn
inline constexpr int kCounterAt = 16;
inline constexpr int kHeaderSize = 22;
inline constexpr int kBlockSize = 1024;
inline constexpr int kLargestDatagram = kHeaderSize + kBlockSize;
inline constexpr quint16 kAllOnes = 0xFFFF; ///< as a length: no payload; in a status: burnt and verified
inline constexpr int kMostBlocks = 65534;   ///< so that the end marker's number still fits
inline constexpr qint64 kLargestImage = qint64{kMostBlocks} * kBlockSize;
static_assert(kMagicSize == kBlockAt && kOnesAt + kOnesSize == kStateAt && kLargestDatagram == 1046);

/// Writes a header of kHeaderSize bytes.
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
