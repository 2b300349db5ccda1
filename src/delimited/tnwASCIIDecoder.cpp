#include "delimited/tnwASCIIDecoder.h"

#include <algorithm>
#include <exception>

#include "core/Error.h"
#include "core/KeyedList.h"
#include "core/NumberText.h"
#include "core/SerialDate.h"
#include "platform/CodePage.h"
#include "support/mLog.h"

namespace tnw {

namespace {

// A delimited line of more characters than ParseLine takes is refused whole; what lies past
// one character more than the limit is never kept.
constexpr std::size_t kLongestKeptLine = 32767;

bool OddQuotes(std::string_view sText) {
    return std::count(sText.begin(), sText.end(), '"') % 2 != 0;
}

}  // namespace

tnwASCIIDecoder::tnwASCIIDecoder()
    : oColumns(CreateAs<tnwColumns>(kProgIdColumns, "Missing Component")) {}

tnwASCIIDecoder::~tnwASCIIDecoder() {
    CloseFile();
}

void tnwASCIIDecoder::SetFilename(const std::string& sFilenameIn) {
    CloseFile();
    sFilename = sFilenameIn;
    platform::InputFile oProbe;  // only a test that the file can be opened
    oProbe.Open(sFilename);
    oProbe.Close();
    if (IsGPLName(sFilename)) {
        OpenGPL();
    } else {
        bGPL = false;
    }
    bValidFile = true;
}

void tnwASCIIDecoder::SetDelimiter(const std::string& sDelimiterIn) {
    sDelimiter = sDelimiterIn;
    m_sNarrowDelimiter.clear();
    platform::AppendNarrow(m_sNarrowDelimiter, sDelimiter, CodePageInUse());
}

void tnwASCIIDecoder::SetTextCodePage(std::optional<platform::CodePage> eCodePage) {
    m_eTextCodePage = eCodePage;
    SetDelimiter(sDelimiter);  // the delimiter's bytes follow the code page
}

void tnwASCIIDecoder::SetLonCol(std::int32_t lColumn) {
    lLonCol = lColumn;
    if (lColumn > 0) eGeometryFormat = TNW_GeometryFormat_LonLat;
}

void tnwASCIIDecoder::SetLatCol(std::int32_t lColumn) {
    lLatCol = lColumn;
    if (lColumn > 0) eGeometryFormat = TNW_GeometryFormat_LonLat;
}

void tnwASCIIDecoder::SetWKTCol(std::int32_t lColumn) {
    lWKTCol = lColumn;
    if (lColumn > 0) eGeometryFormat = TNW_GeometryFormat_WKT;
}

double tnwASCIIDecoder::Longitude() const {
    if (eGeometryFormat != TNW_GeometryFormat_LonLat) {
        throw Error(errNotLonLat, "tnwDelimAscii.Longitude", "Geometry Format is not Lon/Lat");
    }
    return dLongitude;
}

double tnwASCIIDecoder::Latitude() const {
    if (eGeometryFormat != TNW_GeometryFormat_LonLat) {
        throw Error(errNotLonLat, "tnwDelimAscii.Latitude", "Geometry Format is not Lon/Lat");
    }
    return dLatitude;
}

std::string tnwASCIIDecoder::WKT() const {
    switch (eGeometryFormat) {
        case TNW_GeometryFormat_LonLat: {
            std::string sText = "POINT(";
            AppendNumberText(sText, dLongitude);
            sText += ' ';
            AppendNumberText(sText, dLatitude);
            sText += ')';
            return sText;
        }
        case TNW_GeometryFormat_WKT:
            return sWKT;
        default:
            return std::string();
    }
}

std::string tnwASCIIDecoder::CurrentLine() const {
    return platform::FromNarrow(sCurrentLine, CodePageInUse());
}

double tnwASCIIDecoder::PercentComplete() const {
    if (lFileLength < 1) return 100.0;
    return static_cast<double>(lBytesRead) * 100.0 / static_cast<double>(lFileLength);
}

void tnwASCIIDecoder::CloseFile() noexcept {
    if (!m_oFile.IsOpen()) return;
    m_oFile.Close();
    lCurrentRow = 0;
}

void tnwASCIIDecoder::OpenFile() {
    CloseFile();
    try {
        lFileLength = FileUtility()->FileLength(sFilename);
        lBytesRead = 0;
        m_oFile.Open(sFilename);
        lBytesRead += PassByteOrderMark();
    } catch (...) {
        m_oFile.Close();
        throw Error(errCantAccessSource, "tnwDelimAscii.OpenFile", "Can't access source file");
    }
}

std::int64_t tnwASCIIDecoder::PassByteOrderMark() {
    if (!m_bSkipByteOrderMark) return 0;
    static constexpr char kMark[] = "\xEF\xBB\xBF";
    const std::string_view sStart = m_oFile.ReadView(3);
    if (sStart == kMark) return 3;
    m_oFile.Seek(0);
    return 0;
}

std::int32_t tnwASCIIDecoder::ColumnType(const std::string& sKey) const {
    const std::string sFolded = FoldCase(sKey);
    for (const auto& [sTypedKey, lType] : m_vColumnTypes)
        if (sTypedKey == sFolded) return lType;
    return vtEmpty;
}

void tnwASCIIDecoder::SetColumnType(const std::string& sKey, std::int32_t lType) {
    std::string sFolded = FoldCase(sKey);
    std::erase_if(m_vColumnTypes, [&](const auto& tEntry) { return tEntry.first == sFolded; });
    if (lType != vtEmpty) m_vColumnTypes.emplace_back(std::move(sFolded), lType);
}

bool tnwASCIIDecoder::ReadLine(platform::InputFile& oFile, std::string& sLine,
                               std::int64_t& nBytes) {
    const platform::LineEnds eEnds =
        m_bLineFeedEndsLine ? platform::LineEnds::Any : platform::LineEnds::CarriageReturn;
    // Fixed-width lines have no limit; a delimited one past it is refused anyway.
    const std::size_t nKeep = sDelimiter.empty() ? std::string::npos : kLongestKeptLine;
    const auto read = [&](std::string& sText) {
        std::size_t nConsumed = 0;
        if (!oFile.ReadLine(sText, eEnds, nConsumed, nKeep)) return false;
        // Without the line-feed rule every line counts as if it ended in CR LF.
        nBytes += m_bLineFeedEndsLine ? static_cast<std::int64_t>(nConsumed)
                                      : static_cast<std::int64_t>(sText.size()) + 2;
        return true;
    };
    nBytes = 0;
    if (!read(sLine)) return false;
    if (!m_bQuotedLineBreaks) return true;
    bool bInQuotes = OddQuotes(sLine);
    while (bInQuotes && sLine.size() < nKeep && read(m_sContinuation)) {
        bInQuotes = OddQuotes(m_sContinuation) != bInQuotes;
        sLine += '\n';
        sLine.append(m_sContinuation, 0, nKeep - std::min(nKeep, sLine.size()));
    }
    return true;
}

double tnwASCIIDecoder::FieldNumber(std::string_view sField) {
    if (!m_bDecimalComma || sField.find(',') == std::string_view::npos) return TextToNumber(sField);
    m_sNumber.assign(sField);
    std::replace(m_sNumber.begin(), m_sNumber.end(), ',', '.');
    return TextToNumber(m_sNumber);
}

Variant tnwASCIIDecoder::MoveFirst() {
    Variant vResult;
    Guard("tnwASCIIDecoder.MoveFirst", [&] {
        OpenFile();
        if (oGPD) {
            oGPD->MoveFirst();
            m_bGPDEnded = false;
        }
        bGPLStarted = false;
        sCurrentLine.clear();
        lCurrentRow = 0;
        for (std::int32_t i = 0; i < lHeaderRows; ++i) {
            std::int64_t nBytes = 0;
            // A file that ends within the header rows stays open, with no result.
            if (!ReadLine(m_sSkipped, nBytes)) return;
            lBytesRead += nBytes;
        }
        vResult = Variant(MoveNext());
    });
    return vResult;
}

bool tnwASCIIDecoder::MoveNext() {
    static const std::string sSource = "tnwASCIIDecoder.MoveNext";  // built once, not per row
    bool bFound = false;
    Guard(sSource, [&] {
        bGPLStart = false;
        bGPLEnd = false;
        if (!m_oFile.IsOpen()) return;
        // Once per call, before reading: the count is of calls, not of lines.
        ++lCurrentRow;
        std::int64_t nBytes = 0;
        while (!bFound && ReadLine(sCurrentLine, nBytes)) {
            lBytesRead += nBytes;
            if (sCurrentLine.empty()) continue;
            if (bGPL) {
                // A command is a row of its own, not parsed; what stands before the first
                // start is passed over.
                if (IsGPLCommand()) {
                    bFound = true;
                    break;
                }
                if (!bGPLStarted) continue;
            }
            ReadRow();
            bFound = true;
        }
        if (!bFound) CloseFile();
    });
    return bFound;
}

void tnwASCIIDecoder::ReadRow() {
    ParseLine(sCurrentLine, m_sNarrowDelimiter, m_aFields);
    dLongitude = 0.0;
    dLatitude = 0.0;
    sWKT.clear();
    lRecordID = 0;
    m_bHasPosition = false;
    if (lLonCol > 0) dLongitude = FieldNumber(m_aFields.Item(lLonCol - 1));
    if (lLatCol > 0) dLatitude = FieldNumber(m_aFields.Item(lLatCol - 1));
    m_bHasPosition = lLonCol > 0 && lLatCol > 0 && !m_aFields.Item(lLonCol - 1).empty() &&
                     !m_aFields.Item(lLatCol - 1).empty();
    if (lWKTCol > 0) sWKT = platform::FromNarrow(m_aFields.Item(lWKTCol - 1), CodePageInUse());
    if (lRecordIDCol > 0) lRecordID = RoundToLong(TextToNumber(m_aFields.Item(lRecordIDCol - 1)));

    for (const auto& oColumn : oColumns->Items()) {
        const std::int32_t lPosition = oColumn->Position();
        // Columns past the end of a short row keep the previous row's values.
        if (lPosition < 1 || lPosition - 1 > m_aFields.UBound()) continue;
        if (oColumn->Kind() != 1 || !oColumn->Active()) continue;
        const std::string_view sField = m_aFields.Item(lPosition - 1);
        if (oColumn->Type() == vtString) {
            const std::int16_t iSize = oColumn->Size();
            if (iSize < 0) RaiseInvalidCall();
            oColumn->SetValue(Variant(platform::FromNarrow(
                platform::CharPrefix(sField, std::size_t(iSize), CodePageInUse()),
                CodePageInUse())));
        } else if (oColumn->Type() == vtDate && TypesColumns()) {
            // Only a reader that types its columns reads dates; an unreadable one is empty.
            const auto tDate = ParseDateText(sField);
            oColumn->SetValue(tDate ? Variant(*tDate) : Variant());
        } else {
            oColumn->SetValue(Variant(FieldNumber(sField)));
        }
    }
    if (oGPD) JoinGPD();
}

FieldArray tnwASCIIDecoder::ReadHeaders(std::int32_t lRow) {
    FieldArray aHeaders;
    try {
        CloseFile();
        m_oFile.Open(sFilename);
        PassByteOrderMark();
        std::int64_t nBytes = 0;  // ReadHeaders leaves the byte count alone
        bool bMore = true;
        for (std::int32_t i = 1; i < lRow && bMore; ++i)
            bMore = ReadLine(m_sSkipped, nBytes);
        if (bMore && ReadLine(sCurrentLine, nBytes)) {
            ParseLine(sCurrentLine, m_sNarrowDelimiter, m_aFields);
            if (m_aFields.HasSize()) {
                aHeaders.Resize(0);
                for (std::int32_t i = 0; i <= m_aFields.UBound(); ++i) {
                    platform::AppendFromNarrow(aHeaders.Append(), m_aFields.Item(i),
                                               CodePageInUse());
                }
            }
        }
        CloseFile();
    } catch (...) {
        CloseFile();
        const Error oError = CurrentError(std::current_exception());
        throw Error(oError.lNumber, "tnwDelimAscii.ReadHeaders", oError.sDescription);
    }
    return aHeaders;
}

}  // namespace tnw
