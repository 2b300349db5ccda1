// Byte layout of the .shp and .shx: the big-endian words of the published format, the
// little-endian fields, and the 100-byte file header shared by both files.
#pragma once

#include <cstdint>
#include <cstring>

#include "core/Error.h"
#include "core/ShapeBox.h"
#include "platform/ByteOrder.h"

namespace tnw::detail {

inline constexpr std::int32_t kShapeFileCode = 9994;
inline constexpr std::int32_t kShapeVersion = 1000;
inline constexpr std::int32_t kShapeHeaderBytes = 100;
inline constexpr std::int32_t kShapeHeaderWords = kShapeHeaderBytes / 2;
// A record header: record number and content length.
inline constexpr std::int32_t kRecordHeaderBytes = 8;
inline constexpr std::int32_t kRecordHeaderWords = kRecordHeaderBytes / 2;
// A .shx entry: offset and content length.
inline constexpr std::int32_t kIndexEntryBytes = 8;
inline constexpr std::int32_t kIndexEntryWords = kIndexEntryBytes / 2;

// Writes a non-negative int32 into four bytes, most significant first. Every big-endian word
// of a set is an offset, a length or a count, so a negative value can only be a wrapped one:
// error 6 rather than a corrupt file.
inline void LongToBigEndian(std::int32_t lValue, char* aBytes) {
    if (lValue < 0) Raise(errOverflow);
    platform::PutBE32(aBytes, static_cast<std::uint32_t>(lValue));
}

inline void PutLong(char* aBytes, std::int32_t lValue) {
    platform::PutLE32(aBytes, static_cast<std::uint32_t>(lValue));
}

inline void PutDouble(char* aBytes, double dValue) {
    platform::PutLEDouble(aBytes, dValue);
}

// Xmin, Ymin, Xmax, Ymax: 32 bytes.
inline void PutBox(char* aBytes, const ShapeBox& tBox) {
    PutDouble(aBytes, tBox.Xmin);
    PutDouble(aBytes + 8, tBox.Ymin);
    PutDouble(aBytes + 16, tBox.Xmax);
    PutDouble(aBytes + 24, tBox.Ymax);
}

// The header of a .shp or .shx as it will be on disk; all zero until a set is started.
struct ShapeHeader {
    std::int32_t lFileCode = 0;
    std::int32_t lFileLength = 0;  // in 16-bit words
    std::int32_t lVersion = 0;
    std::int32_t lShapeType = 0;
    ShapeBox tBox;

    // The 100 bytes on disk; the Z and M ranges are always zero.
    void Encode(char* aBytes) const {
        std::memset(aBytes, 0, kShapeHeaderBytes);
        LongToBigEndian(lFileCode, aBytes);
        LongToBigEndian(lFileLength, aBytes + 24);
        PutLong(aBytes + 28, lVersion);
        PutLong(aBytes + 32, lShapeType);
        PutBox(aBytes + 36, tBox);
    }
};

}  // namespace tnw::detail
