#include "platform/crc32utils.h"

#include <zlib.h>

Crc32Utils* Crc32Utils::getInstance() {
    static Crc32Utils instance;
    return &instance;
}

std::uint32_t Crc32Utils::calculate_crc32(std::uint32_t crc, const void* data, std::int32_t length) const {
    if (!data || length <= 0)
        return crc;
    // zlib complements on the way in and out; the register between the pieces is kept plain.
    return ~static_cast<std::uint32_t>(
        ::crc32(~crc & 0xFFFFFFFFU, static_cast<const Bytef*>(data), static_cast<uInt>(length)));
}
