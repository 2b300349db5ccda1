// Column types from the values: a sample of the data rows tells whole numbers, numbers, dates
// and text apart, and how wide a field each needs to hold what it saw.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/NumberText.h"
#include "core/SerialDate.h"
#include "delimited/tnwASCIIDecoder.h"

namespace tnw {

namespace {

// The unit of a column that has none; the header gives it to every text column.
constexpr std::int32_t kNoUnit = 16;
// dBase widths: a text field holds at most 254 characters, a date "yyyymmdd".
constexpr std::int16_t kMaxTextSize = 254;
constexpr std::int16_t kDateSize = 8;
// Widths of a type asked for with nothing sampled: any int32, any double's number text.
constexpr std::int16_t kWholeSize = 11;
constexpr std::int16_t kNumberSize = 24;
constexpr std::int16_t kNumberDecimals = 15;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// A cell that is a number and nothing else: a sign, digits with at most one cMark, and an
// exponent; the value, or nothing. Unlike the text-to-number rule nothing may follow.
std::optional<double> PlainNumber(std::string_view sText, char cMark) {
    std::string sNumber;
    std::size_t i = 0;
    std::size_t nDigits = 0;
    if (i < sText.size() && (sText[i] == '-' || sText[i] == '+')) {
        if (sText[i] == '-') sNumber += '-';
        ++i;
    }
    for (; i < sText.size() && IsDigit(sText[i]); ++i, ++nDigits)
        sNumber += sText[i];
    if (i < sText.size() && sText[i] == cMark) {
        sNumber += '.';
        for (++i; i < sText.size() && IsDigit(sText[i]); ++i, ++nDigits)
            sNumber += sText[i];
    }
    if (nDigits == 0) return std::nullopt;
    if (i < sText.size() && (sText[i] == 'e' || sText[i] == 'E')) {
        sNumber += 'e';
        ++i;
        if (i < sText.size() && (sText[i] == '-' || sText[i] == '+')) sNumber += sText[i++];
        const std::size_t nExponentStart = i;
        for (; i < sText.size() && IsDigit(sText[i]); ++i)
            sNumber += sText[i];
        if (i == nExponentStart) return std::nullopt;
    }
    if (i != sText.size()) return std::nullopt;
    double dValue = 0.0;
    const auto [pEnd, eError] =
        std::from_chars(sNumber.data(), sNumber.data() + sNumber.size(), dValue);
    if (eError != std::errc() || pEnd != sNumber.data() + sNumber.size() || !std::isfinite(dValue))
        return std::nullopt;
    return dValue;
}

// What the sampled cells of one column showed, read with one decimal mark.
struct CellSummary {
    bool bNumbers = true;  // every cell a plain number
    bool bWhole = true;    // ... and each a whole number within 32 bits, written without a mark
    std::size_t nNumberWidth = 0;  // the longest number text
    std::size_t nDecimals = 0;     // the most digits behind the mark in a number text

    void Add(std::string_view sCell, char cMark) {
        if (!bNumbers) return;
        const auto dValue = PlainNumber(sCell, cMark);
        if (!dValue) {
            bNumbers = bWhole = false;
            return;
        }
        bWhole = bWhole && sCell.find(cMark) == std::string_view::npos &&
                 std::fabs(*dValue) <= std::numeric_limits<std::int32_t>::max() &&
                 *dValue == std::trunc(*dValue);
        // The width the table writer needs: the number text without its leading blank.
        std::string sText;
        AppendNumberText(sText, *dValue);
        const std::string_view sShown = std::string_view(sText).substr(sText.front() == ' ');
        nNumberWidth = std::max(nNumberWidth, sShown.size());
        const std::size_t nMark = sShown.find('.');
        if (nMark != std::string_view::npos && sShown.find('E') == std::string_view::npos)
            nDecimals = std::max(nDecimals, sShown.size() - nMark - 1);
    }
};

struct ColumnSample {
    bool bAny = false;       // a cell with text
    bool bDates = true;      // every cell a date
    std::size_t nText = 0;   // the longest cell, in bytes
    CellSummary aByMark[2];  // with "." and with "," as decimal mark

    void Add(std::string_view sCell) {
        if (sCell.empty()) return;
        bAny = true;
        nText = std::max(nText, sCell.size());
        // Dates are written with their marks: a bare number is no date.
        bDates = bDates && sCell.size() >= 8 && ParseDateText(sCell).has_value();
        aByMark[0].Add(sCell, '.');
        aByMark[1].Add(sCell, ',');
    }
};

// Numbers written with a decimal comma in a cell: "50,937417"; and with a point.
struct MarkCount {
    std::size_t nComma = 0;
    std::size_t nPoint = 0;

