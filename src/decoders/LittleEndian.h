// Little-endian numbers from file bytes, put together with shifts so that the host's own byte
// order never matters.
#pragma once

#include <bit>
#include <cstdint>

namespace tnw::decoders {

inline std::uint16_t GetLE16(const unsigned char* p) {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

inline std::uint32_t GetLE32(const unsigned char* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

inline double GetLEDouble(const unsigned char* p) {
    std::uint64_t u = 0;
    for (int i = 7; i >= 0; --i)
        u = (u << 8) | p[i];
    return std::bit_cast<double>(u);
}

}  // namespace tnw::decoders
