// Fixed-order numbers in file bytes, put together with shifts so that the host's own byte order
// never matters. The shapefile family is little-endian but for the big-endian words of its
// published layout.
#pragma once

#include <bit>
#include <cstdint>

namespace tnw::platform {

inline std::uint16_t GetLE16(const unsigned char* p) {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

inline std::uint32_t GetLE32(const unsigned char* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

inline std::uint32_t GetBE32(const unsigned char* p) {
    return (static_cast<std::uint32_t>(p[0]) << 24) | (static_cast<std::uint32_t>(p[1]) << 16) |
           (static_cast<std::uint32_t>(p[2]) << 8) | static_cast<std::uint32_t>(p[3]);
}

inline double GetLEDouble(const unsigned char* p) {
    std::uint64_t u = 0;
    for (int i = 7; i >= 0; --i)
        u = (u << 8) | p[i];
    return std::bit_cast<double>(u);
}

inline void PutLE32(char* p, std::uint32_t u) {
    p[0] = static_cast<char>(u);
    p[1] = static_cast<char>(u >> 8);
    p[2] = static_cast<char>(u >> 16);
    p[3] = static_cast<char>(u >> 24);
}

inline void PutBE32(char* p, std::uint32_t u) {
    p[0] = static_cast<char>(u >> 24);
    p[1] = static_cast<char>(u >> 16);
    p[2] = static_cast<char>(u >> 8);
    p[3] = static_cast<char>(u);
}

inline void PutLEDouble(char* p, double d) {
    const auto u = std::bit_cast<std::uint64_t>(d);
    for (int i = 0; i < 8; ++i)
        p[i] = static_cast<char>(u >> (8 * i));
}

}  // namespace tnw::platform
