#include "sim/fpga_wire.h"

#include <QtEndian>

namespace Sim {
namespace {

const QByteArray Magic("KVPD");

QByteArray header() {
    return Magic + QByteArray(FpgaRequest::HeaderSize - Magic.size(), '\0');
}

bool hasFixedFields(const QByteArray& datagram) {
    return datagram.startsWith(Magic) && datagram.mid(8, 6) == QByteArray(6, '\xFF') &&
           datagram.mid(14, 2) == QByteArray(2, '\0') && datagram.mid(20, 2) == QByteArray(2, '\0');
}

} // namespace

FpgaRequest FpgaRequest::parse(const QByteArray& datagram) {
    FpgaRequest request;
    if (datagram.size() < HeaderSize || !hasFixedFields(datagram))
        return request;
    const char* at = datagram.constData();
    request.block = qFromBigEndian<quint16>(at + 4);
    const int length = qFromBigEndian<quint16>(at + 6);
    const quint32 counter = qFromLittleEndian<quint32>(at + 16);
    request.payload = datagram.mid(HeaderSize);
    if (length == 0xFFFF && request.payload.isEmpty()) {
        if (request.block == 0 && counter > 0)
            request.kind = Init;
        else if (request.block > 1 && counter == 0)
            request.kind = Eof;
        request.imageSize = counter;
    } else if (request.block > 0 && length > 0 && length <= BlockSize && length == request.payload.size() &&
               counter == 0) {
        request.kind = Data;
    }
    return request;
}

QByteArray fpgaAcknowledgement(int block) {
    QByteArray datagram = header();
    qToBigEndian(static_cast<quint16>(block), datagram.data() + 4);
    return datagram;
}

QByteArray fpgaProgress(quint32 bytes) {
    QByteArray datagram = header();
    qToLittleEndian(bytes, datagram.data() + 16);
    return datagram;
}

QByteArray fpgaEndMark(bool inState) {
    QByteArray datagram = header();
    qToBigEndian(quint16{0xFFFF}, datagram.data() + (inState ? 14 : 6));
    return datagram;
}

} // namespace Sim
