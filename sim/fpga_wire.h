#pragma once

#include <QByteArray>

namespace Sim {

/// The host's datagram as a board sees it. The board checks every field of the header, since a real one may.
struct FpgaRequest {
    enum Kind { Malformed, Init, Data, Eof };

    Kind kind = Malformed;
    int block = 0;
    quint32 imageSize = 0; ///< of an INIT
    QByteArray payload;    ///< of DATA

    static constexpr int HeaderSize = 22;
    static constexpr int BlockSize = 1024;

    static FpgaRequest parse(const QByteArray& datagram);
};

/// A board's acknowledgement of a block.
QByteArray fpgaAcknowledgement(int block);

/// A board's progress, in bytes of the image.
QByteArray fpgaProgress(quint32 bytes);

/// A board's end mark: 0xFFFF at offset 6 or at offset 14.
QByteArray fpgaEndMark(bool inState);

} // namespace Sim