    void Add(std::string_view sCell) {
        const std::size_t nComma1 = sCell.find(',');
        const std::size_t nPoint1 = sCell.find('.');
        if (nComma1 != std::string_view::npos && nPoint1 == std::string_view::npos &&
            PlainNumber(sCell, ','))
            ++nComma;
        if (nPoint1 != std::string_view::npos && PlainNumber(sCell, '.')) ++nPoint;
    }
};

// A column's arguments of tnwColumns.Add, so that the list can be built again.
struct ColumnSpec {
    std::string sKey;
    std::int32_t lType;
    std::int16_t iSize;
    std::int16_t iPrecision;
    std::int32_t lFlags;
    std::int32_t lUnit;
    bool bVisible;
    bool bActive;
    std::int32_t lPosition;
};

std::int16_t Width(std::size_t nWidth, std::size_t nMost) {
    return static_cast<std::int16_t>(std::clamp<std::size_t>(nWidth, 1, nMost));
}

// The field for lType: as wide as the sample needs where it saw values of that kind, else
// wide enough for any value of it.
void SetType(ColumnSpec& tSpec, std::int32_t lType, const ColumnSample* pSample, char cMark) {
    const CellSummary* pNumbers = nullptr;
    if (pSample && pSample->bAny) pNumbers = &pSample->aByMark[cMark == ','];
    if (pNumbers && !pNumbers->bNumbers) pNumbers = nullptr;
    tSpec.lType = lType;
    tSpec.iPrecision = 0;
    tSpec.lUnit = kNoUnit;
    switch (lType) {
        case vtInt16:
        case vtInt32:
            tSpec.lType = vtInt32;
            tSpec.lFlags = tnwFlagNumeric;
            tSpec.iSize = pNumbers && pNumbers->bWhole ? Width(pNumbers->nNumberWidth, kWholeSize)
                                                       : kWholeSize;
            break;
        case vtDate:
            tSpec.lFlags = tnwFlagDate;
            tSpec.iSize = kDateSize;
            break;
        case vtString:
            tSpec.lFlags = 0;
            tSpec.iSize = pSample ? Width(pSample->nText, kMaxTextSize) : kMaxTextSize;
            break;
        default:
            tSpec.lType = vtDouble;
            tSpec.lFlags = tnwFlagNumeric;
            tSpec.iSize = kNumberSize;
            tSpec.iPrecision = kNumberDecimals;
            if (pNumbers) {
                // At least one decimal, so that readers take the field for numbers that need
                // not be whole; the decimals need room for the mark and a digit before it.
                const std::size_t nDecimals = std::max<std::size_t>(pNumbers->nDecimals, 1);
                tSpec.iPrecision = static_cast<std::int16_t>(nDecimals);
                tSpec.iSize = Width(std::max(pNumbers->nNumberWidth, nDecimals + 2), kNumberSize);
            }
            break;
    }
}

// The type the sample shows: whole numbers, numbers, dates, else text.
std::int32_t SampledType(const ColumnSample& tSample, char cMark) {
    const CellSummary& tNumbers = tSample.aByMark[cMark == ','];
    if (!tSample.bAny) return vtString;
    if (tNumbers.bNumbers) return tNumbers.bWhole ? vtInt32 : vtDouble;
    if (tSample.bDates) return vtDate;
    return vtString;
}

}  // namespace

void tnwASCIIDecoder::TypeColumns() {
    const auto& vColumns = oColumns->Items();
    std::vector<ColumnSample> vSamples(vColumns.size());
    const bool bSample = m_lSampleRows > 0 && !sFilename.empty();
    if (bSample) {
        MarkCount tMarks;
        platform::InputFile oFile;
        oFile.Open(sFilename);
        std::string sLine;
        std::int64_t nBytes = 0;
        bool bMore = true;
        for (std::int32_t i = 0; i < lHeaderRows && bMore; ++i)
            bMore = ReadLine(oFile, sLine, nBytes);
        LineFields aFields;
        for (std::int32_t lRows = 0; bMore && lRows < m_lSampleRows;) {
            bMore = ReadLine(oFile, sLine, nBytes);
            if (!bMore || sLine.empty()) continue;
            ++lRows;
            try {
                aFields.Clear();
                if (sDelimiter.empty()) {
                    ParseFixedWidth(sLine, aFields);
                } else {
                    ParseDelimited(sLine, m_sNarrowDelimiter, aFields);
                }
            } catch (...) {
                continue;  // the walk reports the row that can't be split
            }
            for (std::int32_t i = 0; i <= aFields.UBound(); ++i)
                tMarks.Add(aFields.Item(i));
            for (std::size_t c = 0; c < vColumns.size(); ++c) {
                const std::int32_t lPosition = vColumns[c]->Position();
                if (lPosition >= 1 && lPosition - 1 <= aFields.UBound())
                    vSamples[c].Add(aFields.Item(lPosition - 1));
            }
        }
        // Where "," is the delimiter it can't be the decimal mark as well.
        if (m_sNarrowDelimiter != "," && tMarks.nComma > 0 && tMarks.nPoint == 0)
            m_bDecimalComma = true;
    }
    const char cMark = m_bDecimalComma ? ',' : '.';

    std::vector<ColumnSpec> vSpecs;
    for (std::size_t c = 0; c < vColumns.size(); ++c) {
        const tnwColumn& oColumn = *vColumns[c];
        ColumnSpec tSpec{oColumn.Key(),       oColumn.Type(),   oColumn.Size(),
                         oColumn.Precision(), oColumn.Flags(),  oColumn.Unit(),
                         oColumn.Visible(),   oColumn.Active(), oColumn.Position()};
        const ColumnSample* pSample = bSample ? &vSamples[c] : nullptr;
        const std::int32_t lAsked = ColumnType(tSpec.sKey);
        if (lAsked != vtEmpty) {
            SetType(tSpec, lAsked, pSample, cMark);
        } else if (pSample && tSpec.lType == vtString && tSpec.lUnit == kNoUnit) {
            // Only what the header left as text: a unit has settled the rest.
            SetType(tSpec, SampledType(*pSample, cMark), pSample, cMark);
        }
        vSpecs.push_back(std::move(tSpec));
    }
    oColumns->Clear();
    for (const ColumnSpec& tSpec : vSpecs) {
        auto oColumn =
            oColumns->Add(tSpec.sKey, "", "", tSpec.lType, tSpec.iSize, tSpec.iPrecision,
                          tSpec.lFlags, 1, tSpec.lUnit, "", tSpec.bVisible, tSpec.bActive);
        if (oColumn) oColumn->SetPosition(tSpec.lPosition);
    }
}

}  // namespace tnw
