#include "common/update/fpga_trailer.h"

#include "platform/crc32utils.h"

#include <QtEndian>
#include <algorithm>
#include <array>

std::optional<FpgaTrailer> readFpgaTrailer(const QByteArray& file) {
    if (file.size() < FpgaTrailer::Size)
        return std::nullopt;
    const char* at = file.constData() + file.size() - FpgaTrailer::Size;
    if (qstrncmp(at, KAVOR_SIGN, FpgaTrailer::IdentifierSize) != 0)
        return std::nullopt;
    FpgaTrailer trailer;
    trailer.versionMajor = qFromLittleEndian<quint8>(at + FpgaTrailer::MajorAt);
    trailer.versionMinor = qFromLittleEndian<quint8>(at + FpgaTrailer::MinorAt);
    trailer.year = qFromLittleEndian<quint16>(at + FpgaTrailer::YearAt);
    trailer.month = qFromLittleEndian<quint8>(at + FpgaTrailer::MonthAt);
    trailer.day = qFromLittleEndian<quint8>(at + FpgaTrailer::DayAt);
    const char* design = at + FpgaTrailer::DesignAt;
    trailer.design = QByteArray(design, static_cast<int>(qstrnlen(design, FpgaTrailer::DesignSize)));
    trailer.crc = qFromLittleEndian<quint32>(at + FpgaTrailer::CrcAt);
    return trailer;
}

QByteArray withFpgaTrailer(const QByteArray& image, const FpgaTrailer& trailer) {
    std::array<char, FpgaTrailer::Size> bytes{};
    char* at = bytes.data();
    const QByteArray design = trailer.design.left(FpgaTrailer::DesignSize - 1);
    std::copy_n(KAVOR_SIGN, FpgaTrailer::IdentifierSize, at);
    qToLittleEndian(trailer.versionMajor, at + FpgaTrailer::MajorAt);
    qToLittleEndian(trailer.versionMinor, at + FpgaTrailer::MinorAt);
    qToLittleEndian(trailer.year, at + FpgaTrailer::YearAt);
    qToLittleEndian(trailer.month, at + FpgaTrailer::MonthAt);
    qToLittleEndian(trailer.day, at + FpgaTrailer::DayAt);
    std::copy(design.begin(), design.end(), at + FpgaTrailer::DesignAt);
    QByteArray file = image;
    file.append(at, FpgaTrailer::Size);
    qToLittleEndian(fpgaFileCrc(file), at + FpgaTrailer::CrcAt);
    file.replace(file.size() - FpgaTrailer::CrcSize, FpgaTrailer::CrcSize, at + FpgaTrailer::CrcAt,
                 FpgaTrailer::CrcSize);
    return file;
}

quint32 fpgaFileCrc(const QByteArray& file) {
    const Crc32Utils* utils = Crc32Utils::getInstance();
    return utils->crc32_signoff(
        utils->calculate_crc32(utils->crc32_init(), file.constData(), file.size() - FpgaTrailer::CrcSize));
}
