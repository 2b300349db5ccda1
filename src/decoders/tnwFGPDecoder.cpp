#include "decoders/tnwFGPDecoder.h"

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <span>

#include "core/Error.h"
#include "core/NumberText.h"
#include "core/SerialDate.h"
#include "core/StringBuilder.h"
#include "support/mLog.h"

namespace tnw {

namespace {

constexpr double kSecondsPerDay = 86400.0;

// The columns of every set, in order, and where their fields stand in a GPL row (0: none).
struct ColumnSpec {
    const char* sKey;
    std::int32_t lType;
    std::int16_t iSize;
    std::int16_t iPrecision;
    std::int32_t lFlags;
    bool bVisible;
    std::int32_t lPosition;
};
constexpr ColumnSpec kColumns[] = {
    {"Time", vtInt32, 6, 0, 24, false, 0},      {"Altitude", vtDouble, 8, 3, 3, false, 4},
    {"SampleID", vtInt16, 4, 0, 24, true, 5},   {"GPSQuality", vtInt16, 1, 0, 4, false, 6},
    {"HOffset", vtFloat, 5, 2, 3, false, 7},    {"HOffsetDir", vtString, 1, 0, 8, false, 8},
    {"RecordID", vtInt32, 6, 0, 4, true, 9},    {"GPSSpeed", vtFloat, 6, 2, 3, true, 10},
    {"GPSHeading", vtInt16, 3, 0, 3, true, 11}, {"Rate_Rx", vtDouble, 10, 3, 3, true, 12},
    {"Rate_Act", vtDouble, 10, 3, 3, true, 13}, {"Swath", vtDouble, 10, 3, 3, true, 14},
    {"P_PARAM", vtDouble, 10, 3, 3, true, 15},  {"V_PARAM", vtDouble, 10, 3, 3, true, 16},
    {"NDVI", vtDouble, 10, 3, 3, true, 17},     {"VI_2ND", vtDouble, 10, 3, 3, true, 18},
};
// The columns of the point's own values, with PointColumns.
constexpr ColumnSpec kPointColumns[] = {
    {"Longitude", vtDouble, 24, 15, 3, true, 0}, {"Latitude", vtDouble, 24, 15, 3, true, 0},
    {"UTCTime", vtDouble, 24, 3, 3, true, 0},    {"Heading", vtDouble, 24, 6, 3, true, 0},
    {"RegionID", vtInt32, 11, 0, 3, true, 0},    {"AttributeID", vtInt32, 11, 0, 3, true, 0},
};
constexpr std::int32_t kUnit = 16;

std::shared_ptr<tnwColumns> NewColumnList() {
    auto oColumns = CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
    if (!oColumns) Raise(errObjectNotSet, "tnwFGPDecoder.Columns");
    return oColumns;
}

// Adds 1 as a 32-bit counter does: error 6 past its largest value.
void Increment(std::int32_t& lCounter) {
    if (lCounter == std::numeric_limits<std::int32_t>::max()) Raise(errOverflow);
    ++lCounter;
}

// Whole seconds from 1970-01-01 00:00:00 to the date, as a 32-bit number.
std::int32_t SecondsSince1970(SerialDate tDate) {
    const double dSeconds = std::floor(ToUnixSeconds(tDate));
    if (!(dSeconds >= std::numeric_limits<std::int32_t>::min() &&
          dSeconds <= std::numeric_limits<std::int32_t>::max())) {
        Raise(errOverflow);
    }
    return static_cast<std::int32_t>(dSeconds);
}

// The date a value holds: a date, or a text that reads as one.
std::optional<SerialDate> DateOf(const Variant& vValue) {
    if (const auto* t = vValue.As<SerialDate>()) return *t;
    if (const auto* s = vValue.AsString()) return ParseDateText(*s);
    return std::nullopt;
}

double FieldValue(const std::shared_ptr<tnwColumn>& oField) {
    return oField ? oField->Value().ToDouble() : 0.0;
}

// A member of the current point; 0 without one, and whatever goes wrong.
template <class Member>
auto PointMember(const std::shared_ptr<tnwFGPPoint>& oPoint, Member member) {
    using Result = decltype((oPoint.get()->*member)());
    try {
        return oPoint ? ((*oPoint).*member)() : Result{};
    } catch (...) {
        return Result{};
    }
}

void AppendVertex(std::string& sText, const tnwFGPPoint& oVertex) {
    AppendNumberText(sText, oVertex.Longitude());
    sText += ' ';
    AppendNumberText(sText, oVertex.Latitude());
}

}  // namespace

tnwFGPDecoder::tnwFGPDecoder() : oColumns(NewColumnList()) {}

tnwFGPDecoder::~tnwFGPDecoder() {
    CloseFile();
}

void tnwFGPDecoder::SetFilename(const std::string& sValue) {
    const bool bDone = Guard("tnwFGPDecoder.Filename Let", [&] {
        sFilename = sValue;
        oFile = CreateAs<tnwFGPFile>(kProgIdFGPFile, "Missing Component");
        File().Open(sFilename);
        oFDT = OpenFDT();
        oFSN = OpenFSN();
        lBaseTime = SecondsSince1970(FileUtility()->FileDate(sFilename));
        BuildColumns();

        const auto oRegions = oFile->Regions();
        const auto oLines = oFile->Lines();
        const auto oPoints = oFile->Points();
        std::int64_t lTotal = std::int64_t{oRegions->Count()} + oPoints->Count();
        if (bAsSites) {
            for (std::int32_t lLine = 1; lLine <= oLines->Count(); ++lLine)
                lTotal += oLines->Item(lLine)->Count();
        } else {
            lTotal += oLines->Count();
        }
        if (lTotal > std::numeric_limits<std::int32_t>::max()) Raise(errOverflow);
        lTotalRecords = static_cast<std::int32_t>(lTotal);
        bValidFile = true;
    });
    if (!bDone) bValidFile = false;
}

void tnwFGPDecoder::CloseFile() {
    oFile.reset();
    oFDT.reset();
}

tnwFGPFile& tnwFGPDecoder::File() const {
    if (!oFile) Raise(errObjectNotSet, "tnwFGPDecoder");
    return *oFile;
}

std::unique_ptr<tnwDBFDecoder> tnwFGPDecoder::OpenSideTable(const char* sExtension) const {
    if (sFilename.size() < 4) return nullptr;
    try {
        auto oTable = std::make_unique<tnwDBFDecoder>();
        oTable->SetFilename(sFilename.substr(0, sFilename.size() - 4) + sExtension);
        if (oTable->IsValidFile()) return oTable;
    } catch (...) {
        // A side table that can't be read is left out; the reader has said so in its box.
    }
    return nullptr;
}

std::unique_ptr<tnwDBFDecoder> tnwFGPDecoder::OpenFDT() {
    auto oTable = OpenSideTable(".fdt");
    if (oTable) oDateColumn = oTable->Columns()->Item("Date");
    return oTable;
}

std::unique_ptr<tnwDBFDecoder> tnwFGPDecoder::OpenFSN() {
    auto oTable = OpenSideTable(".fsn");
    if (oTable) {
        const auto& oFields = *oTable->Columns();
        oRateAct = oFields.Item("Rate");
        oRateRx = oFields.Item("Rx_Rate");
        oSwath = oFields.Item("Swath_Width");
        oPParam = oFields.Item("P_PARAM");
        oVParam = oFields.Item("V_PARAM");
        oNDVI = oFields.Item("NDVI");
        oVI2ND = oFields.Item("VI_2ND");
    }
    return oTable;
}

void tnwFGPDecoder::BuildColumns() {
    oColumns = NewColumnList();
    const auto AddColumns = [this](std::span<const ColumnSpec> vSpecs) {
        for (const ColumnSpec& t : vSpecs) {
            auto oColumn = oColumns->Add(t.sKey, "", "", t.lType, t.iSize, t.iPrecision, t.lFlags,
                                         1, kUnit, "", t.bVisible, true, Variant(std::string()));
            if (oColumn && t.lPosition > 0) oColumn->SetSource("", t.lPosition);
        }
    };
    AddColumns(kColumns);
    if (oFDT) {
        for (const auto& oColumn : oFDT->Columns()->Items())
            oColumns->AddColumn(oColumn);
    }
    if (bPointColumns) AddColumns(kPointColumns);
    for (const auto& oColumn : oColumns->Items()) {
        if (oColumn->Type() == vtDate || FoldCaseEquals(oColumn->Key(), "date")) {
            oDateColumn = oColumn;
            break;
        }
    }
}

std::string tnwFGPDecoder::FDTSchema() const {
    return oFDT ? oFDT->Schema() : std::string();
}

void tnwFGPDecoder::MoveTable(tnwDBFDecoder& oTable, std::int32_t lRecord) const {
    if (oTable.MoveToRecord(lRecord) || !bEmptyMissingRows) return;
    for (const auto& oField : oTable.Columns()->Items())
        oField->SetValue(Variant());
}

void tnwFGPDecoder::ReadFDTData(std::int32_t lRecord) {
    if (!oFDT || lFDTRecord == lRecord) return;
    Guard("tnwFGPDecoder.ReadFDTData", [&] {
        MoveTable(*oFDT, lRecord);
        sFDTString.clear();
        bool bFirst = true;
        for (const auto& oField : oFDT->Columns()->Items()) {
            const auto oColumn = oColumns->Item(oField->Key());
            if (!oColumn) Raise(errObjectNotSet, "tnwFGPDecoder");
            oColumn->SetValue(oField->Value());
            if (!bFirst) sFDTString += '|';
            bFirst = false;
            sFDTString += oField->Value().ToText();
        }
        lFDTRecord = lRecord;
    });
}

void tnwFGPDecoder::ReadFSNData(std::int32_t lRecord) {
    if (!oFSN) return;
    Guard("tnwFGPDecoder.ReadFSNData", [&] {
        MoveTable(*oFSN, lRecord);
        const std::pair<const char*, const std::shared_ptr<tnwColumn>*> aFields[] = {
            {"Rate_Rx", &oRateRx}, {"Rate_Act", &oRateAct}, {"Swath", &oSwath},
            {"P_PARAM", &oPParam}, {"V_PARAM", &oVParam},   {"NDVI", &oNDVI},
            {"VI_2ND", &oVI2ND}};
        for (const auto& [sKey, pField] : aFields) {
            if (!*pField) continue;
            const auto oColumn = oColumns->Item(sKey);
            if (!oColumn) Raise(errObjectNotSet, "tnwFGPDecoder");
            oColumn->SetValue((*pField)->Value());
        }
    });
}

double tnwFGPDecoder::Longitude() const {
    return PointMember(oPoint, &tnwFGPPoint::Longitude);
}
double tnwFGPDecoder::Latitude() const {
    return PointMember(oPoint, &tnwFGPPoint::Latitude);
}
double tnwFGPDecoder::Altitude() const {
    return PointMember(oPoint, &tnwFGPPoint::Altitude);
}
double tnwFGPDecoder::Heading() const {
    return PointMember(oPoint, &tnwFGPPoint::Heading);
}
std::int32_t tnwFGPDecoder::AttributeID() const {
    return PointMember(oPoint, &tnwFGPPoint::AttributeID);
}
std::int32_t tnwFGPDecoder::RegionID() const {
    return PointMember(oPoint, &tnwFGPPoint::RegionID);
}

double tnwFGPDecoder::UTCTime() {
    double dResult = 0.0;
    Guard("tnwFGPDecoder.UTCTime Get", [&] {
        if (!oPoint) return;
        const double dTime = oPoint->Time();
        if (dTime > kSecondsPerDay) {
            dResult = dTime;
            return;
        }
        if (oDateColumn) {
            if (const auto tDay = DateOf(oDateColumn->Value())) lBaseTime = SecondsSince1970(*tDay);
        }
        dResult = lBaseTime + dTime;
    });
    return dResult;
}

double tnwFGPDecoder::Rate_Act() const {
    return FieldValue(oRateAct);
}
double tnwFGPDecoder::Rate_Rx() const {
    return FieldValue(oRateRx);
}
double tnwFGPDecoder::Swath() const {
    return FieldValue(oSwath);
}
double tnwFGPDecoder::P_PARAM() const {
    return FieldValue(oPParam);
}
double tnwFGPDecoder::V_PARAM() const {
    return FieldValue(oVParam);
}
double tnwFGPDecoder::NDVI() const {
    return FieldValue(oNDVI);
}
double tnwFGPDecoder::VI_2ND() const {
    return FieldValue(oVI2ND);
}

double tnwFGPDecoder::PercentComplete() const {
    if (lTotalRecords < 1) return 100.0;
    return lRecordsRead * 100.0 / lTotalRecords;
}

Variant tnwFGPDecoder::MoveFirst() {
    Variant vResult;
    Guard("tnwFGPDecoder.MoveFirst", [&] {
        iPhase = 1;
        lPartIndex = 1;
        lRecordsRead = 0;
        vResult = Variant(MoveNext());
    });
    return vResult;
}

bool tnwFGPDecoder::MoveNext() {
    bool bResult = false;
    // A loop rather than calling itself again, so that any number of empty lines is passed
    // over in constant stack.
    Guard("tnwFGPDecoder.MoveNext", [&] {
        while (iPhase >= 1 && iPhase <= 3) {
            if (StepInPhase()) {
                if (bPointColumns) FillPointColumns();
                bResult = true;
                return;
            }
        }
    });
    return bResult;
}

bool tnwFGPDecoder::StepInPhase() {
    const auto PhaseRanOut = [this] {
        ++iPhase;
        lPartIndex = 1;
        if (iPhase == 2) oPointList.reset();  // nothing of the regions carries over
        return false;
    };
    const auto WholePart = [this](const tnwFGPPartList& oParts) {
        Increment(lRecordsRead);
        oPointList = oParts.Item(lPartIndex);
        Increment(lPartIndex);
        return true;
    };
    switch (iPhase) {
        case 1: {
            const auto oRegions = File().Regions();
            if (lPartIndex > oRegions->Count()) return PhaseRanOut();
            return WholePart(*oRegions);
        }
        case 2: {
            const auto oLines = File().Lines();
            if (lPartIndex > oLines->Count()) return PhaseRanOut();
            if (!bAsSites) return WholePart(*oLines);
            if (!oPointList) {
                oPointList = oLines->Item(lPartIndex);
                lVertexIndex = 0;
            }
            if (lVertexIndex >= oPointList->Count()) {
                oPointList.reset();
                Increment(lPartIndex);
                return false;
            }
            ++lVertexIndex;
            Increment(lRecordsRead);
            oPoint = oPointList->Item(lVertexIndex);
            ReadPointRows();
            return true;
        }
        default: {
            const auto oPoints = File().Points();
            if (lPartIndex > oPoints->Count()) return PhaseRanOut();
            Increment(lRecordsRead);
            oPoint = oPoints->Item(lPartIndex);
            ReadPointRows();
            Increment(lPartIndex);
            return true;
        }
    }
}

void tnwFGPDecoder::FillPointColumns() {
    static constexpr const char* kKeys[] = {"Longitude", "Latitude", "Altitude",   "UTCTime",
                                            "Heading",   "RegionID", "AttributeID"};
    std::array<Variant, std::size(kKeys)> aValues;
    if (iPhase == 3 || (iPhase == 2 && bAsSites)) {
        // "Altitude" is one of the set's own columns, with its 3 decimals.
        aValues = {Longitude(), Latitude(),   RoundHalfEven(Altitude(), 3), UTCTime(), Heading(),
                   RegionID(),  AttributeID()};
    }
    for (std::size_t i = 0; i < aValues.size(); ++i) {
        if (const auto oColumn = oColumns->Item(kKeys[i])) oColumn->SetValue(aValues[i]);
    }
}

void tnwFGPDecoder::ReadPointRows() {
    ReadFSNData(oPoint->FSNRecord());
    ReadFDTData(oPoint->AttributeID());
}

std::string tnwFGPDecoder::WKT() {
    switch (iPhase) {
        case 1:
            return ConvertToPolygon(oPointList);
        case 2:
            return ConvertToLineString(oPointList);
        default:
            return ConvertToPoint(oPoint);
    }
}

std::string tnwFGPDecoder::ConvertList(const char* sSource, const char* sOpening,
                                       const std::shared_ptr<tnwFGPPointList>& oList) {
    std::string sResult;
    Guard(sSource, [&] {
        if (!oList) Raise(errObjectNotSet, "tnwFGPDecoder");
        const auto oBuilder = CreateAs<tnwStringBuilder>(kProgIdStringBuilder, "Missing Component");
        if (!oBuilder) Raise(errObjectNotSet, "tnwFGPDecoder");
        oBuilder->Append(sOpening);
        std::string sVertex;
        for (std::int32_t lIndex = 1; lIndex <= oList->Count(); ++lIndex) {
            sVertex.clear();
            AppendVertex(sVertex, *oList->Item(lIndex));
            oBuilder->Append(sVertex);
            oBuilder->SetSeparator(",");
        }
        oBuilder->SetSeparator("");
        oBuilder->Append("))");
        sResult = oBuilder->Text();
    });
    return sResult;
}

std::string tnwFGPDecoder::ConvertToPolygon(const std::shared_ptr<tnwFGPPointList>& oList) {
    return ConvertList("tnwFGPDecoder.ConvertToPolygon", "POLYGON((", oList);
}

std::string tnwFGPDecoder::ConvertToLineString(const std::shared_ptr<tnwFGPPointList>& oList) {
    return ConvertList("tnwFGPDecoder.ConvertToLineString", "LineString((", oList);
}

std::string tnwFGPDecoder::ConvertToPoint(const std::shared_ptr<tnwFGPPoint>& oAt) {
    std::string sResult;
    Guard("tnwFGPDecoder.ConvertToPoint", [&] {
        if (!oAt) Raise(errObjectNotSet, "tnwFGPDecoder");
        std::string sText = "POINT(";
        AppendVertex(sText, *oAt);
        sText += ')';
        sResult = std::move(sText);
    });
    return sResult;
}

}  // namespace tnw
