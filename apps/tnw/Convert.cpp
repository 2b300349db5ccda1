#include "Convert.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "core/Error.h"
#include "encoders/tnwASCIIEncoder.h"
#include "gislib/Projection.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::cli {

namespace fs = std::filesystem;

namespace {

tnwGeometryType GeometryTypeOfName(const std::string& sName) {
    if (sName == "point") return tnwGeometryPoint;
    if (sName == "line") return tnwGeometryLine;
    if (sName == "region") return tnwGeometryRegion;
    if (sName == "multipoint") return tnwGeometryMultiPoint;
    return static_cast<tnwGeometryType>(0);
}

const char* NameOfGeometryType(std::int32_t eType) {
    switch (eType) {
        case tnwGeometryPoint:
            return "points";
        case tnwGeometryLine:
            return "lines";
        case tnwGeometryRegion:
            return "polygons";
        case tnwGeometryMultiPoint:
            return "multipoints";
        default:
            return "no geometry";
    }
}

// "utm:15n", "utm:33s", "webmercator", "wgs84" or "epsg:<code>".
std::shared_ptr<tnwProjection> ParseProjection(const std::string& sText) {
    using standins::SpatialReference;
    std::string s;
    for (char c : sText)
        s += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::shared_ptr<SpatialReference> oReference;
    try {
        if (s == "wgs84") {
            oReference = SpatialReference::Wgs84();
        } else if (s == "webmercator") {
            oReference = SpatialReference::WebMercator();
        } else if (s.starts_with("epsg:") && s.size() > 5 &&
                   s.find_first_not_of("0123456789", 5) == std::string::npos && s.size() <= 10) {
            oReference = SpatialReference::FromEPSG(std::stoi(s.substr(5)));
        } else if (s.starts_with("utm:") && s.size() >= 6 && (s.back() == 'n' || s.back() == 's')) {
            const std::string sZone = s.substr(4, s.size() - 5);
            if (!sZone.empty() && sZone.size() <= 2 &&
                sZone.find_first_not_of("0123456789") == std::string::npos) {
                oReference = SpatialReference::Utm(std::stoi(sZone), s.back() == 'n');
            }
        }
    } catch (const Error&) {
        oReference = nullptr;
    }
    if (!oReference) {
        throw Failure(kExitUsage, "unknown projection \"" + sText +
                                      "\"; use utm:<zone><n|s>, webmercator, wgs84 or epsg:<code>");
    }
    return std::make_shared<standins::Projection>(oReference);
}

// Options that only one kind of output takes.
void CheckOptionsFit(const OutputOptions& t, FileKind eOut) {
    const auto fnRefuse = [&](bool bGiven, const char* sOption, const char* sWhere) {
        if (bGiven) {
            throw Failure(kExitUsage, std::string(sOption) + " applies to " + sWhere + " output");
        }
    };
    const bool bShapes = eOut == FileKind::Shapes;
    fnRefuse(!bShapes && !t.sGeometry.empty() && t.sGeometry != "none", "--geometry", ".shp");
    fnRefuse(!bShapes && t.dXOffset.has_value(), "--x-offset", ".shp");
    fnRefuse(!bShapes && t.dYOffset.has_value(), "--y-offset", ".shp");
    fnRefuse(!bShapes && t.bCentroids, "--centroids", ".shp");
    fnRefuse(!bShapes && !t.sProjection.empty(), "--projection", ".shp");
    const bool bText = eOut == FileKind::Text;
    fnRefuse(!bText && t.bNoHeader, "--no-header", "delimited text");
    fnRefuse(!bText && t.bGeometryText.has_value(), "--geometry-text", "delimited text");
    fnRefuse(!bText && t.bLonLat.has_value(), "--lonlat", "delimited text");
}

// The files an output consists of, as they stand on disk.
std::vector<fs::path> OutputFiles(const std::string& sWritten, FileKind eOut, std::int32_t eType) {
    if (eOut == FileKind::Text) return {fs::path(sWritten)};
    if (eType == 0) return {fs::path(sWritten + ".dbf")};
    std::vector<fs::path> vFiles;
    for (const char* sExtension : {".shp", ".shx", ".dbf", ".prj", ".mcd"}) {
        fs::path oPath(sWritten + sExtension);
        std::error_code ec;
        if (fs::exists(oPath, ec)) vFiles.push_back(oPath);
    }
    return vFiles;
}

// Refuses an output that would replace the file being read.
void CheckNotInput(const std::string& sInput, const std::string& sOutput, FileKind eOut) {
    std::vector<fs::path> vCandidates;
    if (eOut == FileKind::Text) {
        vCandidates.emplace_back(sOutput);
    } else {
        fs::path oBase(sOutput);
        if (oBase.extension().string().size() == 4) oBase.replace_extension();
        for (const char* sExtension : {".shp", ".shx", ".dbf"}) {
            vCandidates.emplace_back(oBase.string() + sExtension);
        }
    }
    for (const auto& oCandidate : vCandidates) {
        std::error_code ec;
        if (fs::equivalent(sInput, oCandidate, ec)) {
            throw Failure(kExitUsage, "the output " + oCandidate.string() +
                                          " would replace the input; choose another name");
        }
    }
}

void MakeFolder(const std::string& sOutput) {
    const fs::path oFolder = fs::path(sOutput).parent_path();
    std::error_code ec;
    if (oFolder.empty() || fs::is_directory(oFolder, ec)) return;
    fs::create_directories(oFolder, ec);
    if (ec) throw Failure(kExitOutput, "can't create the folder " + oFolder.string());
}

// What a failed Initialize told in its box, as the end of a sentence.
std::string BoxDetail(Console& oConsole) {
    std::string sBox = oConsole.TakeBoxText();
    return sBox.empty() ? std::string() : " (" + sBox + ")";
}

struct Counts {
    std::int64_t lWritten = 0;
    std::int64_t lRefused = 0;
};

// Hands every record of the source to the encoder, as ImportRS would, but keeps each
// Update's result.
template <class Encoder>
Counts WriteRecords(tnwDecoderRecordSource& oSource, Encoder& oEncoder, Console& oConsole,
                    const std::string& sInput) {
    Counts tCounts;
    bool bWriting = false;
    oConsole.SetContext([&] {
        const std::int64_t lRow =
            oSource.RecordsRead() + oSource.RowsSkipped() + (bWriting ? 0 : 1);
        return (bWriting ? "record " : "data row ") + std::to_string(lRow) + " of " + sInput;
    });
    oSource.MoveFirst();
    while (!oSource.Eof()) {
        bWriting = true;
        oEncoder.SetGeometry(oSource.Geometry());
        if (oEncoder.Update()) {
            ++tCounts.lWritten;
        } else {
            ++tCounts.lRefused;
        }
        bWriting = false;
        oSource.MoveNext();
    }
    oConsole.SetContext({});
    return tCounts;
}

std::int64_t TableRecordCount(const std::string& sTable) {
    auto oTable = std::make_shared<tnwDBFDecoder>();
    oTable->SetFilename(sTable);
    return tnwDecoderRecordSource(oTable).RecordCount();
}

}  // namespace

