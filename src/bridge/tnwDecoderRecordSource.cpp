#include "bridge/tnwDecoderRecordSource.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "core/Error.h"
#include "core/FGPFile.h"
#include "platform/File.h"
#include "support/mLog.h"

namespace tnw {

namespace {

constexpr std::int64_t kMaxCount = std::numeric_limits<std::int32_t>::max();

// A second reader of the same text file, set up alike, for looking ahead without moving the
// host's cursor. Its columns stay empty: only the row structure and the geometry fields count.
void SetUpTwin(const tnwASCIIDecoder& oDecoder, tnwASCIIDecoder& oTwin) {
    oTwin.SetDelimiter(oDecoder.Delimiter());
    oTwin.SetHeaderRows(oDecoder.HeaderRows());
    oTwin.SetLineFeedEndsLine(oDecoder.LineFeedEndsLine());
    oTwin.SetQuotedLineBreaks(oDecoder.QuotedLineBreaks());
    oTwin.SetFilename(oDecoder.Filename());
}

// The first non-empty well-known text of the file that the parser takes, or nothing. Rows or
// texts that fail are passed over here without a report: the walk itself reports them.
template <class Twin>
std::shared_ptr<IGeometry> FirstParsedGeometry(Twin& oTwin,
                                               const tnwDecoderRecordSource::WKTParser& fnParse) {
    try {
        if (oTwin.MoveFirst().IsEmpty()) return nullptr;
        while (!oTwin.Eof()) {
            const std::string sWKT = oTwin.WKT();
            if (!sWKT.empty()) {
                try {
                    if (auto oGeometry = fnParse(sWKT)) return oGeometry;
                } catch (const std::exception&) {
                }
            }
            oTwin.MoveNext();
        }
    } catch (const std::exception&) {
    }
    return nullptr;
}

}  // namespace

tnwDecoderRecordSource::tnwDecoderRecordSource(std::shared_ptr<tnwASCIIDecoder> oDecoder,
                                               WKTParser fnParseWKT)
    : tnwDecoderRecordSource(Decoder(std::move(oDecoder)), std::move(fnParseWKT)) {}

tnwDecoderRecordSource::tnwDecoderRecordSource(std::shared_ptr<tnwDBFDecoder> oDecoder,
                                               WKTParser fnParseWKT)
    : tnwDecoderRecordSource(Decoder(std::move(oDecoder)), std::move(fnParseWKT)) {}

tnwDecoderRecordSource::tnwDecoderRecordSource(std::shared_ptr<tnwFGPDecoder> oDecoder,
                                               WKTParser fnParseWKT, std::int16_t iPhase)
    : tnwDecoderRecordSource(Decoder(std::move(oDecoder)), std::move(fnParseWKT)) {
    m_iPhase = iPhase;
}

tnwDecoderRecordSource::tnwDecoderRecordSource(Decoder oDecoder, WKTParser fnParseWKT)
    : m_oDecoder(std::move(oDecoder)), m_fnParseWKT(std::move(fnParseWKT)) {
    if (std::visit([](const auto& d) { return d == nullptr; }, m_oDecoder)) {
        Raise(errObjectNotSet, "tnwDecoderRecordSource");
    }
    m_oFactory = CreateAs<tnwGISFactory>(kProgIdGISFactory, "Missing Component");
    if (!m_oFactory) Raise(errCantCreateObject, "tnwDecoderRecordSource");
}

void tnwDecoderRecordSource::MoveFirst() {
    m_lRecordsRead = 0;
    m_lRowsSkipped = 0;
    m_lStartRows = 0;
    m_lStopRows = 0;
    m_iPercentShown = -1;
    if (m_oCallback) {
        m_oCallback->SetBarCount(1);
        m_oCallback->SetBarText(0, "");
        m_oCallback->SetBarRange(0, 0.0, 100.0);
    }
    // The empty value: the file could not be opened, or it ended within the header rows.
    const Variant vRead = std::visit([](const auto& d) { return d->MoveFirst(); }, m_oDecoder);
    const bool* pRead = vRead.As<bool>();
    Arrive(pRead && *pRead);
}

void tnwDecoderRecordSource::MoveNext() {
    if (!m_bOnRecord) return;
    Arrive(std::visit([](const auto& d) { return d->MoveNext(); }, m_oDecoder));
}

void tnwDecoderRecordSource::Arrive(bool bRead) {
    // Only the text reader stops at a refused row with the file still open; a table passes its
    // read errors up.
    if (auto* pText = std::get_if<std::shared_ptr<tnwASCIIDecoder>>(&m_oDecoder)) {
        tnwASCIIDecoder& oText = **pText;
        while (!oText.Eof()) {
            if (!bRead) {
                ++m_lRowsSkipped;
            } else if (oText.GPLStart()) {
                ++m_lStartRows;
            } else if (oText.GPLEnd()) {
                ++m_lStopRows;
            } else {
                break;
            }
            bRead = oText.MoveNext();
        }
    }
    // An FGP set delivers its phases in order: the kept one is reached or passed.
    if (auto* pSet = std::get_if<std::shared_ptr<tnwFGPDecoder>>(&m_oDecoder); pSet && m_iPhase) {
        tnwFGPDecoder& oSet = **pSet;
        while (bRead && oSet.Phase() < m_iPhase)
            bRead = oSet.MoveNext();
        bRead = bRead && oSet.Phase() == m_iPhase;
    }
    m_bOnRecord = bRead;
    if (bRead) ++m_lRecordsRead;
    m_oGeometry.reset();
    m_bGeometryMade = false;
    ReportProgress();
}

void tnwDecoderRecordSource::ReportProgress() {
    if (!m_oCallback) return;
    double dPercent = 100.0;
    if (m_bOnRecord) {
        dPercent = std::visit(
            [this](const auto& d) {
                if constexpr (std::is_same_v<std::decay_t<decltype(*d)>, tnwDBFDecoder>) {
                    const std::int32_t lCount = RecordCount();
                    return lCount > 0 ? static_cast<double>(m_lRecordsRead) * 100.0 / lCount
                                      : 100.0;
                } else {
                    return d->PercentComplete();
                }
            },
            m_oDecoder);
    }
    const int iPercent = static_cast<int>(std::clamp(std::floor(dPercent), 0.0, 100.0));
    if (iPercent == m_iPercentShown) return;
    m_iPercentShown = iPercent;
    m_oCallback->SetBarValue(0, iPercent);
}

TNW_Encoders_GeometryFormats tnwDecoderRecordSource::Format() const {
    return std::visit(
        [](const auto& d) {
            if constexpr (std::is_same_v<std::decay_t<decltype(*d)>, tnwFGPDecoder>) {
                return TNW_GeometryFormat_WKT;
            } else {
                return d->GeometryFormat();
            }
        },
        m_oDecoder);
}

std::int32_t tnwDecoderRecordSource::RecordCount() const {
    if (m_lRecordCount < 0) {
        m_lRecordCount = std::visit(
            [this](const auto& d) {
                using Kind = std::decay_t<decltype(*d)>;
                if constexpr (std::is_same_v<Kind, tnwASCIIDecoder>) {
                    return CountTextRecords(*d);
                } else if constexpr (std::is_same_v<Kind, tnwDBFDecoder>) {
                    return CountTableRecords(*d);
                } else {
                    const auto aCounts = CountFGPRecords(*d);
                    const std::int64_t lCount =
                        m_iPhase ? aCounts[m_iPhase - 1] : aCounts[0] + aCounts[1] + aCounts[2];
                    return static_cast<std::int32_t>(std::min(lCount, kMaxCount));
                }
            },
            m_oDecoder);
    }
    return m_lRecordCount;
}

std::int32_t tnwDecoderRecordSource::CountTextRecords(const tnwASCIIDecoder& oDecoder) const {
    tnwASCIIDecoder oTwin;
    SetUpTwin(oDecoder, oTwin);
    if (oTwin.MoveFirst().IsEmpty()) return 0;
    // Each move that leaves the file open has consumed one row, read or refused, or a command.
    std::int64_t lCount = 0;
    while (!oTwin.Eof() && lCount < kMaxCount) {
        if (!oTwin.GPLStart() && !oTwin.GPLEnd()) ++lCount;
        oTwin.MoveNext();
    }
    return static_cast<std::int32_t>(lCount);
}

std::int32_t tnwDecoderRecordSource::CountTableRecords(const tnwDBFDecoder& oDecoder) const {
    if (!oDecoder.IsValidFile()) return 0;
    platform::InputFile oFile;
    oFile.Open(oDecoder.Filename());
    unsigned char aCount[4] = {};
    oFile.Seek(4);
    if (oFile.Read(aCount, sizeof aCount) < sizeof aCount) return 0;
    const std::uint32_t nCount = aCount[0] | (aCount[1] << 8) | (aCount[2] << 16) |
                                 (static_cast<std::uint32_t>(aCount[3]) << 24);
    return static_cast<std::int32_t>(std::min<std::uint32_t>(nCount, kMaxCount));
}

std::array<std::int64_t, 3> tnwDecoderRecordSource::CountFGPRecords(
    const tnwFGPDecoder& oDecoder) const {
    if (!oDecoder.IsValidFile()) return {};
    const auto oFile = CreateAs<tnwFGPFile>(kProgIdFGPFile, "Missing Component");
    if (!oFile) Raise(errCantCreateObject, "tnwDecoderRecordSource");
    oFile->Open(oDecoder.Filename());
    const auto oLines = oFile->Lines();
    std::int64_t lLineRecords = oLines->Count();
    if (oDecoder.AsSites()) {
        lLineRecords = 0;
        for (std::int32_t lLine = 1; lLine <= oLines->Count(); ++lLine)
            lLineRecords += oLines->Item(lLine)->Count();
    }
    return {oFile->Regions()->Count(), lLineRecords, oFile->Points()->Count()};
}

std::int32_t tnwDecoderRecordSource::GeometryType() const {
    if (m_eGeometryType != 0) return m_eGeometryType;
    if (auto* pSet = std::get_if<std::shared_ptr<tnwFGPDecoder>>(&m_oDecoder)) {
        const auto aCounts = CountFGPRecords(**pSet);
        const bool bSites = (*pSet)->AsSites();
        for (std::int16_t iPhase = 1; iPhase <= 3; ++iPhase) {
            if (m_iPhase ? iPhase != m_iPhase : aCounts[iPhase - 1] == 0) continue;
            if (iPhase == 1) return tnwGeometryRegion;
            return iPhase == 2 && !bSites ? tnwGeometryLine : tnwGeometryPoint;
        }
        return 0;
    }
    switch (Format()) {
        case TNW_GeometryFormat_LonLat:
            return 1;
        case TNW_GeometryFormat_WKT:
            break;
        default:
            return 0;
    }
    if (!m_fnParseWKT) return 0;
    std::shared_ptr<IGeometry> oFirst;
    if (auto* pText = std::get_if<std::shared_ptr<tnwASCIIDecoder>>(&m_oDecoder)) {
        tnwASCIIDecoder oTwin;
        SetUpTwin(**pText, oTwin);
        oTwin.SetWKTCol((*pText)->WKTCol());
        oFirst = FirstParsedGeometry(oTwin, m_fnParseWKT);
    } else {
        const tnwDBFDecoder& oTable = *std::get<std::shared_ptr<tnwDBFDecoder>>(m_oDecoder);
        tnwDBFDecoder oTwin;
        oTwin.SetFilename(oTable.Filename());
        oTwin.SetWKTCol(oTable.WKTCol());
        oFirst = FirstParsedGeometry(oTwin, m_fnParseWKT);
    }
    return oFirst ? GeometryTypeOf(oFirst->GeometryType()) : 0;
}

std::shared_ptr<IGeometry> tnwDecoderRecordSource::Geometry() const {
    if (!m_bOnRecord) return nullptr;
    if (m_bGeometryMade) return m_oGeometry;
    m_bGeometryMade = true;
    if (m_fnRowGeometry) {
        // Rows are passed over in text only, so a table's row is the count of records read.
        Guard("tnwDecoderRecordSource.Geometry",
              [&] { m_oGeometry = m_fnRowGeometry(m_lRecordsRead + m_lRowsSkipped); });
        return m_oGeometry;
    }
    if (auto* pSet = std::get_if<std::shared_ptr<tnwFGPDecoder>>(&m_oDecoder)) {
        m_oGeometry = FGPGeometry(**pSet);
        return m_oGeometry;
    }
    switch (Format()) {
        case TNW_GeometryFormat_LonLat: {
            // A text row with an empty position field has no place: 0, 0 would be made up.
            if (auto* pText = std::get_if<std::shared_ptr<tnwASCIIDecoder>>(&m_oDecoder);
                pText && !(*pText)->HasPosition())
                break;
            const auto [dX, dY] = std::visit(
                [](const auto& d) { return std::pair(d->Longitude(), d->Latitude()); }, m_oDecoder);
            m_oGeometry = m_oFactory->CreatePoint(dX, dY, nullptr);
            break;
        }
        case TNW_GeometryFormat_WKT: {
            const std::string sWKT = std::visit([](const auto& d) { return d->WKT(); }, m_oDecoder);
            if (sWKT.empty() || !m_fnParseWKT) break;
            Guard("tnwDecoderRecordSource.Geometry", [&] { m_oGeometry = m_fnParseWKT(sWKT); });
            break;
        }
        default:
            break;
    }
    return m_oGeometry;
}

std::shared_ptr<IGeometry> tnwDecoderRecordSource::FGPGeometry(tnwFGPDecoder& oSet) const {
    const std::int16_t iPhase = oSet.Phase();
    if (iPhase == 3 || (iPhase == 2 && oSet.AsSites())) {
        return m_oFactory->CreatePoint(oSet.Longitude(), oSet.Latitude(), nullptr);
    }
    // Standard text of the region (its ring closed) or line, with each number's shortest
    // text that reads back the same.
    const auto oList = oSet.CurrentList();
    if (!m_fnParseWKT || !oList || oList->Count() == 0) return nullptr;
    std::shared_ptr<IGeometry> oGeometry;
    Guard("tnwDecoderRecordSource.Geometry", [&] {
        std::string sText = iPhase == 1 ? "POLYGON((" : "LINESTRING(";
        const auto AppendVertex = [&sText](const tnwFGPPoint& oVertex) {
            char aNumber[64];
            for (double dValue : {oVertex.Longitude(), oVertex.Latitude()}) {
                sText.append(aNumber, std::to_chars(aNumber, std::end(aNumber), dValue).ptr);
                sText += ' ';
            }
            sText.back() = ',';
        };
        const auto oFirst = oList->Item(1);
        for (std::int32_t i = 1; i <= oList->Count(); ++i)
            AppendVertex(i == 1 ? *oFirst : *oList->Item(i));
        const auto oLast = oList->Item(oList->Count());
        if (iPhase == 1 && (oLast->Longitude() != oFirst->Longitude() ||
                            oLast->Latitude() != oFirst->Latitude())) {
            AppendVertex(*oFirst);
        }
        sText.back() = ')';
        if (iPhase == 1) sText += ')';
        oGeometry = m_fnParseWKT(sText);
    });
    return oGeometry;
}

std::shared_ptr<tnwColumns> tnwDecoderRecordSource::Columns() const {
    return std::visit([](const auto& d) { return d->Columns(); }, m_oDecoder);
}

std::int32_t tnwDecoderRecordSource::GeometryTypeOf(std::int32_t lOGCType) {
    switch (lOGCType) {
        case ogcPoint:
            return 1;
        case ogcLineString:
        case ogcMultiLineString:
            return 2;
        case ogcPolygon:
        case ogcMultiPolygon:
            return 3;
        case ogcMultiPoint:
            return 4;
        default:
            return 0;
    }
}

}  // namespace tnw
