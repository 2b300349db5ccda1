#include "shapefile/DbfWriter.h"

#include <algorithm>
#include <cstring>

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

// Fits the text appended to sRecord from nAt to nSize bytes, right-aligned: cut on the left,
// filled with blanks on the left. False when characters other than the blank that number text
// puts in front were cut.
bool FitRight(std::string& sRecord, std::size_t nAt, std::size_t nSize) {
    const std::size_t nLength = sRecord.size() - nAt;
    if (nLength < nSize) {
        sRecord.insert(nAt, nSize - nLength, ' ');
        return true;
    }
    const std::size_t nCut = nLength - nSize;
    const bool bWhole = nCut == 0 || (nCut == 1 && sRecord[nAt] == ' ');
    sRecord.erase(nAt, nCut);
    return bWhole;
}

// The same, left-aligned: cut on the right, filled with blanks on the right.
bool FitLeft(std::string& sRecord, std::size_t nAt, std::size_t nSize) {
    const bool bWhole = sRecord.size() - nAt <= nSize;
    sRecord.resize(nAt + nSize, ' ');
    return bWhole;
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

std::string FieldName(const tnwColumn& oColumn) {
    std::string sName = platform::ToNarrow(oColumn.Key());
    if (sName.size() > kDbfNameBytes) sName.resize(kDbfNameBytes);
    return sName;
}

std::string UniqueFieldName(const std::string& sName, const std::vector<std::string>& vTaken) {
    const auto taken = [&](const std::string& sTry) {
        return std::any_of(vTaken.begin(), vTaken.end(),
                           [&](const std::string& s) { return FoldCaseEquals(s, sTry); });
    };
    std::string sTry = sName;
    for (std::size_t n = 1; taken(sTry); ++n) {
        const std::string sSuffix = "_" + std::to_string(n);
        sTry = sName.substr(0, kDbfNameBytes - sSuffix.size()) + sSuffix;
    }
    return sTry;
}

void WriteFieldDescriptor(platform::OutputFile& oFile, DBFHeader& tHeader, const tnwColumn& oColumn,
                          std::string_view sName) {
    if (IsGeometryColumn(oColumn)) return;
    const std::int32_t lSize = FieldByte(oColumn.Size());
    const std::int32_t lPrecision = FieldByte(oColumn.Precision());
    const std::int32_t lHeaderLength = tHeader.iHeaderLength + kDbfFieldBytes;
    const std::int32_t lRecordLength = tHeader.iRecordLength + lSize;
    if (lHeaderLength > kDbfMaxLength || lRecordLength > kDbfMaxLength) Raise(errOverflow);

    char aField[kDbfFieldBytes] = {};
    // Eleven bytes of name, not ten and a terminator: a long key fills them all.
    std::memcpy(aField, sName.data(), std::min(sName.size(), kDbfNameBytes));
    aField[11] = FieldTypeLetter(oColumn.Type());
    aField[16] = static_cast<char>(lSize);
    aField[17] = static_cast<char>(lPrecision);
    oFile.Write(aField, sizeof aField);

    tHeader.iHeaderLength = static_cast<std::int16_t>(lHeaderLength);
    tHeader.iRecordLength = static_cast<std::int16_t>(lRecordLength);
}

bool WriteFieldValue(std::string& sRecord, const tnwColumn& oColumn, bool bBlankEmpty,
                     bool bFitNumbers) {
    if (IsGeometryColumn(oColumn)) return true;
    const auto nSize = static_cast<std::size_t>(FieldByte(oColumn.Size()));
    const Variant& vValue = oColumn.Value();
    // Each value's text goes straight into the record and is fitted to the field there.
    const std::size_t nAt = sRecord.size();
    if (bBlankEmpty && vValue.IsEmpty()) return FitLeft(sRecord, nAt, nSize);
    switch (oColumn.Type()) {
        case vtString:
            // A text value is its own text; other values take the column's.
            if (const std::string* pText = vValue.AsString()) {
                platform::AppendNarrow(sRecord, *pText);
            } else {
                platform::AppendNarrow(sRecord, oColumn.Text());
            }
            return FitLeft(sRecord, nAt, nSize);
        case vtBoolean:
            sRecord += vValue.EqualsTrue() ? 'Y' : 'N';
            return FitLeft(sRecord, nAt, nSize);
        case vtDate:
            sRecord += FormatYYYYMMDD(vValue.ToDate());
            return FitRight(sRecord, nAt, nSize);
        default:
            if (!bFitNumbers || !vValue.IsNumeric()) {
                // Never rounded to Precision: the number keeps the digits of its text.
                AppendNumberText(sRecord, vValue);
            } else {
                if (const double* pDouble = vValue.As<double>()) {
                    AppendNumberText(sRecord,
                                     RoundHalfEven(*pDouble, FieldByte(oColumn.Precision())));
                } else {
                    AppendNumberText(sRecord, vValue);
                }
                const std::size_t nDigitsAt = sRecord[nAt] == ' ' ? nAt + 1 : nAt;
                if (sRecord.size() - nDigitsAt > nSize) Raise(errOverflow);
            }
            return FitRight(sRecord, nAt, nSize);
    }
}

}  // namespace tnw::detail
