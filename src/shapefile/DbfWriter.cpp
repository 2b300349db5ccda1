#include "shapefile/DbfWriter.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "core/Error.h"
#include "core/NumberText.h"
#include "core/SerialDate.h"
#include "platform/CodePage.h"
#include "shapefile/ShapeFormat.h"

namespace tnw::detail {

namespace {

constexpr std::size_t kDbfNameBytes = 11;

void PutShort(char* aBytes, std::int16_t iValue) {
    const auto u = static_cast<std::uint16_t>(iValue);
    aBytes[0] = static_cast<char>(u);
    aBytes[1] = static_cast<char>(u >> 8);
}

// A field's Size or Precision: one byte on disk.
std::int32_t FieldByte(std::int16_t iValue) {
    if (iValue < 0 || iValue > 255) Raise(errOverflow);
    return iValue;
}

// Left-aligned: cut on the right, filled with blanks on the right.
void AppendLeft(std::string& sRecord, std::string_view sText, std::size_t nSize) {
    const std::size_t nAt = sRecord.size();
    sRecord.resize(nAt + nSize, ' ');
    std::memcpy(sRecord.data() + nAt, sText.data(), std::min(sText.size(), nSize));
}

// Right-aligned: cut on the left, filled with blanks on the left.
void AppendRight(std::string& sRecord, std::string_view sText, std::size_t nSize) {
    const std::size_t nAt = sRecord.size();
    const std::size_t nTaken = std::min(sText.size(), nSize);
    sRecord.resize(nAt + nSize, ' ');
    std::memcpy(sRecord.data() + nAt + nSize - nTaken, sText.data() + sText.size() - nTaken,
                nTaken);
}

}  // namespace

void DBFHeader::Start() {
    byVersion = 0x03;
    aDate[0] = 0x5F;
    aDate[1] = 0x03;
    aDate[2] = 0x1F;
    lRecordCount = 0;
    iHeaderLength = kDbfHeaderBytes + 1;
    iRecordLength = 1;
}

void DBFHeader::Encode(char* aBytes) const {
    std::memset(aBytes, 0, kDbfHeaderBytes);
    aBytes[0] = static_cast<char>(byVersion);
    aBytes[1] = static_cast<char>(aDate[0]);
    aBytes[2] = static_cast<char>(aDate[1]);
    aBytes[3] = static_cast<char>(aDate[2]);
    PutLong(aBytes + 4, lRecordCount);
    PutShort(aBytes + 8, iHeaderLength);
    PutShort(aBytes + 10, iRecordLength);
}

char FieldTypeLetter(std::int32_t lType) {
    switch (lType) {
        case vtString:
            return 'C';
        case vtBoolean:
            return 'L';
        case vtDate:
            return 'D';
        default:
            return 'N';
    }
}

bool IsGeometryColumn(const tnwColumn& oColumn) {
    return FoldCaseEquals(oColumn.Name(), "geometry");
}

void WriteFieldDescriptor(platform::OutputFile& oFile, DBFHeader& tHeader,
                          const tnwColumn& oColumn) {
    if (IsGeometryColumn(oColumn)) return;
    const std::int32_t lSize = FieldByte(oColumn.Size());
    const std::int32_t lPrecision = FieldByte(oColumn.Precision());
    const std::int32_t lHeaderLength = tHeader.iHeaderLength + kDbfFieldBytes;
    const std::int32_t lRecordLength = tHeader.iRecordLength + lSize;
    if (lHeaderLength > kDbfMaxLength || lRecordLength > kDbfMaxLength) Raise(errOverflow);

    char aField[kDbfFieldBytes] = {};
    // Eleven bytes of name, not ten and a terminator: a long key fills them all.
    const std::string sName = platform::ToNarrow(oColumn.Key());
    std::memcpy(aField, sName.data(), std::min(sName.size(), kDbfNameBytes));
    aField[11] = FieldTypeLetter(oColumn.Type());
    aField[16] = static_cast<char>(lSize);
    aField[17] = static_cast<char>(lPrecision);
    oFile.Write(aField, sizeof aField);

    tHeader.iHeaderLength = static_cast<std::int16_t>(lHeaderLength);
    tHeader.iRecordLength = static_cast<std::int16_t>(lRecordLength);
}

void WriteFieldValue(std::string& sRecord, std::string& sText, const tnwColumn& oColumn) {
    if (IsGeometryColumn(oColumn)) return;
    const auto nSize = static_cast<std::size_t>(FieldByte(oColumn.Size()));
    const Variant& vValue = oColumn.Value();
    sText.clear();
    switch (oColumn.Type()) {
        case vtString:
            // A text value is its own text; other values take the column's.
            if (const std::string* pText = vValue.AsString()) {
                platform::AppendNarrow(sText, *pText);
            } else {
                platform::AppendNarrow(sText, oColumn.Text());
            }
            AppendLeft(sRecord, sText, nSize);
            return;
        case vtBoolean:
            AppendLeft(sRecord, vValue.EqualsTrue() ? "Y" : "N", nSize);
            return;
        case vtDate:
            AppendRight(sRecord, FormatYYYYMMDD(vValue.ToDate()), nSize);
            return;
        default:
            // Never rounded to Precision: the number keeps the digits of its text.
            AppendNumberText(sText, vValue);
            AppendRight(sRecord, sText, nSize);
            return;
    }
}

}  // namespace tnw::detail
