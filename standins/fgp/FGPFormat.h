// The main file of an FGP set, shared by its reader and writer (docs/fgp-format.md): a 32-byte
// header, the point records (every vertex of the regions and lines, then the loose points),
// then one 12-byte entry per region and per line. Little-endian throughout.
#pragma once

#include <cstdint>

#include "platform/ByteOrder.h"

namespace tnw::standins::fgp {

inline constexpr unsigned char kMagic[8] = {0x89, 'F', 'G', 'P', '\r', '\n', 0x1A, '\n'};
inline constexpr std::uint32_t kVersion = 1;
inline constexpr std::int64_t kHeaderBytes = 32;
inline constexpr std::int64_t kPointBytes = 52;
inline constexpr std::int64_t kPartBytes = 12;

// Header fields by offset.
inline constexpr int kAtVersion = 8;
inline constexpr int kAtRegionCount = 12;
inline constexpr int kAtLineCount = 16;
inline constexpr int kAtPointCount = 20;
inline constexpr int kAtVertexCount = 24;

// One point record.
struct PointData {
    std::int32_t lFSNRecord = 0;
    std::int32_t lAttributeID = 0;
    std::int32_t lRegionID = 0;
    double dTime = 0.0;
    double dLongitude = 0.0;
    double dLatitude = 0.0;
    double dAltitude = 0.0;
    double dHeading = 0.0;
};

inline std::int64_t GetLE64(const unsigned char* p) {
    return static_cast<std::int64_t>(platform::GetLE32(p) |
                                     static_cast<std::uint64_t>(platform::GetLE32(p + 4)) << 32);
}

inline void PutLE64(char* p, std::int64_t l) {
    const auto u = static_cast<std::uint64_t>(l);
    platform::PutLE32(p, static_cast<std::uint32_t>(u));
    platform::PutLE32(p + 4, static_cast<std::uint32_t>(u >> 32));
}

inline PointData DecodePoint(const unsigned char* p) {
    return {static_cast<std::int32_t>(platform::GetLE32(p)),
            static_cast<std::int32_t>(platform::GetLE32(p + 4)),
            static_cast<std::int32_t>(platform::GetLE32(p + 8)),
            platform::GetLEDouble(p + 12),
            platform::GetLEDouble(p + 20),
            platform::GetLEDouble(p + 28),
            platform::GetLEDouble(p + 36),
            platform::GetLEDouble(p + 44)};
}

inline void EncodePoint(const PointData& t, char* p) {
    platform::PutLE32(p, static_cast<std::uint32_t>(t.lFSNRecord));
    platform::PutLE32(p + 4, static_cast<std::uint32_t>(t.lAttributeID));
    platform::PutLE32(p + 8, static_cast<std::uint32_t>(t.lRegionID));
    platform::PutLEDouble(p + 12, t.dTime);
    platform::PutLEDouble(p + 20, t.dLongitude);
    platform::PutLEDouble(p + 28, t.dLatitude);
    platform::PutLEDouble(p + 36, t.dAltitude);
    platform::PutLEDouble(p + 44, t.dHeading);
}

}  // namespace tnw::standins::fgp
