#include "Input.h"

#include <unistd.h>

#include <array>
#include <filesystem>

#include "ExitCodes.h"
#include "ShapeFile.h"
#include "core/Error.h"
#include "ogc_sf/WKT.h"
#include "platform/File.h"

namespace tnw::cli {

namespace {

// The delimiter that stands most often outside double quotes in the header line; "," when
// none of the usual ones does.
std::string SniffDelimiter(const std::string& sPath, std::int32_t lHeaderRow) {
    platform::InputFile oFile;
    oFile.Open(sPath);
    std::string sLine;
    std::size_t nConsumed = 0;
    for (std::int32_t lRow = 1; lRow <= std::max(lHeaderRow, 1); ++lRow) {
        if (!oFile.ReadLine(sLine, platform::LineEnds::Any, nConsumed)) return ",";
    }
    constexpr std::array<char, 4> kCandidates = {',', ';', '\t', '|'};
    std::array<int, kCandidates.size()> aCounts{};
    bool bQuoted = false;
    for (char c : sLine) {
        if (c == '"') bQuoted = !bQuoted;
        if (bQuoted) continue;
        for (std::size_t i = 0; i < kCandidates.size(); ++i)
            aCounts[i] += c == kCandidates[i];
    }
    std::size_t nBest = 0;
    for (std::size_t i = 1; i < kCandidates.size(); ++i) {
        if (aCounts[i] > aCounts[nBest]) nBest = i;
    }
    return std::string(1, kCandidates[nBest]);
}

std::int32_t FieldCount(const FieldArray& aFields) {
    return aFields.HasSize() ? aFields.UBound() + 1 : 0;
}

// The geometry field numbers, checked against the fields a row has.
void SetGeometryFields(const InputOptions& tOptions, std::int32_t lFields, auto& oDecoder) {
    const bool bLonLat = tOptions.lLonCol > 0 || tOptions.lLatCol > 0;
    if (bLonLat && tOptions.lWKTCol > 0) {
        throw Failure(kExitUsage, "give either --lon-col and --lat-col or --wkt-col, not both");
    }
    if (bLonLat && (tOptions.lLonCol <= 0 || tOptions.lLatCol <= 0)) {
        throw Failure(kExitUsage, "--lon-col and --lat-col go together");
    }
    for (auto [lColumn, sOption] :
         {std::pair{tOptions.lLonCol, "--lon-col"}, std::pair{tOptions.lLatCol, "--lat-col"},
          std::pair{tOptions.lWKTCol, "--wkt-col"}}) {
        if (lColumn > lFields) {
            throw Failure(kExitUsage, std::string(sOption) + " " + std::to_string(lColumn) +
                                          " is past the " + std::to_string(lFields) +
                                          " fields of " + tOptions.sPath);
        }
    }
    if (bLonLat) {
        oDecoder.SetLonCol(tOptions.lLonCol);
        oDecoder.SetLatCol(tOptions.lLatCol);
    }
    if (tOptions.lWKTCol > 0) {
        oDecoder.SetWKTCol(tOptions.lWKTCol);
        for (const auto& oColumn : oDecoder.Columns()->Items()) {
            if (oColumn->Position() == tOptions.lWKTCol) oColumn->SetVisible(false);
        }
    }
}

// The parser of the well-known text in a record.
std::shared_ptr<IGeometry> ParseGeometry(std::string_view sWKT) {
    return standins::ParseWKT(sWKT);
}

}  // namespace

void OpenText(const InputOptions& tOptions, Input& tInput) {
    if (tOptions.lHeaderRows < 0) throw Failure(kExitUsage, "--header-rows can't be negative");
    auto oDecoder = std::make_shared<tnwASCIIDecoder>();
    oDecoder->SetLineFeedEndsLine(true);
    std::string sDelimiter = tOptions.sDelimiter;
    if (sDelimiter.empty()) {
        sDelimiter = LowerExtension(tOptions.sPath) == "tsv"
                         ? "\t"
                         : SniffDelimiter(tOptions.sPath, tOptions.lHeaderRows);
    }
    oDecoder->SetDelimiter(sDelimiter);
    oDecoder->SetFilename(tOptions.sPath);
    oDecoder->SetHeaderRows(tOptions.lHeaderRows);

    const FieldArray aHeader = oDecoder->ReadHeaders(std::max(tOptions.lHeaderRows, 1));
    const std::int32_t lFields = FieldCount(aHeader);
    if (!aHeader.HasSize()) {
        throw Failure(kExitInput, tOptions.sPath + " has no line " +
                                      std::to_string(std::max(tOptions.lHeaderRows, 1)));
    }
    if (tOptions.lHeaderRows > 0) {
        const Variant vBuilt = oDecoder->AutoGenColumns();
        if (const bool* pBuilt = vBuilt.As<bool>(); !pBuilt || !*pBuilt) {
            throw Failure(kExitInput, "can't make columns from the header of " + tOptions.sPath);
        }
    } else {
        std::string sNames;
        for (std::int32_t l = 1; l <= lFields; ++l) {
            sNames.append(l > 1 ? ",Field" : "Field").append(std::to_string(l));
        }
        oDecoder->ColumnsFromString(sNames, ",");
    }
    SetGeometryFields(tOptions, lFields, *oDecoder);
    tInput.oText = oDecoder;
    tInput.eFormat = oDecoder->GeometryFormat();
    tInput.oSource = std::make_shared<tnwDecoderRecordSource>(oDecoder, ParseGeometry);
}

void OpenTable(const InputOptions& tOptions, Input& tInput) {
    auto oDecoder = std::make_shared<tnwDBFDecoder>();
    oDecoder->SetEveryFieldSets(true);
    oDecoder->SetFilename(tOptions.sPath);
    if (!oDecoder->IsValidFile()) {
        throw Failure(kExitInput, "can't read " + tOptions.sPath + " as a dBase table");
    }
    SetGeometryFields(tOptions, oDecoder->Columns()->Count(), *oDecoder);
    tInput.eFormat = oDecoder->GeometryFormat();
    tInput.oSource = std::make_shared<tnwDecoderRecordSource>(oDecoder, ParseGeometry);
}

void OpenShapeSet(const InputOptions& tOptions, Input& tInput) {
    if (tOptions.lLonCol > 0 || tOptions.lLatCol > 0 || tOptions.lWKTCol > 0) {
        throw Failure(kExitUsage,
                      "a shapefile set carries its own geometry; --lon-col, "
                      "--lat-col and --wkt-col apply to text and dBase input");
    }
    auto oShapes = std::make_shared<ShapeGeometryReader>(tOptions.sPath);
    std::string sTable;
    for (const char* sExtension : {".dbf", ".DBF"}) {
        const std::string sCandidate =
            std::filesystem::path(tOptions.sPath).replace_extension(sExtension).string();
        std::error_code ec;
        if (std::filesystem::is_regular_file(sCandidate, ec)) sTable = sCandidate;
    }
    if (sTable.empty()) {
        throw Failure(kExitInput, "there is no .dbf beside " + tOptions.sPath +
                                      " to read the records' values from");
    }
    auto oTable = std::make_shared<tnwDBFDecoder>();
    oTable->SetEveryFieldSets(true);
    oTable->SetFilename(sTable);
    if (!oTable->IsValidFile()) throw Failure(kExitInput, "can't read " + sTable);
    tInput.oSource = std::make_shared<tnwDecoderRecordSource>(oTable);
    const std::int64_t lRows = tInput.oSource->RecordCount();
    if (lRows != oShapes->RecordCount()) {
        throw Failure(kExitInput, tOptions.sPath + " holds " +
                                      CountText(oShapes->RecordCount(), "record") + " and " +
                                      sTable + " " + CountText(lRows, "row") +
                                      "; a set's files must match");
    }
    tInput.oSource->SetGeometryType(oShapes->GeometryType());
    // Points go to text as longitude and latitude, other shapes as well-known text.
    tInput.eFormat = oShapes->GeometryType() == tnwGeometryPoint ? TNW_GeometryFormat_LonLat
                                                                 : TNW_GeometryFormat_WKT;
    tInput.oSource->SetRowGeometry([oShapes](std::int64_t lRow) { return oShapes->Record(lRow); });
}

void RequireFile(const std::string& sPath) {
    std::error_code ec;
    if (!std::filesystem::exists(sPath, ec)) throw Failure(kExitInput, "can't find " + sPath);
    if (!std::filesystem::is_regular_file(sPath, ec)) {
        throw Failure(kExitInput, sPath + " is not a file");
    }
    if (access(sPath.c_str(), R_OK) != 0) throw Failure(kExitInput, "can't read " + sPath);
}

std::string ParseDelimiter(const std::string& sText) {
    static const std::pair<const char*, const char*> kNames[] = {
        {"tab", "\t"},      {"\\t", "\t"}, {"comma", ","},
        {"semicolon", ";"}, {"pipe", "|"}, {"space", " "},
    };
    for (const auto& [sName, sDelimiter] : kNames) {
        if (sText == sName) return sDelimiter;
    }
    if (sText.size() == 1 && sText != "\"") return sText;
    throw Failure(kExitUsage,
                  "the delimiter must be one character (or tab, comma, semicolon, "
                  "pipe, space), not \"" +
                      sText + "\"");
}

Input OpenInput(const InputOptions& tOptions) {
    Input tInput;
    tInput.sPath = tOptions.sPath;
    tInput.pKind = &ResolveKind(tOptions.sPath, tOptions.sFrom);
    if (!tInput.pKind->fnOpen) {
        throw Failure(kExitKind, "the tool doesn't read records from a " +
                                     std::string(tInput.pKind->sName) + "; it reads " +
                                     KindNames(true));
    }
    RequireFile(tOptions.sPath);
    try {
        tInput.pKind->fnOpen(tOptions, tInput);
    } catch (const Error& oError) {
        throw Failure(kExitInput, "can't read " + tOptions.sPath + ": " + oError.sDescription);
    }
    return tInput;
}

}  // namespace tnw::cli
