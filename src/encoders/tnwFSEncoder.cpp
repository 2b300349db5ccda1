#include "encoders/tnwFSEncoder.h"

#include <charconv>
#include <cmath>
#include <string_view>

#include "core/Error.h"
#include "core/NumberText.h"
#include "support/mLog.h"

namespace tnw {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr int kRateDecimals = 2;
constexpr int kMinuteDecimals = 6;
// The unit lines are the same for every plan.
constexpr std::string_view kUnitLines = "UnitCode=102\r\nUnitText=kg/ha\r\n";

// Count text: a finite whole number in plain digits, no blank, no exponent.
void AppendCountText(std::string& sOut, double dValue) {
    char aText[328];  // the digits of the largest double and a sign
    // Adding 0 turns a negative zero into zero.
    auto res =
        std::to_chars(aText, aText + sizeof aText, dValue + 0.0, std::chars_format::fixed, 0);
    sOut.append(aText, res.ptr);
}

}  // namespace

tnwFSEncoder::~tnwFSEncoder() {
    try {
        CloseFiles();
    } catch (...) {
        // Only the error path itself can fail here, and a destructor cannot pass it on.
    }
}

std::string tnwFSEncoder::RateColumnKey() const {
    return oRateColumn ? oRateColumn->Key() : sRateColumnKey;
}

void tnwFSEncoder::SetRateColumnKey(const std::string& sKey) {
    sRateColumnKey = sKey;
    if (!oColumns) Raise(errObjectNotSet);
    oRateColumn = oColumns->Item(sRateColumnKey);
}

bool tnwFSEncoder::Initialize(const std::string& sFilenameIn,
                              std::shared_ptr<tnwColumns> oColumnsIn,
                              const std::string& sRateColumnKeyIn) {
    bool bResult = false;
    Guard("tnwFSEncoder.Initialize", [&] {
        oColumns = oColumnsIn;
        if (!sRateColumnKeyIn.empty()) sRateColumnKey = sRateColumnKeyIn;
        if (!oColumns) Raise(errObjectNotSet);
        oRateColumn = oColumns->Item(sRateColumnKey);
        bResult = InitializeFile(sFilenameIn, std::move(oColumnsIn));
    });
    return bResult;
}

bool tnwFSEncoder::InitializeFile(const std::string& sFilenameIn,
                                  std::shared_ptr<tnwColumns> oColumnsIn) {
    bool bResult = false;
    const bool bDone = Guard("tnwFSEncoder.InitializeFile", [&] {
        oColumns = std::move(oColumnsIn);
        std::string sName = sFilenameIn;
        if (FileUtility()->Extension(sName).empty()) sName += ".fpd";
        // The builder comes first, so that a missing builder leaves no file behind.
        auto oNewBuffer = CreateAs<tnwStringBuilder>(kProgIdStringBuilder, "Missing Component");
        if (!oNewBuffer) Raise(errNoSuchMethod);
        // A plan still open from an earlier Initialize is finished first: one file per role.
        if (iFile.IsOpen()) CloseFiles();
        bFileNumberTaken = true;
        try {
            iFile.Open(sName);
        } catch (...) {
            return;  // no report of any kind; the taken number makes CloseFiles report
        }
        oBuffer = std::move(oNewBuffer);
        dLonMin = 180.0;
        dLatMin = 90.0;
        dRateMin = 999999999999.0;
        dRateMax = -99999999999.0;
        dPointCount = 0;
        dPolygonCount = 0;
        sFilename = std::move(sName);
        bResult = true;
    });
    if (!bDone) CloseFiles();
    return bResult;
}

bool tnwFSEncoder::Update() {
    bool bResult = false;
    Guard("tnwFSEncoder.Update", [&] {
        if (!oRateColumn || (oRateColumn->Flags() & tnwFlagNumeric) == 0) return;
        const Variant& vRate = oRateColumn->Value();
        const double dRate = vRate.IsEmpty() ? 0.0 : vRate.ToDouble();
        if (dRate < dRateMin) dRateMin = dRate;
        if (dRate > dRateMax) dRateMax = dRate;
        if (auto oMulti = std::dynamic_pointer_cast<IMultiPolygon>(oGeometry)) {
            const std::int32_t lParts = oMulti->NumGeometries();
            for (std::int32_t i = 0; i < lParts; ++i) {
                auto oPart = std::dynamic_pointer_cast<IPolygon>(oMulti->Geometry(i));
                if (!oPart) Raise(errTypeMismatch);
                WriteOnePoly(*oPart, dRate);
            }
        } else if (auto oPolygon = std::dynamic_pointer_cast<IPolygon>(oGeometry)) {
            WriteOnePoly(*oPolygon, dRate);
        }
        oGeometry.reset();
        bResult = true;
    });
    return bResult;
}

