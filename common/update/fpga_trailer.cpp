#include "common/update/fpga_trailer.h"

#include "platform/crc32utils.h"

#include <QtEndian>

#include <algorithm>
#include <array>

std::optional<FpgaTrailer> readFpgaTrailer(const QByteArray& file) {
    if (file.size() < FpgaTrailer::kSize)
        return std::nullopt;
    const char* at = file.constData() + file.size() - FpgaTrailer::kSize;
    if (qstrncmp(at, KAVOR_SIGN, FpgaTrailer::kIdentifierSize) != 0)
        return std::nullopt;
    FpgaTrailer trailer;
    trailer.versionMajor = qFromLittleEndian<quint8>(at + FpgaTrailer::kMajorAt);
    trailer.versionMinor = qFromLittleEndian<quint8>(at + FpgaTrailer::kMinorAt);
    trailer.year = qFromLittleEndian<quint16>(at + FpgaTrailer::kYearAt);
    trailer.month = qFromLittleEndian<quint8>(at + FpgaTrailer::kMonthAt);
    trailer.day = qFromLittleEndian<quint8>(at + FpgaTrailer::kDayAt);
    const char* design = at + FpgaTrailer::kDesignAt;
    trailer.design = QByteArray(design, static_cast<int>(qstrnlen(design, FpgaTrailer::kDesignSize)));
    trailer.crc = qFromLittleEndian<quint32>(at + FpgaTrailer::kCrcAt);
    return trailer;
}

QByteArray withFpgaTrailer(const QByteArray& image, const FpgaTrailer& trailer) {
    std::array<char, FpgaTrailer::kSize> bytes{};
    char* at = bytes.data();
    const QByteArray design = trailer.design.left(FpgaTrailer::kDesignSize - 1);
    std::copy_n(KAVOR_SIGN, FpgaTrailer::kIdentifierSize, at);
    qToLittleEndian(trailer.versionMajor, at + FpgaTrailer::kMajorAt);
    qToLittleEndian(trailer.versionMinor, at + FpgaTrailer::kMinorAt);
    qToLittleEndian(trailer.year, at + FpgaTrailer::kYearAt);
    qToLittleEndian(trailer.month, at + FpgaTrailer::kMonthAt);
    qToLittleEndian(trailer.day, at + FpgaTrailer::kDayAt);
    std::copy(design.begin(), design.end(), at + FpgaTrailer::kDesignAt);
    QByteArray file = image;
    file.append(at, FpgaTrailer::kSize);
    qToLittleEndian(fpgaFileCrc(file), at + FpgaTrailer::kCrcAt);
    file.replace(file.size() - FpgaTrailer::kCrcSize, FpgaTrailer::kCrcSize, at + FpgaTrailer::kCrcAt,
                 FpgaTrailer::kCrcSize);
    return file;
}

quint32 fpgaFileCrc(const QByteArray& file) {
    const Crc32Utils* utils = Crc32Utils::getInstance();
    return utils->crc32_signoff(
        utils->calculate_crc32(utils->crc32_init(), file.constData(), file.size() - FpgaTrailer::kCrcSize));
}
