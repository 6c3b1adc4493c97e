#pragma once

#include <cstdint>

/// CRC-32 (IEEE 802.3, reflected, final complement) in pieces: start with crc32_init, run the register through
/// calculate_crc32 for each piece, end with crc32_signoff. Holds no state; any thread.
class Crc32Utils {
public:
    /// Never null.
    static Crc32Utils* getInstance();

    std::uint32_t crc32_init() const { return 0xFFFFFFFFU; }

    /// Returns the register after `length` bytes; unchanged for no data or a length of 0 or less.
    std::uint32_t calculate_crc32(std::uint32_t crc, const void* data, std::int32_t length) const;

    std::uint32_t crc32_signoff(std::uint32_t crc) const { return ~crc; }

private:
    Crc32Utils() = default;
};
