// The library's side of the workloads, driven through its public API as a host drives it: the
// host's own columns and geometry objects (the stand-ins of the GIS object library), column
// values set for each record, SetGeometry and Update; MoveFirst, MoveNext and the columns'
// values on the read side.
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "RegisterStandIns.h"
#include "Rival.h"
#include "core/GISLib.h"
#include "decoders/tnwDBFDecoder.h"
#include "delimited/tnwASCIIDecoder.h"
#include "gislib/Columns.h"
#include "log/ErrorReports.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::bench {
namespace {

using ColumnRef = std::shared_ptr<tnwColumn>;

// Every failure inside the library goes to the error handler rather than to the caller; a run
// that produced any report has failed.
void ThrowOnErrorReports() {
    auto vReports = standins::ErrorReports();
    if (vReports.empty()) return;
    const standins::ErrorReport& t = vReports.front();
    throw std::runtime_error(std::to_string(vReports.size()) + " error reports, the first " +
                             t.sSource + ": " + t.sDescription);
}

std::shared_ptr<tnwColumns> NewColumns() {
    return CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
}

ColumnRef AddColumn(tnwColumns& oColumns, const char* sKey, std::int32_t lType, std::int16_t iSize,
                    std::int16_t iPrecision) {
    std::int32_t lFlags = lType == vtString    ? tnwFlagText
                          : lType == vtBoolean ? tnwFlagLogical
                                               : tnwFlagNumeric;
    ColumnRef oColumn =
        oColumns.Add(sKey, "", "", lType, iSize, iPrecision, lFlags, 1, 0, "", true, true);
    if (!oColumn) throw std::runtime_error(std::string("cannot add column ") + sKey);
    return oColumn;
}

// The finished encoder: the set is closed and every record went out.
void Finish(tnwShapeEncoder& oEncoder, std::int64_t lWritten, std::int64_t lRecords) {
    oEncoder.CloseFiles();
    ThrowOnErrorReports();
    if (lWritten != lRecords) throw std::runtime_error("Update did not write every record");
}

WorkloadResult WritePoints(const WorkloadArgs& tArgs) {
    auto oColumns = NewColumns();
    ColumnRef oElevation = AddColumn(*oColumns, "Elevation", vtDouble, 8, 1);
    ColumnRef oWidth = AddColumn(*oColumns, "Width", vtDouble, 6, 2);
    ColumnRef oDistance = AddColumn(*oColumns, "Distance", vtDouble, 8, 3);
    ColumnRef oDuration = AddColumn(*oColumns, "Duration", vtDouble, 6, 2);
    ColumnRef oUTC = AddColumn(*oColumns, "UTC", vtInt32, 12, 0);
    ColumnRef oEngaged = AddColumn(*oColumns, "Engaged", vtBoolean, 1, 0);
    ColumnRef oMappable = AddColumn(*oColumns, "Mappable", vtInt32, 4, 0);
    ColumnRef oCrop = AddColumn(*oColumns, "Crop", vtString, 16, 0);
    auto oFactory = CreateAs<tnwGISFactory>(kProgIdGISFactory, "Missing Component");

    tnwShapeEncoder oEncoder;
    if (!oEncoder.Initialize(tArgs.sOutput + ".shp", oColumns, tnwGeometryPoint)) {
        ThrowOnErrorReports();
        throw std::runtime_error("Initialize failed");
    }
    std::int64_t lWritten = 0;
    for (std::int64_t i = 0; i < tArgs.lRecords; ++i) {
        W1Record t = MakeW1Record(i);
        oElevation->SetValue(t.dElevation);
        oWidth->SetValue(t.dWidth);
        oDistance->SetValue(t.dDistance);
        oDuration->SetValue(t.dDuration);
        oUTC->SetValue(t.lUTC);
        oEngaged->SetValue(t.bEngaged);
        oMappable->SetValue(t.lMappable);
        oCrop->SetValue(std::string(t.sCrop));
        oEncoder.SetGeometry(oFactory->CreatePoint(t.dX, t.dY, nullptr));
        lWritten += oEncoder.Update();
    }
    Finish(oEncoder, lWritten, tArgs.lRecords);
    return {lWritten, {}};
}

WorkloadResult WritePolygons(const WorkloadArgs& tArgs) {
    auto oColumns = NewColumns();
    ColumnRef oRate = AddColumn(*oColumns, "Rate", vtDouble, 10, 3);
    ColumnRef oZone = AddColumn(*oColumns, "Zone", vtInt32, 6, 0);
    ColumnRef oName = AddColumn(*oColumns, "Name", vtString, 20, 0);

    tnwShapeEncoder oEncoder;
    if (!oEncoder.Initialize(tArgs.sOutput + ".shp", oColumns, tnwGeometryRegion)) {
        ThrowOnErrorReports();
        throw std::runtime_error("Initialize failed");
    }
    W2Offsets tOffsets;
    W2Record t;
    // The host's coordinate buffers, reused; each record gets a polygon object of its own.
    std::vector<std::vector<standins::Coordinate>> aRings = {
        std::vector<standins::Coordinate>(kW2ExteriorPoints),
        std::vector<standins::Coordinate>(kW2HolePoints)};
    std::int64_t lWritten = 0;
    for (std::int64_t k = 0; k < tArgs.lRecords; ++k) {
        MakeW2Record(k, tOffsets, t);
        for (int j = 0; j < kW2ExteriorPoints; ++j)
            aRings[0][j] = {t.adX[j], t.adY[j]};
        for (int j = 0; j < kW2HolePoints; ++j) {
            aRings[1][j] = {t.adX[kW2ExteriorPoints + j], t.adY[kW2ExteriorPoints + j]};
        }
        oRate->SetValue(t.dRate);
        oZone->SetValue(t.lZone);
        oName->SetValue(std::string(t.sName, static_cast<std::size_t>(t.nNameLength)));
        oEncoder.SetGeometry(std::make_shared<standins::Polygon>(aRings));
        lWritten += oEncoder.Update();
    }
    Finish(oEncoder, lWritten, tArgs.lRecords);
    return {lWritten, {}};
}

// The columns of a reader, by key.
ColumnRef ColumnOf(const tnwColumns& oColumns, const char* sKey) {
    ColumnRef oColumn = oColumns.Item(sKey);
    if (!oColumn) throw std::runtime_error(std::string("no column ") + sKey);
    return oColumn;
}

double DoubleOf(const ColumnRef& oColumn) {
    const double* pValue = oColumn->Value().As<double>();
    if (!pValue) throw std::runtime_error(oColumn->Key() + " holds no double");
    return *pValue;
}

std::size_t TextLengthOf(const ColumnRef& oColumn) {
    const std::string* pText = oColumn->Value().AsString();
    if (!pText) throw std::runtime_error(oColumn->Key() + " holds no text");
    return pText->size();
}

bool MovedFirst(const Variant& vMoved) {
    const bool* pMoved = vMoved.As<bool>();
    return pMoved && *pMoved;
}

WorkloadResult ReadTable(const WorkloadArgs& tArgs) {
    tnwDBFDecoder oReader;
    oReader.SetFilename(tArgs.sInput);
    const tnwColumns& oColumns = *oReader.Columns();
    ColumnRef aNumbers[4] = {ColumnOf(oColumns, "Elevation"), ColumnOf(oColumns, "Width"),
                             ColumnOf(oColumns, "Distance"), ColumnOf(oColumns, "Duration")};
    ColumnRef oUTC = ColumnOf(oColumns, "UTC");
    ColumnRef oEngaged = ColumnOf(oColumns, "Engaged");
    ColumnRef oMappable = ColumnOf(oColumns, "Mappable");
    ColumnRef oCrop = ColumnOf(oColumns, "Crop");

    // The reader only ever assigns true to a logical; the host clears it before each move so
    // that a false record reads as false.
    oEngaged->SetValue(false);
    Checksum tSum;
    for (bool bMoved = MovedFirst(oReader.MoveFirst()); bMoved; bMoved = oReader.MoveNext()) {
        for (const ColumnRef& oColumn : aNumbers)
            tSum.dSum += DoubleOf(oColumn);
        tSum.lSum += static_cast<std::int64_t>(DoubleOf(oUTC));
        const bool* pEngaged = oEngaged->Value().As<bool>();
        if (pEngaged && *pEngaged) ++tSum.lSum;
        tSum.lSum += static_cast<std::int64_t>(DoubleOf(oMappable));
        tSum.lSum += static_cast<std::int64_t>(TextLengthOf(oCrop));
        ++tSum.lRecords;
        oEngaged->SetValue(false);
    }
    ThrowOnErrorReports();
    return {tSum.lRecords, tSum.Text()};
}

WorkloadResult ReadCsv(const WorkloadArgs& tArgs) {
    tnwASCIIDecoder oReader;
    oReader.SetFilename(tArgs.sInput);
    oReader.SetHeaderRows(1);
    // The host's own columns: the header has no units, which would make every column text.
    tnwColumns& oColumns = *oReader.Columns();
    oColumns.Clear();
    std::vector<ColumnRef> vColumns;
    for (const char* sKey :
         {"lon", "lat", "elevation", "width", "distance", "duration", "utc", "mappable", "speed"}) {
        vColumns.push_back(AddColumn(oColumns, sKey, vtDouble, 16, 6));
    }
    ColumnRef oName = AddColumn(oColumns, "name", vtString, 254, 0);

    Checksum tSum;
    for (bool bMoved = MovedFirst(oReader.MoveFirst()); bMoved; bMoved = oReader.MoveNext()) {
        for (int i : {0, 1, 2, 3, 4, 5, 8})
            tSum.dSum += DoubleOf(vColumns[i]);
        tSum.lSum += static_cast<std::int64_t>(DoubleOf(vColumns[6]));
        tSum.lSum += static_cast<std::int64_t>(DoubleOf(vColumns[7]));
        tSum.lSum += static_cast<std::int64_t>(TextLengthOf(oName));
        ++tSum.lRecords;
    }
    ThrowOnErrorReports();
    return {tSum.lRecords, tSum.Text()};
}

WorkloadResult Run(WorkloadFunction fnRun, const WorkloadArgs& tArgs) {
    standins::RegisterStandIns();
    standins::ClearErrorReports();
    return fnRun(tArgs);
}

const Implementation kLibrary = {"library",
                                 {[](const WorkloadArgs& t) { return Run(WritePoints, t); },
                                  [](const WorkloadArgs& t) { return Run(WritePolygons, t); },
                                  [](const WorkloadArgs& t) { return Run(ReadTable, t); },
                                  [](const WorkloadArgs& t) { return Run(ReadCsv, t); }}};

}  // namespace

const Implementation* LibraryImplementation() {
    return &kLibrary;
}

}  // namespace tnw::bench
