#include "Summary.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <map>

#include "FileKind.h"
#include "Writers.h"
#include "core/Error.h"
#include "core/KeyedList.h"
#include "veld/Summary.h"

namespace tnw::cli {

namespace {

using standins::QuantityDef;
using standins::TrackRecord;

// The measures a log may carry under the names of the summary's fixed columns, and the units
// these are written in.
enum Measure { kElevation, kWidth, kDistance, kDuration, kUTC, kEngaged, kMappable, kMeasures };
constexpr std::array<std::string_view, kMeasures> kMeasureNames = {
    "Elevation", "Width", "Distance", "Duration", "UTC", "Engaged", "Mappable"};
constexpr std::array<std::int32_t, kUTC> kMeasureUnits = {513, 257, 257, 277};
constexpr std::array<const char*, kUTC> kUnitNames = {"feet", "inches", "inches", "seconds"};

// Unit 0 is a unit text the lookup doesn't know, 16 none: both are taken as the output's unit.
bool HasUnit(std::int32_t lUnit) {
    return lUnit != 0 && lUnit != 16;
}

// Seconds since 1970 of a value: a date by its serial day, anything else as the number it is.
double UTCSeconds(const Variant& vValue) {
    constexpr double kUnixEpochSerial = 25569.0;  // 1970-01-01
    if (const SerialDate* pDate = vValue.As<SerialDate>())
        return (pDate->dSerial - kUnixEpochSerial) * 86400.0;
    return vValue.ToDouble();
}

// The summary under construction: one definition per quantity, by the name of its column.
class SummaryBuilder {
public:
    std::shared_ptr<standins::Summary> oSummary = std::make_shared<standins::Summary>();
    std::int64_t lRecords = 0;
    std::int64_t lSkipped = 0;

    // Reads one log into a region of its own.
    void AddLog(const Input& tInput, Console& oConsole);

private:
    struct SeriesColumn {
        std::shared_ptr<tnwColumn> oColumn;
        std::shared_ptr<QuantityDef> oDef;
        std::vector<double> aValues;  // in the column's unit
    };

    std::shared_ptr<QuantityDef> DefOf(const tnwColumn& oColumn);

