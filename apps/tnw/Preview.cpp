#include "Preview.h"

#include <chrono>
#include <cstdio>
#include <filesystem>

#include "ShapeFile.h"
#include "SvgMap.h"
#include "core/Error.h"
#include "platform/File.h"

namespace tnw::cli {

namespace fs = std::filesystem;

namespace {

// The column to colour by, found without regard to case; nothing when none is asked for.
std::shared_ptr<tnwColumn> FindColumn(const std::shared_ptr<tnwColumns>& oColumns,
                                      const std::string& sKey, const std::string& sPath) {
    if (sKey.empty()) return nullptr;
    if (auto oColumn = oColumns->Item(sKey)) return oColumn;
    std::string sKeys;
    for (const auto& oColumn : oColumns->Items()) {
        if (oColumn->Visible()) sKeys += (sKeys.empty() ? "" : ", ") + oColumn->Key();
    }
    throw Failure(kExitUsage,
                  "there is no column \"" + sKey + "\" in " + sPath +
                      (sKeys.empty() ? std::string(", which has none") : "; it has " + sKeys));
}

MapValue ValueOf(const tnwColumn& oColumn) {
    MapValue tValue;
    const Variant& vValue = oColumn.Value();
    if (vValue.IsEmpty() || vValue.IsAbsent()) return tValue;
    if (vValue.IsNumeric()) {
        tValue.eKind = MapValue::Kind::Number;
        tValue.dNumber = vValue.ToDouble();
    } else {
        tValue.eKind = MapValue::Kind::Text;
        tValue.sText = oColumn.Text();
    }
    return tValue;
}

void AddParts(const IGeometry& oGeometry, Shape& tShape) {
    if (const auto* pPoint = dynamic_cast<const IPoint*>(&oGeometry)) {
        tShape.eKind = Shape::Kind::Point;
        tShape.vParts.push_back({XY{pPoint->X(), pPoint->Y()}});
    } else if (const auto* pLine = dynamic_cast<const ILineString*>(&oGeometry)) {
        tShape.eKind = Shape::Kind::Line;
        std::vector<XY>& vPart = tShape.vParts.emplace_back();
        for (std::int32_t l = 0; l < pLine->NumPoints(); ++l) {
            const auto oPoint = pLine->Point(l);
            vPart.push_back({oPoint->X(), oPoint->Y()});
        }
    } else if (const auto* pPolygon = dynamic_cast<const IPolygon*>(&oGeometry)) {
        const auto fnRing = [&](const std::shared_ptr<ILineString>& oRing) {
            if (!oRing) return;
            AddParts(*oRing, tShape);
        };
        fnRing(pPolygon->ExteriorRing());
        for (std::int32_t l = 0; l < pPolygon->NumInteriorRings(); ++l) {
            fnRing(pPolygon->InteriorRing(l));
        }
        tShape.eKind = Shape::Kind::Polygon;
    } else if (const auto* pCollection = dynamic_cast<const IGeometryCollection*>(&oGeometry)) {
        Shape::Kind eKind = Shape::Kind::None;
        for (std::int32_t l = 0; l < pCollection->NumGeometries(); ++l) {
            if (const auto oMember = pCollection->Geometry(l)) {
                AddParts(*oMember, tShape);
                if (eKind == Shape::Kind::None) eKind = tShape.eKind;
            }
        }
        tShape.eKind = eKind;
    }
}

// Any input that opens as a record source with a geometry.
void ReadRecords(const InputOptions& tOptions, const std::string& sColumn, Console& oConsole,
                 MapData& tMap) {
    Input tInput = OpenInput(tOptions);
    tnwDecoderRecordSource& oSource = *tInput.oSource;
    if (oSource.GeometryType() == 0) {
        throw Failure(kExitUsage, tInput.sPath +
                                      " has no geometry that the tool can find; give "
                                      "--lon-col and --lat-col or --wkt-col");
    }
    const auto oColumn = FindColumn(oSource.Columns(), sColumn, tInput.sPath);
    if (oColumn) tMap.sColumn = oColumn->Key();
    oSource.SetCallback(oConsole.Progress("reading"));
    oConsole.SetContext([&] {
        return "data row " + std::to_string(oSource.RecordsRead() + oSource.RowsSkipped() + 1) +
               " of " + tInput.sPath;
    });
    for (oSource.MoveFirst(); !oSource.Eof(); oSource.MoveNext()) {
        Shape& tShape = tMap.vShapes.emplace_back();
        if (const auto oGeometry = oSource.Geometry()) AddParts(*oGeometry, tShape);
        if (oColumn) tMap.vValues.push_back(ValueOf(*oColumn));
    }
    oConsole.SetContext({});
}

}  // namespace

ExitCode Preview(const InputOptions& tInput, const PreviewOptions& tOptions, Console& oConsole) {
    const auto tStart = std::chrono::steady_clock::now();
    if (LowerExtension(tOptions.sPath) != "svg") {
        throw Failure(kExitKind, "a preview is an SVG drawing: name the output .svg");
    }
    MapData tMap;
    tMap.sTitle = fs::path(tInput.sPath).filename().string();
    try {
        ReadRecords(tInput, tOptions.sColumn, oConsole, tMap);
    } catch (const Error& oError) {
        throw Failure(kExitInput, "can't read " + tInput.sPath + ": " + oError.sDescription);
    }
    oConsole.EndProgress();
    MapStats tStats;
    const std::string sSvg = MakeSvgMap(tMap, tOptions.lWidth, tStats);
    try {
        const fs::path oFolder = fs::path(tOptions.sPath).parent_path();
        std::error_code ec;
        if (!oFolder.empty()) fs::create_directories(oFolder, ec);
        platform::OutputFile oFile;
        oFile.Open(tOptions.sPath);
        oFile.Write(sSvg);
        oFile.Close();
    } catch (const Error& oError) {
        throw Failure(kExitOutput, "can't write " + tOptions.sPath + ": " + oError.sDescription);
    }

    std::string sSummary = "drew " + std::to_string(tStats.lMarks) + " of " +
                           std::to_string(tMap.vShapes.size()) + " records from " + tInput.sPath +
                           " to " + tOptions.sPath + " (" + SizeText(sSvg.size());
    if (!tOptions.sColumn.empty()) {
        char aRange[80];
        std::snprintf(aRange, sizeof aRange, " from %.6g to %.6g", tStats.dMin, tStats.dMax);
        sSummary += ", " + tMap.sColumn +
                    (tStats.bScale ? std::string(aRange)
                                   : ": " + std::to_string(tStats.lCategories) + " values");
    }
    const double dSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - tStart).count();
    char aSeconds[32];
    std::snprintf(aSeconds, sizeof aSeconds, ") in %.2f s", dSeconds);
    oConsole.Summary(sSummary + aSeconds);
    return oConsole.Reports() == 0 ? kExitOk : kExitRecordsFailed;
}

}  // namespace tnw::cli
