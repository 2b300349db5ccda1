#include "Info.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "ShapeFile.h"
#include "core/Error.h"
#include "core/FGPFile.h"
#include "decoders/tnwShapeDecoder.h"
#include "platform/File.h"

namespace tnw::cli {

namespace fs = std::filesystem;

namespace {

void Field(const char* sLabel, const std::string& sValue) {
    std::printf("%-10s%s\n", sLabel, sValue.c_str());
}

std::string Number(double dValue, bool bDegrees) {
    char aText[64];
    std::snprintf(aText, sizeof aText, bDegrees ? "%.7f" : "%.3f", dValue);
    return aText;
}

// The columns of a dBase table from its schema text "KEY~C~20~0~|RATE~N~10~3~".
void PrintSchema(const std::string& sSchema) {
    std::vector<std::vector<std::string>> vFields;
    std::size_t nStart = 0;
    while (nStart < sSchema.size()) {
        std::size_t nEnd = sSchema.find('|', nStart);
        if (nEnd == std::string::npos) nEnd = sSchema.size();
        std::vector<std::string> vParts;
        std::size_t nPart = nStart;
        while (nPart < nEnd) {
            std::size_t nTilde = sSchema.find('~', nPart);
            if (nTilde == std::string::npos || nTilde > nEnd) nTilde = nEnd;
            vParts.push_back(sSchema.substr(nPart, nTilde - nPart));
            nPart = nTilde + 1;
        }
        vParts.resize(4);
        vFields.push_back(vParts);
        nStart = nEnd + 1;
    }
    Field("Columns:", std::to_string(vFields.size()));
    for (const auto& vParts : vFields) {
        const bool bDecimals = vParts[1] == "N" && vParts[3] != "0" && !vParts[3].empty();
        std::printf("  %-12s %s %s%s\n", vParts[0].c_str(), vParts[1].c_str(), vParts[2].c_str(),
                    bDecimals ? ("." + vParts[3]).c_str() : "");
    }
}

std::int64_t TableRecords(const std::shared_ptr<tnwDBFDecoder>& oTable) {
    return tnwDecoderRecordSource(oTable).RecordCount();
}

// The .dbf beside a .shp, in either case of extension; "" when there is none.
std::string TableBeside(const std::string& sShapes) {
    for (const char* sExtension : {".dbf", ".DBF"}) {
        fs::path oTable = fs::path(sShapes).replace_extension(sExtension);
        std::error_code ec;
        if (fs::is_regular_file(oTable, ec)) return oTable.string();
    }
    return {};
}

}  // namespace

void ShapesInfo(const InputOptions& tOptions, Console&) {
    const std::string& sPath = tOptions.sPath;
    std::int32_t eType = 0;
    std::string sType;
    bool bCartesian = false;
    double dLeft = 0.0, dRight = 0.0, dTop = 0.0, dBottom = 0.0;
    // A file too short for the header or without the file code is no shapefile: its "kind"
    // would be made up.
    ShapeFileReader{sPath};
    const tnwShapeDecoder oDecoder;
    if (!oDecoder.GetShapeDetails(sPath, eType, sType, bCartesian, dLeft, dRight, dTop, dBottom)) {
        throw Failure(kExitInput, "can't find " + sPath);
    }
    const std::int32_t lShapeType = oDecoder.GetESRIShapeType("", sPath);
    std::error_code ec;
    Field("File:", sPath + " (" + SizeText(fs::file_size(sPath, ec)) + ")");
    Field("Kind:", (sType.empty() ? std::string("no point, line or region kind") : sType) +
                       " (shape type " + std::to_string(lShapeType) + ")");
    if (dLeft > dRight || dBottom > dTop) {
        Field("Extent:", "none (no shapes)");
    } else {
        const bool bDegrees = !bCartesian;
        Field("Extent:", "x " + Number(dLeft, bDegrees) + " to " + Number(dRight, bDegrees) +
                             ", y " + Number(dBottom, bDegrees) + " to " + Number(dTop, bDegrees));
        Field("Units:", bDegrees ? "degrees (longitude and latitude)" : "projected");
    }
    const std::string sTable = TableBeside(sPath);
    if (sTable.empty()) {
        Field("Records:", "unknown (no .dbf beside it)");
        return;
    }
    Input tTable;
    const auto oTable = OpenTableDecoder(tOptions, sTable, false, tTable);
    Field("Records:", std::to_string(TableRecords(oTable)) + " (in " + sTable + ")");
    PrintSchema(oTable->Schema());
}

void TableInfo(const InputOptions& tOptions, Console&) {
    const std::string& sPath = tOptions.sPath;
    Input tTable;
    const auto oTable = OpenTableDecoder(tOptions, sPath, !tOptions.bKeepDeleted, tTable);
    std::error_code ec;
    Field("File:", sPath + " (" + SizeText(fs::file_size(sPath, ec)) + ")");
    Field("Kind:", "dBase table");
    Field("Records:", std::to_string(TableRecords(oTable)));
    Field("Schema:", oTable->Schema());
    PrintSchema(oTable->Schema());
}

void PlanInfo(const InputOptions& tOptions, Console&) {
    const std::string& sPath = tOptions.sPath;
    platform::InputFile oFile;
    oFile.Open(sPath);
    std::map<std::string, std::string> mHeader;
    std::string sLine;
    std::size_t nConsumed = 0;
    while (oFile.ReadLine(sLine, platform::LineEnds::Any, nConsumed) && sLine != "[DATA]") {
        const std::size_t nEquals = sLine.find('=');
        if (nEquals != std::string::npos)
            mHeader[sLine.substr(0, nEquals)] = sLine.substr(nEquals + 1);
    }
    if (mHeader["FileType"] != "PlanGridData")
        throw Failure(kExitInput, sPath + " is not a plan-grid file");
    std::error_code ec;
    Field("File:", sPath + " (" + SizeText(fs::file_size(sPath, ec)) + ")");
    Field("Kind:", "plan-grid file, version " + mHeader["Version"]);
    Field("Polygons:", mHeader["NumberOfPolygons"]);
    Field("Points:", mHeader["NumberOfPoints"]);
    Field("Rates:", mHeader["RateMin"] + " to " + mHeader["RateMax"] + " " + mHeader["UnitText"]);
    Field("Corner:", "longitude " + mHeader["GpsLongitudeMin"] + ", latitude " +
                         mHeader["GpsLatitudeMin"] + " (degrees. minutes)");
}

void TextInfo(const InputOptions& tOptions, Console&) {
    const Input tInput = OpenInput(tOptions);
    const tnwASCIIDecoder& oText = *tInput.oText;
    std::error_code ec;
    Field("File:", tInput.sPath + " (" + SizeText(fs::file_size(tInput.sPath, ec)) + ")");
    const std::string& sDelimiter = oText.Delimiter();
    Field("Kind:", "delimited text, fields split at " +
                       (sDelimiter == "\t" ? std::string("tabs") : "\"" + sDelimiter + "\""));
    switch (oText.GeometryFormat()) {
        case TNW_GeometryFormat_LonLat:
            Field("Geometry:", "points: longitude in field " + std::to_string(oText.LonCol()) +
                                   ", latitude in field " + std::to_string(oText.LatCol()));
            break;
        case TNW_GeometryFormat_WKT:
            Field("Geometry:", "well-known text in field " + std::to_string(oText.WKTCol()));
            break;
        default:
            Field("Geometry:", "none found (give --lon-col and --lat-col, or --wkt-col)");
            break;
    }
    Field("Records:", std::to_string(tInput.oSource->RecordCount()));
    const auto& vColumns = oText.Columns()->Items();
    Field("Columns:", std::to_string(vColumns.size()));
    for (const auto& oColumn : vColumns) {
        std::string sKind = "number";
        if (oColumn->Type() == vtString) sKind = "text";
        if (oColumn->Type() == vtInt32) sKind = "whole number";
        if (oColumn->Type() == vtDate) sKind = "date";
        if (oColumn->Unit() != 16 && oColumn->Type() != vtString) {
            sKind += " (unit " + std::to_string(oColumn->Unit()) + ")";
        }
        std::printf("  %-12s %-18s field %d%s\n", oColumn->Key().c_str(), sKind.c_str(),
                    oColumn->Position(), oColumn->Visible() ? "" : ", hidden");
    }
}

void LogInfo(const InputOptions& tOptions, Console& oConsole) {
    Input tInput = OpenInput(tOptions);
    for (const std::string& sWarning : tInput.vWarnings)
        oConsole.Warn(sWarning);
    const tnwASCIIDecoder& oLog = *tInput.oText;
    tnwDecoderRecordSource& oSource = *tInput.oSource;
    for (oSource.MoveFirst(); !oSource.Eof(); oSource.MoveNext()) {
    }
    std::error_code ec;
    Field("File:", tInput.sPath + " (" + SizeText(fs::file_size(tInput.sPath, ec)) + ")");
    Field("Kind:", "GPL log");
    Field("Geometry:", "points: latitude in field 2, longitude in field 3");
    Field("Records:", std::to_string(oSource.RecordsRead()) + " in " +
                          CountText(oSource.StartRows(), "start row") + " (\"STAR\"), " +
                          CountText(oSource.StopRows(), "stop row") + " (\"STOP\")");
    if (oSource.RowsSkipped() > 0) {
        Field("Skipped:", CountText(oSource.RowsSkipped(), "row") + " that could not be read");
    }
    Field("Table:", oLog.GPDSchema().empty() ? std::string("none (no .gpd beside it)")
                                             : "the .gpd beside it: " + oLog.GPDSchema());
    const auto& vColumns = oLog.Columns()->Items();
    Field("Columns:", std::to_string(vColumns.size()));
    for (const auto& oColumn : vColumns) {
        std::printf("  %-12s %-6s field %d%s\n", oColumn->Key().c_str(),
                    oColumn->Type() == vtString ? "text" : "number", oColumn->Position(),
                    oColumn->Visible() ? "" : ", hidden");
    }
}

void FGPInfo(const InputOptions& tOptions, Console&) {
    const Input tInput = OpenInput(tOptions);
    std::error_code ec;
    Field("File:", tInput.sPath + " (" + SizeText(fs::file_size(tInput.sPath, ec)) + ")");
    Field("Kind:", "FGP set");
    const auto oFile = CreateAs<tnwFGPFile>(kProgIdFGPFile, "Missing Component");
    if (!oFile) throw Failure(kExitInternal, "no reader of FGP main files");
    oFile->Open(tInput.sPath);
    const auto oLines = oFile->Lines();
    std::int64_t lVertices = 0;
    for (std::int32_t lLine = 1; lLine <= oLines->Count(); ++lLine)
        lVertices += oLines->Item(lLine)->Count();
    Field("Regions:", std::to_string(oFile->Regions()->Count()));
    Field("Lines:", std::to_string(oLines->Count()) + " (" + std::to_string(lVertices) +
                        (lVertices == 1 ? " vertex)" : " vertices)"));
    Field("Points:", std::to_string(oFile->Points()->Count()));
    Field("Records:", std::to_string(tInput.oSource->RecordCount()));
    const std::string sBase = tInput.sPath.substr(0, tInput.sPath.size() - 4);
    for (const auto& [sLabel, sTable] :
         {std::pair("Samples:", sBase + ".fsn"), std::pair("Table:", sBase + ".fdt")}) {
        if (!fs::is_regular_file(sTable, ec)) {
            Field(sLabel, "none (no " + sTable + ")");
            continue;
        }
        Input tTable;
        const auto oTable = OpenTableDecoder(tOptions, sTable, false, tTable);
        Field(sLabel,
              sTable + ", " + CountText(TableRecords(oTable), "row") + ": " + oTable->Schema());
    }
    const auto& vColumns = tInput.oSource->Columns()->Items();
    Field("Columns:", std::to_string(vColumns.size()));
    for (const auto& oColumn : vColumns) {
        const std::int32_t lType = oColumn->Type();
        std::printf("  %-12s %s%s\n", oColumn->Key().c_str(),
                    lType == vtString ? "text"
                    : lType == vtDate ? "date"
                                      : "number",
                    oColumn->Visible() ? "" : ", hidden");
    }
}

ExitCode Info(const InputOptions& tInput, Console& oConsole) {
    const FileKind& tKind = ResolveKind(tInput.sPath, tInput.sFrom);
    RequireFile(tInput.sPath);
    try {
        tKind.fnInfo(tInput, oConsole);
    } catch (const Error& oError) {
        throw Failure(kExitInput, "can't read " + tInput.sPath + ": " + oError.sDescription);
    }
    return oConsole.Reports() == 0 ? kExitOk : kExitRecordsFailed;
}

}  // namespace tnw::cli
