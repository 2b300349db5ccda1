// The dBase III table of a shapefile set: its header, one field descriptor per output column,
// and the text of each value fitted to the field's width.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/GISLib.h"
#include "platform/File.h"

namespace tnw::detail {

inline constexpr std::int32_t kDbfHeaderBytes = 32;
inline constexpr std::int32_t kDbfFieldBytes = 32;
inline constexpr std::uint8_t kDbfHeaderEnd = 0x0D;  // before the first record
inline constexpr std::uint8_t kDbfFileEnd = 0x1A;    // after the last record
inline constexpr char kDbfRecordFlag = 0x20;         // a record that is not deleted
// Header and record lengths are signed 16-bit fields on disk.
inline constexpr std::int32_t kDbfMaxLength = 32767;

// The header as it will be on disk; all zero until a table is started.
struct DBFHeader {
    std::uint8_t byVersion = 0;
    std::uint8_t aDate[3] = {0, 0, 0};  // year - 1900, month, day
    std::int32_t lRecordCount = 0;
    std::int16_t iHeaderLength = 0;  // the header, the descriptors and the 0x0D
    std::int16_t iRecordLength = 0;  // the flag byte and the fields

    // Version 3, the fixed date 31 March 1995, no records, no fields.
    void Start();
    // The 32 bytes on disk.
    void Encode(char* aBytes) const;
};

// "C" for text, "L" for a Boolean, "D" for a date, "N" for anything else.
char FieldTypeLetter(std::int32_t lType);

// A column named "geometry" in any case has no field: its value is the record's shape.
bool IsGeometryColumn(const tnwColumn& oColumn);

// The field's name as the table holds it: the first 11 bytes of the key in the code page.
std::string FieldName(const tnwColumn& oColumn);
// sName made unlike each of vTaken, compared without case, within 11 bytes: it keeps as many
// of its first bytes as leave room for "_1", "_2"... Names from FieldName stay narrow text.
std::string UniqueFieldName(const std::string& sName, const std::vector<std::string>& vTaken);

// Appends the column's 32-byte descriptor, named sName (cut to 11 bytes), to oFile and adds
// it to the header's lengths. A Size or Precision outside 0 to 255, or a header or record
// length past 32767, is error 6, raised before anything is written.
void WriteFieldDescriptor(platform::OutputFile& oFile, DBFHeader& tHeader, const tnwColumn& oColumn,
                          std::string_view sName);

// Appends the column's current value to sRecord, exactly Size bytes. With bBlankEmpty an empty
// value is a blank field. With bFitNumbers a double is first rounded half to even to the
// column's Precision, and a number whose text is wider than the field (a leading blank aside) is
// error 6 rather than cut on the left. False when the value's text did not fit and was cut.
bool WriteFieldValue(std::string& sRecord, const tnwColumn& oColumn, bool bBlankEmpty = false,
                     bool bFitNumbers = false);

}  // namespace tnw::detail