// Each line is built whole before it goes to the builder, and the counters and limits move
// only once it is there: a point that fails leaves no part of a line and no gap in the
// sequence numbers.
void tnwFSEncoder::WriteOnePoly(const IPolygon& oPolygon, double dRate) {
    Guard("tnwFSEncoder.WriteOnePoly", [&] {
        dPolygonCount += 1;
        auto oRing = oPolygon.ExteriorRing();
        if (!oRing) Raise(errObjectNotSet);
        const std::int32_t lPoints = oRing->NumPoints();
        for (std::int32_t i = 0; i + 1 < lPoints; ++i) {
            auto oPoint = oRing->Point(i);
            if (!oPoint) Raise(errObjectNotSet);
            const double dX = oPoint->X();
            const double dY = oPoint->Y();
            if (i == 0) {
                m_sRateText.clear();
                AppendNumberText(m_sRateText, RoundHalfEven(dRate, kRateDecimals));
            }
            m_sLine.clear();
            AppendCountText(m_sLine, dPointCount + 1);
            m_sLine += "; P; ";
            AppendCountText(m_sLine, dPolygonCount);
            m_sLine += "; ";
            FormatDegMin(m_sLine, dX);
            m_sLine += "; ";
            FormatDegMin(m_sLine, dY);
            m_sLine += "; ";
            m_sLine += m_sRateText;
            if (!oBuffer) Raise(errObjectNotSet);
            oBuffer->AppendLine(m_sLine);
            dPointCount += 1;
            if (dX < dLonMin) dLonMin = dX;
            if (dY < dLatMin) dLatMin = dY;
        }
    });
}

void tnwFSEncoder::FormatDegMin(std::string& sOut, double dDegrees) const {
    if (!std::isfinite(dDegrees)) Raise(errOverflow);
    const double dWhole = std::trunc(dDegrees);
    if (bSignedZeroDegrees && dWhole == 0.0 && dDegrees < 0.0) sOut += '-';
    AppendCountText(sOut, dWhole);
    sOut += '.';
    const double dAbsolute = std::fabs(dDegrees);
    AppendNumberText(sOut,
                     RoundHalfEven((dAbsolute - std::trunc(dAbsolute)) * 60.0, kMinuteDecimals));
}

// With no rate column the file is still finished: the unit lines are constants. A failure
// abandons the file unfinished, without "[END]", and leaves the file number taken, so that a
// later CloseFiles reports again instead of writing a second header behind the first.
void tnwFSEncoder::CloseFiles() {
    if (!bFileNumberTaken) return;
    const bool bDone = Guard("tnwFSEncoder.CloseFiles", [&] {
        if (!iFile.IsOpen()) Raise(errBadFileNumber);
        std::string sHeader =
            "[HEADER]\r\nFileType=PlanGridData\r\nVersion=01.00.00\r\n"
            "Format=Sequencenumber; P; Polygon number; Point number; Longitude; Latitude; "
            "Application rate\r\n";
        sHeader += "GpsLongitudeMin=";
        FormatDegMin(sHeader, dLonMin);
        sHeader += "\r\nGpsLatitudeMin=";
        FormatDegMin(sHeader, dLatMin);
        sHeader += "\r\nNumberOfPolygons=";
        AppendCountText(sHeader, dPolygonCount);
        sHeader += "\r\nRateMin=";
        AppendNumberText(sHeader, RoundHalfEven(dRateMin, kRateDecimals));
        sHeader += "\r\nRateMax=";
        AppendNumberText(sHeader, RoundHalfEven(dRateMax, kRateDecimals));
        sHeader += "\r\nNumberOfPoints=";
        AppendCountText(sHeader, dPointCount);
        sHeader += kLineEnd;
        sHeader += kUnitLines;
        sHeader += "[DATA]\r\n";
        iFile.Write(sHeader);
        // The data lines end in their own line ends; with none, one empty line stands between
        // "[DATA]" and "[END]".
        const std::string sData = oBuffer->Text();
        iFile.Write(sData);
        if (!sData.ends_with(kLineEnd)) iFile.Write(kLineEnd);
        iFile.Write("[END]\r\n");
        iFile.Close();
        // The text lives in the file now; holding it on would double the memory of a plan.
        oBuffer.reset();
        bFileNumberTaken = false;
    });
    if (!bDone) iFile.Abandon();
}

bool tnwFSEncoder::ImportRS(const std::string& sFilenameIn, std::shared_ptr<tnwRecordSource> oRS,
                            const std::string& sRateColumnKeyIn) {
    const bool bImported =
        detail::ImportRecords(*this, oRS, [&](std::shared_ptr<tnwColumns> oSourceColumns) {
            return Initialize(sFilenameIn, std::move(oSourceColumns), sRateColumnKeyIn);
        });
    if (bImported) CloseFiles();
    return bImported;
}

void tnwFSEncoder::ItnwEncoder_SetGeometry(std::shared_ptr<IGeometry> oGeometryIn) {
    SetGeometry(std::move(oGeometryIn));
}

void tnwFSEncoder::ItnwEncoder_Update() {
    Update();
}

void tnwFSEncoder::ItnwEncoder_CloseFiles() {
    CloseFiles();
}

// An empty key keeps the key set before.
bool tnwFSEncoder::ItnwEncoder_ImportRS(const std::string& sFilenameIn,
                                        std::shared_ptr<tnwRecordSource> oRS) {
    return ImportRS(sFilenameIn, std::move(oRS));
}

bool tnwFSEncoder::ItnwEncoder_Initialize(const std::string& sFilenameIn,
                                          std::shared_ptr<tnwColumns> oColumnsIn) {
    return Initialize(sFilenameIn, std::move(oColumnsIn), RateColumnKey());
}

}  // namespace tnw
