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
    m_lRecordCount = static_cast<std::int32_t>(platform::GetLE32(aHeader + 4));
    m_iHeaderLength = static_cast<std::int16_t>(platform::GetLE16(aHeader + 8));
    m_iRecordLength = static_cast<std::int16_t>(platform::GetLE16(aHeader + 10));

    m_oColumns = NewColumnList();
    m_sSchema.clear();
    m_vFields.clear();
    m_nRecordBytes = 1;
    // The header length is a signed 16-bit number, so this reads at most 1023 descriptors
    // whatever the file claims.
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
    std::string sKey = platform::FromNarrow(TrimBlanks(sName));
    if (!sKey.empty() && sKey.front() == '\\') sKey.erase(0, 1);

    const char cLetter = static_cast<char>(pDescriptor[11]);
    const std::uint8_t nWidth = pDescriptor[16];
    const std::uint8_t nDecimals = pDescriptor[17];

    bool bActive = true;
    if (m_oColumns->Item(sKey)) {
        sKey = "Dummy_" + std::to_string(m_oColumns->Count() + 1);
        bActive = false;
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
    platform::AppendFromNarrow(m_sSchema, std::string_view(&cLetter, 1));
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
    ++m_lCurrentRecord;
    if (Eof()) {
        m_lCurrentRecord = static_cast<std::int64_t>(m_lRecordCount) + 1;
        return false;
    }

    // One read per record, taken where it lies in the file's buffer; the fields that arrived
    // whole take their values even when the file ends inside the record, as reading field by
    // field would leave them.
    const std::string_view sRecord = m_oFile.ReadView(m_nRecordBytes);
    for (const Field& tField : m_vFields) {
        if (tField.nOffset + tField.nWidth > sRecord.size()) break;
        if (!tField.oColumn || !tField.oColumn->Active()) continue;
        SetValue(tField, TrimBlanks({sRecord.data() + tField.nOffset, tField.nWidth}));
    }
    if (sRecord.size() < m_nRecordBytes) Raise(errInputPastEnd, "tnwDelimAscii.MoveNext");
    ReadGeometryFields(sRecord);
    return true;
}

void tnwDBFDecoder::SetValue(const Field& tField, std::string_view sText) {
    tnwColumn& oColumn = *tField.oColumn;
    if (m_bEveryFieldSets && sText.empty() && tField.lType != vtString) {
        oColumn.SetValue(Variant());
        return;
    }
    switch (tField.lType) {
        case vtBoolean:
            // Only a true text assigns: anything else leaves the value of the record before.
            if (sText == "-1" || (sText.size() == 1 && (sText[0] == 't' || sText[0] == 'T' ||
                                                        sText[0] == 'y' || sText[0] == 'Y'))) {
                oColumn.SetValue(true);
            } else if (m_bEveryFieldSets) {
                const bool bFalse =
                    sText == "0" || (sText.size() == 1 && (sText[0] == 'f' || sText[0] == 'F' ||
                                                           sText[0] == 'n' || sText[0] == 'N'));
                oColumn.SetValue(bFalse ? Variant(false) : Variant());
            }
            break;
        case vtString:
            oColumn.SetValue(platform::FromNarrow(sText));
            break;
        case vtDate:
            // "yyyymmdd" when numeric, else any date text; a blank date keeps the last value.
            if (IsNumericText(sText)) {
                oColumn.SetValue(DateSerial(DatePart(Piece(sText, 0, 4)),
                                            DatePart(Piece(sText, 4, 2)),
                                            DatePart(Piece(sText, 6, 2))));
            } else if (auto tDate = ParseDateText(platform::FromNarrow(sText))) {
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
    if (m_lWKTCol > 0) platform::AppendFromNarrow(m_sWKT, FieldText(sRecord, m_lWKTCol));
}

bool tnwDBFDecoder::MoveToRecord(std::int32_t lRecord) {
    if (lRecord < 1) return false;
    m_lCurrentRecord = lRecord;
    if (Eof()) return false;
    m_lCurrentRecord = lRecord - 1;
    m_oFile.Seek(std::int64_t{m_iHeaderLength} +
                 std::int64_t{m_iRecordLength} * (std::int64_t{lRecord} - 1));
    return MoveNext();
}

std::int32_t tnwDBFDecoder::FindColumnValue(std::string_view sColumn, std::string_view sValue) {
    std::int32_t lFound = 0;
    Guard("tnwDBFDecoder.FindColumnValue", [&] {
        const auto oColumn = m_oColumns->Item(sColumn);
        if (!oColumn) return;
        const std::string sWanted = FoldCase(sValue);
        // A failed MoveFirst leaves the values of some other record: nothing to compare.
        const Variant vFirst = MoveFirst();
        if (!vFirst.As<bool>()) return;
        for (std::int32_t lRow = 1; !Eof(); ++lRow) {
            if (FoldCase(oColumn->Value().ToText()) == sWanted) {
                lFound = lRow;
                return;
            }
            MoveNext();
        }
    });
    return lFound;
}

}  // namespace tnw
