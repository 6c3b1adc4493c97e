#pragma once

#include <QByteArray>

#include <optional>

/// The 34 bytes at the end of a signed FPGA image. Numbers are little-endian. Any thread.
inline constexpr char KAVOR_SIGN[] = "KVS1";

struct FpgaTrailer {
    static constexpr int kSize = 34;
    static constexpr int kIdentifierAt = 0;
    static constexpr int kIdentifierSize = sizeof(KAVOR_SIGN) - 1;
    static constexpr int kMajorAt = 4;
    static constexpr int kMinorAt = 5;
    static constexpr int kYearAt = 6;
    static constexpr int kMonthAt = 8;
    static constexpr int kDayAt = 9;
    static constexpr int kDesignAt = 10;
    static constexpr int kDesignSize = 20; ///< its NUL included
    static constexpr int kCrcAt = 30;
    static constexpr int kCrcSize = 4;
    static_assert(kIdentifierAt + kIdentifierSize == kMajorAt && kDesignAt + kDesignSize == kCrcAt &&
                  kCrcAt + kCrcSize == kSize);

    quint8 versionMajor = 0;
    quint8 versionMinor = 0;
    quint16 year = 0;
    quint8 month = 0;
    quint8 day = 0;
    QByteArray design; ///< without its NUL, at most 20 bytes when it has none
    quint32 crc = 0;   ///< of every byte of the file but these last four
};

/// The trailer at the end of a file's bytes, its CRC unchecked; nothing when there are fewer than 34 bytes or they do
/// not start with KAVOR_SIGN.
std::optional<FpgaTrailer> readFpgaTrailer(const QByteArray& file);

/// The image with a trailer of the given fields appended; their crc is computed, a design name is cut to 19 bytes.
QByteArray withFpgaTrailer(const QByteArray& image, const FpgaTrailer& trailer);

/// CRC-32 of every byte of a file but the last four. The file holds at least four.
quint32 fpgaFileCrc(const QByteArray& file);
