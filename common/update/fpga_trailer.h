#pragma once

#include <QByteArray>
#include <optional>

/// The 34 bytes at the end of a signed FPGA image. Numbers are little-endian. Any thread.
inline constexpr char KAVOR_SIGN[] = "KVS1";

struct FpgaTrailer {
    static constexpr int Size = 34;
    static constexpr int IdentifierAt = 0;
    static constexpr int IdentifierSize = sizeof(KAVOR_SIGN) - 1;
    static constexpr int MajorAt = 4;
    static constexpr int MinorAt = 5;
    static constexpr int YearAt = 6;
    static constexpr int MonthAt = 8;
    static constexpr int DayAt = 9;
    static constexpr int DesignAt = 10;
    static constexpr int DesignSize = 20; ///< its NUL included
    static constexpr int CrcAt = 30;
    static constexpr int CrcSize = 4;
    static_assert(IdentifierAt + IdentifierSize == MajorAt && DesignAt + DesignSize == CrcAt &&
                  CrcAt + CrcSize == Size);

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