    KeyedList<std::shared_ptr<QuantityDef>> m_oDefs;
};

std::shared_ptr<QuantityDef> SummaryBuilder::DefOf(const tnwColumn& oColumn) {
    if (const auto* pDef = m_oDefs.Find(oColumn.Key())) return *pDef;
    auto oDef = std::make_shared<QuantityDef>(oColumn.Key(), oColumn.Key(),
                                              HasUnit(oColumn.Unit()) ? oColumn.Unit() : 16);
    m_oDefs.Add(oColumn.Key(), oDef);
    oSummary->AddSeriesDef(oDef);
    return oDef;
}

void SummaryBuilder::AddLog(const Input& tInput, Console& oConsole) {
    tnwDecoderRecordSource& oSource = *tInput.oSource;
    if (oSource.GeometryType() != tnwGeometryPoint) {
        throw Failure(kExitUsage, tInput.sPath +
                                      " has no positions that the tool can find; give "
                                      "--lon-col and --lat-col");
    }
    std::array<std::shared_ptr<tnwColumn>, kMeasures> aMeasures;
    standins::TrackUnits tUnits;
    std::int32_t* aUnits[] = {&tUnits.lElevation, &tUnits.lWidth, &tUnits.lDistance,
                              &tUnits.lDuration};
    std::vector<SeriesColumn> vSeries;
    // The position fields give the records' points, not quantities.
    const auto IsPosition = [&](const tnwColumn& oColumn) {
        return tInput.oText && (oColumn.Position() == tInput.oText->LonCol() ||
                                oColumn.Position() == tInput.oText->LatCol());
    };
    for (const auto& oColumn : oSource.Columns()->Items()) {
        if (!oColumn->Visible() || IsPosition(*oColumn)) continue;
        std::size_t m = 0;
        while (m < kMeasures && !FoldCaseEquals(oColumn->Key(), kMeasureNames[m]))
            ++m;
        if (m < kMeasures) {
            aMeasures[m] = oColumn;
            if (m < kUTC && HasUnit(oColumn->Unit())) *aUnits[m] = oColumn->Unit();
        } else if (oColumn->Flags() == tnwFlagNumeric) {
            vSeries.push_back({oColumn, DefOf(*oColumn), {}});
        }
    }
    // A measure or quantity in a unit that can't become the output's stops here, before the
    // export.
    for (std::size_t m = 0; m < kUTC; ++m) {
        try {
            standins::Converted({}, *aUnits[m], kMeasureUnits[m]);
        } catch (const Error&) {
            throw Failure(kExitInput, "the " + std::string(kMeasureNames[m]) + " of " +
                                          tInput.sPath + " is in unit " +
                                          std::to_string(*aUnits[m]) +
                                          ", which the tool can't turn into " + kUnitNames[m]);
        }
    }

    auto oRegion = std::make_shared<standins::TrackRegion>(tUnits);
    const auto Number = [&](Measure m, double dDefault) {
        return aMeasures[m] ? aMeasures[m]->Value().ToDouble() : dDefault;
    };
    oSource.SetCallback(oConsole.Progress("reading " + tInput.sPath));
    std::int64_t lRecord = 0;  // of this log
    oConsole.SetContext(
        [&] { return "record " + std::to_string(lRecord + 1) + " of " + tInput.sPath; });
    for (oSource.MoveFirst(); !oSource.Eof(); oSource.MoveNext()) {
        const auto oPoint = std::dynamic_pointer_cast<IPoint>(oSource.Geometry());
        if (!oPoint) {
            ++lSkipped;
            continue;
        }
        try {
            TrackRecord tRecord{oPoint->X(),       oPoint->Y(),          Number(kElevation, 0),
                                Number(kWidth, 0), Number(kDistance, 0), Number(kDuration, 0)};
            if (aMeasures[kUTC]) tRecord.dUTC = UTCSeconds(aMeasures[kUTC]->Value());
            if (aMeasures[kEngaged]) tRecord.bEngaged = aMeasures[kEngaged]->Value().ToBool();
            if (aMeasures[kMappable]) tRecord.lMappable = aMeasures[kMappable]->Value().ToLong();
            oRegion->AddRecord(tRecord);
            for (SeriesColumn& tSeries : vSeries)
                tSeries.aValues.push_back(tSeries.oColumn->Value().ToDouble());
        } catch (const Error& oError) {
            throw Failure(kExitInput, "record " + std::to_string(lRecord + 1) + " of " +
                                          tInput.sPath + ": " + oError.sDescription);
        }
        ++lRecord;
    }
    lRecords += lRecord;
    oConsole.SetContext({});
    lSkipped += oSource.RowsSkipped();
    oConsole.EndProgress();

    for (SeriesColumn& tSeries : vSeries) {
        const std::int32_t lUnit = HasUnit(tSeries.oColumn->Unit()) ? tSeries.oColumn->Unit() : 16;
        auto oSeries = std::make_shared<standins::Series>(tSeries.oDef->Key(), tSeries.oDef);
        try {
            for (double dValue : standins::Converted(std::move(tSeries.aValues), lUnit,
                                                     standins::UnitId(tSeries.oDef->Unit())))
                oSeries->Add(dValue);
        } catch (const Error&) {
            throw Failure(kExitInput, "the " + tSeries.oDef->Name() + " of " + tInput.sPath +
                                          " is in unit " + std::to_string(lUnit) +
                                          ", which the tool can't turn into the unit of the "
                                          "first log that has it");
        }
        oRegion->AddSeries(oSeries);
    }
    oSummary->AddRegion(oRegion);
}

}  // namespace

ExitCode Summary(const std::vector<std::string>& vInputs, const InputOptions& tInputOptions,
                 const OutputOptions& tOutput, Console& oConsole) {
    const auto tStart = std::chrono::steady_clock::now();
    const FileKind& tOut = ResolveKind(tOutput.sPath, tOutput.sTo);
    if (!tOut.fnNewWriter) {
        throw Failure(kExitKind, "the tool doesn't write a " + std::string(tOut.sName));
    }
    const std::unique_ptr<RecordWriter> oWriter = tOut.fnNewWriter();

    SummaryBuilder oBuilder;
    for (const std::string& sPath : vInputs) {
        InputOptions tOptions = tInputOptions;
        tOptions.sPath = sPath;
        if (!tOptions.sDelimiter.empty()) tOptions.sDelimiter = ParseDelimiter(tOptions.sDelimiter);
        const Input tInput = OpenInput(tOptions);
        CheckNotInput(tInput.sPath, *oWriter, tOutput.sPath);
        oBuilder.AddLog(tInput, oConsole);
    }
    MakeFolder(tOutput.sPath);
    oWriter->WriteSummary(tOutput, oBuilder.oSummary, oConsole);
    oConsole.EndProgress();

    const double dSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - tStart).count();
    char aSeconds[32];
    std::snprintf(aSeconds, sizeof aSeconds, "%.2f s", dSeconds);
    oConsole.Summary("read " + CountText(oBuilder.lRecords, "record") + " from " +
                     CountText(static_cast<std::int64_t>(vInputs.size()), "log") +
                     ", wrote a summary of " + CountText(oBuilder.lRecords, "point") + " in " +
                     CountText(static_cast<std::int64_t>(vInputs.size()), "region") + " to " +
                     OutputText(oWriter->Files(), oWriter->Detail()) + " in " + aSeconds);
    if (oBuilder.lSkipped > 0) {
        oConsole.Warn(CountText(oBuilder.lSkipped, "data row") +
                      " could not be read or had no position");
    }
    return oBuilder.lSkipped == 0 && oConsole.Reports() == 0 ? kExitOk : kExitRecordsFailed;
}

}  // namespace tnw::cli