ExitCode Convert(InputOptions tInputOptions, const OutputOptions& t, Console& oConsole) {
    const auto tStart = std::chrono::steady_clock::now();
    const FileKind eIn = ResolveKind(tInputOptions.sPath, tInputOptions.sFrom);
    const FileKind eOut = ResolveKind(t.sPath, t.sTo);
    CheckOptionsFit(t, eOut);
    if (eIn == FileKind::Shapes) {
        throw Failure(kExitKind,
                      "convert reads delimited text and dBase tables; for the "
                      "attributes of a shapefile set convert its .dbf");
    }

    // --delimiter belongs to the text file of the conversion, the output when both are text.
    std::string sOutDelimiter = LowerExtension(t.sPath) == "tsv" ? "\t" : ",";
    if (!t.sDelimiter.empty()) {
        const std::string sDelimiter = ParseDelimiter(t.sDelimiter);
        if (eOut == FileKind::Text) {
            sOutDelimiter = sDelimiter;
        } else if (eIn == FileKind::Text && tInputOptions.sDelimiter.empty()) {
            tInputOptions.sDelimiter = sDelimiter;
        } else {
            throw Failure(kExitUsage, "--delimiter applies to delimited text only");
        }
    }
    if (!tInputOptions.sDelimiter.empty()) {
        tInputOptions.sDelimiter = ParseDelimiter(tInputOptions.sDelimiter);
    }

    Input tInput = OpenInput(tInputOptions);
    CheckNotInput(tInput.sPath, t.sPath, eOut);
    tnwDecoderRecordSource& oSource = *tInput.oSource;
    const std::int32_t eSourceType = oSource.GeometryType();
    const TNW_Encoders_GeometryFormats eFormat =
        tInput.oText ? tInput.oText->GeometryFormat() : tInput.oTable->GeometryFormat();

    std::int32_t eType = 0;
    if (eOut == FileKind::Shapes) {
        eType = t.sGeometry.empty() ? eSourceType : GeometryTypeOfName(t.sGeometry);
        if (eType == 0 && t.sGeometry != "none") {
            throw Failure(kExitUsage, tInput.sPath +
                                          " has no geometry that the tool can find; give "
                                          "--lon-col and --lat-col or --wkt-col, or write a .dbf");
        }
        if (t.bCentroids) eType = tnwGeometryPoint;
        if (!t.sProjection.empty() && eType != tnwGeometryRegion) {
            throw Failure(kExitUsage, "--projection applies to polygons (--geometry region) only");
        }
    }

    MakeFolder(t.sPath);
    oSource.SetCallback(oConsole.Progress("converting"));
    Counts tCounts;
    std::string sWritten;
    if (eOut == FileKind::Text) {
        tnwASCIIEncoder oEncoder;
        oEncoder.SetHeader(!t.bNoHeader);
        oEncoder.SetDelimiter(sOutDelimiter);
        oEncoder.SetIncludeGeometry(t.bGeometryText.value_or(eFormat == TNW_GeometryFormat_WKT));
        oEncoder.SetIncludeLonLat(t.bLonLat.value_or(eFormat == TNW_GeometryFormat_LonLat));
        oEncoder.SetIncludeInvisible(t.bIncludeInvisible);
        if (!oEncoder.InitializeFile(t.sPath, oSource.Columns())) {
            throw Failure(kExitOutput, "can't create " + t.sPath + BoxDetail(oConsole));
        }
        tCounts = WriteRecords(oSource, oEncoder, oConsole, tInput.sPath);
        oEncoder.CloseFiles();
        sWritten = oEncoder.Filename();
    } else {
        tnwShapeEncoder oEncoder;
        oEncoder.SetGeometryType(static_cast<tnwGeometryType>(eType));
        oEncoder.SetXOffset(t.dXOffset.value_or(0.0));
        oEncoder.SetYOffset(t.dYOffset.value_or(0.0));
        oEncoder.SetExportCentroids(t.bCentroids);
        oEncoder.SetIncludeInvisible(t.bIncludeInvisible);
        if (!t.sProjection.empty()) oEncoder.SetProjection(ParseProjection(t.sProjection));
        if (!oEncoder.Initialize(t.sPath, oSource.Columns(), static_cast<tnwGeometryType>(eType))) {
            throw Failure(kExitOutput, "can't create " + t.sPath + BoxDetail(oConsole));
        }
        tCounts = WriteRecords(oSource, oEncoder, oConsole, tInput.sPath);
        oEncoder.CloseFiles();
        sWritten = oEncoder.Filename();
        // The table's header tells what the set really holds.
        if (TableRecordCount(sWritten + ".dbf") != tCounts.lWritten) {
            throw Failure(kExitOutput, "the output " + sWritten + " could not be finished");
        }
    }
    oConsole.EndProgress();

    std::uintmax_t nOutBytes = 0;
    std::string sFiles;
    for (const fs::path& oFile : OutputFiles(sWritten, eOut, eType)) {
        std::error_code ec;
        nOutBytes += fs::file_size(oFile, ec);
        if (sFiles.empty()) {
            sFiles = oFile.string();
        } else {
            sFiles.push_back(' ');
            sFiles += oFile.extension().string();
        }
    }
    std::error_code ec;
    const std::uintmax_t nInBytes = fs::file_size(tInput.sPath, ec);
    const double dSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - tStart).count();
    char aSeconds[32];
    std::snprintf(aSeconds, sizeof aSeconds, "%.2f s", dSeconds);
    std::string sSummary = "read " + CountText(oSource.RecordsRead(), "record") + " from " +
                           tInput.sPath + " (" + SizeText(nInBytes) + "), wrote " +
                           std::to_string(tCounts.lWritten) + " to " + sFiles + " (" +
                           SizeText(nOutBytes);
    if (eOut == FileKind::Shapes) sSummary += std::string(", ") + NameOfGeometryType(eType);
    sSummary += ") in " + std::string(aSeconds);
    oConsole.Summary(sSummary);

    if (oSource.RowsSkipped() > 0) {
        oConsole.Warn(CountText(oSource.RowsSkipped(), "data row") + " of " + tInput.sPath +
                      " could not be read");
    }
    if (tCounts.lRefused > 0) {
        oConsole.Warn(CountText(tCounts.lRefused, "record") +
                      " could not be written (no geometry of the output's kind, or a failure told "
                      "above)");
    }
    const bool bClean =
        oSource.RowsSkipped() == 0 && tCounts.lRefused == 0 && oConsole.Reports() == 0;
    return bClean ? kExitOk : kExitRecordsFailed;
}

}  // namespace tnw::cli
