#include "decoders/tnwDBFDecoder.h"

#include <algorithm>
#include <exception>

#include "core/Error.h"
#include "core/KeyedList.h"
#include "core/NumberText.h"
#include "core/SerialDate.h"
#include "platform/ByteOrder.h"
#include "platform/CodePage.h"
#include "platform/Hooks.h"
#include "support/mLog.h"

namespace tnw {

namespace {

constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kDescriptorSize = 32;
constexpr std::size_t kNameWidth = 11;

std::shared_ptr<tnwColumns> NewColumnList() {
    auto oColumns = CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
    if (!oColumns) Raise(errObjectNotSet, "tnwDelimAscii.Columns");
    return oColumns;
}

std::string_view TrimBlanks(std::string_view s) {
    std::size_t nFirst = 0;
    std::size_t nEnd = s.size();
    while (nFirst < nEnd && s[nFirst] == ' ')
        ++nFirst;
    while (nEnd > nFirst && s[nEnd - 1] == ' ')
        --nEnd;
    return {s.data() + nFirst, nEnd - nFirst};
}

bool IsDigits(std::string_view s) {
    return !s.empty() &&
           std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// A date field's text "is numeric" when the strict number reading of a tagged value takes
// it; plain digits, the usual case, are settled without that.
bool IsNumericText(std::string_view s) {
    if (s.empty()) return false;
    if (IsDigits(s)) return true;
    try {
        (void)Variant(std::string(s)).ToDouble();
        return true;
    } catch (const Error&) {
        return false;
    }
}

// One piece of a "yyyymmdd" text as a whole number; a piece that holds no number (an empty
// one, when the text is too short) is a type mismatch.
int DatePart(std::string_view sPiece) {
    if (IsDigits(sPiece)) {
        int iValue = 0;
        for (char c : sPiece)
            iValue = iValue * 10 + (c - '0');
        return iValue;
    }
    return Variant(std::string(sPiece)).ToLong();
}

std::string_view Piece(std::string_view s, std::size_t nStart, std::size_t nLength) {
    return nStart < s.size() ? s.substr(nStart, nLength) : std::string_view{};
}

}  // namespace

tnwDBFDecoder::tnwDBFDecoder() : m_oColumns(NewColumnList()) {}

tnwDBFDecoder::~tnwDBFDecoder() {
    CloseFile();
}

void tnwDBFDecoder::SetLonCol(std::int32_t lColumn) {
    m_lLonCol = lColumn;
    if (lColumn > 0) m_eGeometryFormat = TNW_GeometryFormat_LonLat;
}

void tnwDBFDecoder::SetLatCol(std::int32_t lColumn) {
    m_lLatCol = lColumn;
    if (lColumn > 0) m_eGeometryFormat = TNW_GeometryFormat_LonLat;
}

void tnwDBFDecoder::SetWKTCol(std::int32_t lColumn) {
    m_lWKTCol = lColumn;
    if (lColumn > 0) m_eGeometryFormat = TNW_GeometryFormat_WKT;
}

double tnwDBFDecoder::Longitude() const {
    if (m_eGeometryFormat != TNW_GeometryFormat_LonLat) {
        throw Error(errNotLonLat, "tnwDelimAscii.Longitude", "Geometry Format is not Lon/Lat");
    }
    return m_dLongitude;
}

double tnwDBFDecoder::Latitude() const {
    if (m_eGeometryFormat != TNW_GeometryFormat_LonLat) {
        throw Error(errNotLonLat, "tnwDelimAscii.Latitude", "Geometry Format is not Lon/Lat");
    }
    return m_dLatitude;
}

std::string tnwDBFDecoder::WKT() const {
    switch (m_eGeometryFormat) {
        case TNW_GeometryFormat_WKT:
            return m_sWKT;
        case TNW_GeometryFormat_LonLat: {
            std::string sText = "POINT(";
            AppendNumberText(sText, m_dLongitude);
            sText += ' ';
            AppendNumberText(sText, m_dLatitude);
            sText += ')';
            return sText;
        }
        default:
            return {};
    }
}

std::int32_t tnwDBFDecoder::OpenFile() {
    CloseFile();
    if (!platform::FileExists(m_sFilename)) return 0;
    try {
        m_oFile.Open(m_sFilename);
    } catch (...) {
        const Error oError = CurrentError(std::current_exception());
        throw Error(oError.lNumber, "tnwDelimAscii.OpenFile", oError.sDescription);
    }
    return m_oFile.Number();
}

void tnwDBFDecoder::SetFilename(const std::string& sFilename) {
    m_sFilename = sFilename;
    try {
        if (OpenFile() == 0) return;
        ReadFieldList();
        m_bValidFile = true;
    } catch (...) {
        const Error oError = CurrentError(std::current_exception());
        platform::ShowMessageBox(m_sFilename + " Not Found\r\n" + oError.sDescription,
                                 platform::ApplicationInfo().sName, platform::MsgIcon::None);
        m_bValidFile = false;
        throw oError;
    }
}

void tnwDBFDecoder::ReadFieldList() {
    unsigned char aHeader[kHeaderSize];
    m_oFile.ReadExact(aHeader, sizeof aHeader);
    // Versions 0x30 to 0x32 carry a back link after the fields that reads as junk fields.
    if (m_bCheckVersion && aHeader[0] >= 0x30 && aHeader[0] <= 0x32)
        throw Error(errBadFileFormat, "tnwDelimAscii.OpenFile",
                    "Not a dBase table but a Visual FoxPro table: " + m_sFilename);
    m_lRecordCount = static_cast<std::int32_t>(platform::GetLE32(aHeader + 4));
    m_iHeaderLength = platform::GetLE16(aHeader + 8);
    m_iRecordLength = platform::GetLE16(aHeader + 10);
    m_byLanguageDriver = aHeader[29];

    m_oColumns = NewColumnList();
    m_sSchema.clear();
    m_vFields.clear();
    m_nRecordBytes = 1;
    // The header length is a 16-bit number, so this reads at most 2,047 descriptors whatever
    // the file claims.
    unsigned char aDescriptor[kDescriptorSize];
    for (std::int32_t lPosition = kHeaderSize; lPosition < m_iHeaderLength - 1;
         lPosition += kDescriptorSize) {
        m_oFile.ReadExact(aDescriptor, sizeof aDescriptor);
        AddField(aDescriptor);
    }
}

void tnwDBFDecoder::AddField(const unsigned char* pDescriptor) {
    std::string sName(reinterpret_cast<const char*>(pDescriptor), kNameWidth);
    std::replace(sName.begin(), sName.end(), '\0', ' ');
    std::string sKey = platform::FromNarrow(TrimBlanks(sName), CodePageInUse());
    if (!sKey.empty() && sKey.front() == '\\') sKey.erase(0, 1);

    const char cLetter = static_cast<char>(pDescriptor[11]);
    const std::uint8_t nWidth = pDescriptor[16];
    const std::uint8_t nDecimals = pDescriptor[17];

    bool bActive = true;
    if (m_oColumns->Item(sKey)) {
        if (m_bRenameDuplicates) {
            const std::string sFirstKey = sKey;
            for (std::int32_t n = 1; m_oColumns->Item(sKey); ++n)
                sKey = sFirstKey + "_" + std::to_string(n);
        } else {
            sKey = "Dummy_" + std::to_string(m_oColumns->Count() + 1);
            bActive = false;
        }
    }

    std::int32_t lType = vtString;
    std::int16_t iPrecision = 0;
    std::int32_t lFlags = tnwFlagText;
    switch (cLetter) {
        case 'C':
            break;
        case 'N':
            lType = vtDouble;
            iPrecision = nDecimals;
            lFlags = tnwFlagNumeric;
            break;
        case 'D':
            lType = vtDate;
            lFlags = tnwFlagDate;
            break;
        case 'L':
            lType = vtBoolean;
            lFlags = tnwFlagLogical;
            break;
        default:
            bActive = false;
            break;
    }

    Field tField;
    tField.oColumn =
        m_oColumns->Add(sKey, "", "", lType, nWidth, iPrecision, lFlags, 1, 16, "", true, bActive);
    tField.nOffset = static_cast<std::uint32_t>(m_nRecordBytes);
    tField.nWidth = nWidth;
    tField.lType = lType;
    m_vFields.push_back(std::move(tField));
    m_nRecordBytes += nWidth;

    if (!m_sSchema.empty()) m_sSchema += '|';
    m_sSchema += sKey;
    m_sSchema += '~';
    platform::AppendFromNarrow(m_sSchema, std::string_view(&cLetter, 1), CodePageInUse());
    m_sSchema += '~';
    m_sSchema += std::to_string(nWidth);
    m_sSchema += '~';
    m_sSchema += std::to_string(nDecimals);
    m_sSchema += '~';
}

void tnwDBFDecoder::CloseFile() {
    if (m_oFile.IsOpen()) {
        m_oFile.Close();
        m_lCurrentRecord = 0;
    }
}

Variant tnwDBFDecoder::MoveFirst() {
    try {
        m_oFile.Seek(m_iHeaderLength);
        m_lCurrentRecord = 0;
        return Variant(MoveNext());
    } catch (...) {
        return Variant();
    }
}

bool tnwDBFDecoder::MoveNext() {
    return ReadRecord(m_bSkipDeleted);
}

bool tnwDBFDecoder::ReadRecord(bool bSkipDeleted) {
    for (;;) {
        ++m_lCurrentRecord;
        m_bDeleted = false;
        m_vUnreadable.clear();
        if (Eof()) {
            m_lCurrentRecord = static_cast<std::int64_t>(m_lRecordCount) + 1;
            return false;
        }

        // One read per record, taken where it lies in the file's buffer; the fields that
        // arrived whole take their values even when the file ends inside the record, as
        // reading field by field would leave them.
        const std::string_view sRecord = m_oFile.ReadView(m_nRecordBytes);
        m_bDeleted = !sRecord.empty() && sRecord.front() == '*';
        if (m_bDeleted && bSkipDeleted && sRecord.size() == m_nRecordBytes) continue;
        for (const Field& tField : m_vFields) {
            if (tField.nOffset + tField.nWidth > sRecord.size()) break;
            if (!tField.oColumn || !tField.oColumn->Active()) continue;
            const std::string_view sText =
                TrimBlanks({sRecord.data() + tField.nOffset, tField.nWidth});
            if (m_bEveryFieldSets) {
                SetEveryFieldValue(tField, sText);
            } else {
                SetValue(tField, sText);
            }
        }
        if (sRecord.size() < m_nRecordBytes) Raise(errInputPastEnd, "tnwDelimAscii.MoveNext");
        ReadGeometryFields(sRecord);
        return true;
    }
}

namespace {

// The date of a "yyyymmdd" text, when it names a real day.
std::optional<SerialDate> DigitsDate(std::string_view sText) {
    if (sText.size() != 8 || !IsDigits(sText)) return std::nullopt;
    const int iYear = DatePart(sText.substr(0, 4));
    const int iMonth = DatePart(sText.substr(4, 2));
    const int iDay = DatePart(sText.substr(6, 2));
    if (!IsRealDate(iYear, iMonth, iDay)) return std::nullopt;
    return DateSerial(iYear, iMonth, iDay);
}

bool IsTrueText(std::string_view s) {
    return s == "-1" ||
           (s.size() == 1 && (s[0] == 't' || s[0] == 'T' || s[0] == 'y' || s[0] == 'Y'));
}

}  // namespace

void tnwDBFDecoder::SetValue(const Field& tField, std::string_view sText) {
    tnwColumn& oColumn = *tField.oColumn;
    if (m_bEveryFieldSets && sText.empty() && tField.lType != vtString) {
        oColumn.SetValue(Variant());
        return;
    }
    switch (tField.lType) {
        case vtBoolean:
            // Only a true text assigns: anything else leaves the value of the record before.
            if (IsTrueText(sText)) oColumn.SetValue(true);
            break;
        case vtString:
            oColumn.SetValue(platform::FromNarrow(sText, CodePageInUse()));
            break;
        case vtDate:
            // "yyyymmdd" when numeric, else any date text. A blank date, and a numeric one that
            // names no real day ("00000000", "20040000"), keep the last value.
            if (IsNumericText(sText)) {
                const int iYear = DatePart(Piece(sText, 0, 4));
                const int iMonth = DatePart(Piece(sText, 4, 2));
                const int iDay = DatePart(Piece(sText, 6, 2));
                if (IsRealDate(iYear, iMonth, iDay)) {
                    oColumn.SetValue(DateSerial(iYear, iMonth, iDay));
                }
            } else if (auto tDate = ParseDateText(platform::FromNarrow(sText, CodePageInUse()))) {
                oColumn.SetValue(*tDate);
            } else if (m_bEveryFieldSets) {
                oColumn.SetValue(Variant());
            }
            break;
        default:
            oColumn.SetValue(TextToNumber(sText));
            break;
    }
}

void tnwDBFDecoder::SetEveryFieldValue(const Field& tField, std::string_view sText) {
    tnwColumn& oColumn = *tField.oColumn;
    Variant vValue;  // empty unless the text holds a value of the field's type
    switch (tField.lType) {
        case vtBoolean:
            if (IsTrueText(sText)) {
                vValue = Variant(true);
            } else if (sText == "0" ||
                       (sText.size() == 1 && (sText[0] == 'f' || sText[0] == 'F' ||
                                              sText[0] == 'n' || sText[0] == 'N'))) {
                vValue = Variant(false);
            }
            break;
        case vtString:
            if (!sText.empty()) vValue = Variant(platform::FromNarrow(sText, CodePageInUse()));
            break;
        case vtDate:
            if (auto tDate = DigitsDate(sText)) {
                vValue = Variant(*tDate);
            } else if (auto tText = ParseDateText(platform::FromNarrow(sText, CodePageInUse()))) {
                vValue = Variant(*tText);
            }
            break;
        default:
            if (std::any_of(sText.begin(), sText.end(),
                            [](char c) { return c >= '0' && c <= '9'; }))
                vValue = Variant(TextToNumber(sText));
            break;
    }
    // A blank, "?", a field of "*" and a date of zeros are NULLs as writers write them;
    // anything else that gave no value was lost.
    const bool bNullMark = sText.empty() || sText == "?" ||
                           sText.find_first_not_of('*') == std::string_view::npos ||
                           (tField.lType == vtDate && sText == "00000000");
    if (vValue.IsEmpty() && !bNullMark) m_vUnreadable.push_back(oColumn.Key());
    oColumn.SetValue(std::move(vValue));
}

std::string_view tnwDBFDecoder::FieldText(std::string_view sRecord, std::int32_t lField) const {
    if (lField < 1 || static_cast<std::size_t>(lField) > m_vFields.size()) {
        Raise(errSubscript, "tnwDelimAscii.MoveNext");
    }
    const Field& tField = m_vFields[static_cast<std::size_t>(lField - 1)];
    return TrimBlanks({sRecord.data() + tField.nOffset, tField.nWidth});
}

void tnwDBFDecoder::ReadGeometryFields(std::string_view sRecord) {
    m_dLongitude = 0.0;
    m_dLatitude = 0.0;
    m_sWKT.clear();
    if (m_lLonCol > 0) m_dLongitude = TextToNumber(FieldText(sRecord, m_lLonCol));
    if (m_lLatCol > 0) m_dLatitude = TextToNumber(FieldText(sRecord, m_lLatCol));
    if (m_lWKTCol > 0) {
        platform::AppendFromNarrow(m_sWKT, FieldText(sRecord, m_lWKTCol), CodePageInUse());
    }
}

bool tnwDBFDecoder::MoveToRecord(std::int32_t lRecord) {
    if (lRecord < 1) return false;
    m_lCurrentRecord = lRecord;
    if (Eof()) return false;
    m_lCurrentRecord = lRecord - 1;
    // A record longer than the 16-bit length field can state lies as far as its fields reach.
    const std::int64_t lStride = m_nRecordBytes > 0xFFFF ? static_cast<std::int64_t>(m_nRecordBytes)
                                                         : std::int64_t{m_iRecordLength};
    m_oFile.Seek(std::int64_t{m_iHeaderLength} + lStride * (std::int64_t{lRecord} - 1));
    return ReadRecord(false);
}

std::int32_t tnwDBFDecoder::FindColumnValue(std::string_view sColumn, std::string_view sValue) {
    std::int32_t lFound = 0;
    Guard("tnwDBFDecoder.FindColumnValue", [&] {
        const auto oColumn = m_oColumns->Item(sColumn);
        if (!oColumn) return;
        const std::string sWanted = FoldCase(sValue);
        // MoveFirst's steps without its silent ending, so that a closed table or a failed
        // read is reported here.
        m_oFile.Seek(m_iHeaderLength);
        m_lCurrentRecord = 0;
        for (MoveNext(); !Eof(); MoveNext()) {
            if (FoldCase(oColumn->Value().ToText()) == sWanted) {
                lFound = static_cast<std::int32_t>(m_lCurrentRecord);
                return;
            }
        }
    });
    return lFound;
}

}  // namespace tnw
