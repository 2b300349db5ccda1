#include "Convert.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "Writers.h"
#include "platform/CodePage.h"

namespace tnw::cli {

namespace fs = std::filesystem;

namespace {

// Options that only some kinds of output take.
void CheckOptionsFit(const OutputOptions& t, const FileKind& tOut) {
    const struct {
        bool bGiven;
        const char* sOption;
        OutputOptionGroup eGroup;
    } kOptions[] = {
        {!t.sGeometry.empty() && t.sGeometry != "none", "--geometry", kShapeOptions},
        {t.dXOffset.has_value(), "--x-offset", kShapeOptions},
        {t.dYOffset.has_value(), "--y-offset", kShapeOptions},
        {t.bCentroids, "--centroids", kShapeOptions},
        {!t.sProjection.empty(), "--projection", kShapeOptions},
        {t.bNoHeader, "--no-header", kTextOptions},
        {t.bGeometryText.has_value(), "--geometry-text", kTextOptions},
        {t.bLonLat.has_value(), "--lonlat", kTextOptions},
        {!t.sRate.empty(), "--rate", kPlanOptions},
    };
    for (const auto& tOption : kOptions) {
        if (!tOption.bGiven || (tOut.fOutputOptions & tOption.eGroup)) continue;
        std::string sTakers;
        for (const FileKind& tKind : FileKinds()) {
            if (tKind.fOutputOptions & tOption.eGroup) {
                sTakers += (sTakers.empty() ? "" : " or ") + std::string(tKind.sName);
            }
        }
        throw Failure(kExitUsage,
                      std::string(tOption.sOption) + " applies to " + sTakers + " output");
    }
}

// Refuses an output that would replace the file being read.
void CheckNotInput(const std::string& sInput, const RecordWriter& oWriter,
                   const std::string& sOutput) {
    for (const auto& oCandidate : oWriter.Targets(sOutput)) {
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

struct Counts {
    std::int64_t lWritten = 0;
    std::int64_t lRefused = 0;
};

// Hands every record of the source to the encoder, as ImportRS would, but keeps each
// Update's result.
Counts WriteRecords(Input& tInput, RecordWriter& oWriter, Console& oConsole) {
    tnwDecoderRecordSource& oSource = *tInput.oSource;
    const std::string& sInput = tInput.sPath;
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
        if (tInput.fnLostColumns) {
            for (const std::string& sKey : tInput.fnLostColumns()) {
                oConsole.Report(sInput, "the text of " + sKey +
                                            " is no value of its type and was read as NULL");
            }
        }
        if (oWriter.Write(oSource.Geometry())) {
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

}  // namespace

ExitCode Convert(InputOptions tInputOptions, OutputOptions t, Console& oConsole) {
    const auto tStart = std::chrono::steady_clock::now();
    const FileKind& tIn = ResolveKind(tInputOptions.sPath, tInputOptions.sFrom);
    const FileKind& tOut = ResolveKind(t.sPath, t.sTo);
    if (!tOut.fnNewWriter) {
        throw Failure(kExitKind, "the tool doesn't write a " + std::string(tOut.sName) +
                                     "; it writes " + KindNames(false));
    }
    CheckOptionsFit(t, tOut);

    // --delimiter belongs to the text file of the conversion, the output when both are text.
    if (!t.sDelimiter.empty()) {
        const std::string sDelimiter = ParseDelimiter(t.sDelimiter);
        if (tOut.bDelimited) {
            t.sDelimiter = sDelimiter;
        } else if (tIn.bDelimited && tInputOptions.sDelimiter.empty()) {
            tInputOptions.sDelimiter = sDelimiter;
            t.sDelimiter.clear();
        } else {
            throw Failure(kExitUsage, "--delimiter applies to delimited text only");
        }
    } else if (tOut.bDelimited && LowerExtension(t.sPath) == "tsv") {
        t.sDelimiter = "\t";
    }
    if (!tInputOptions.sDelimiter.empty()) {
        tInputOptions.sDelimiter = ParseDelimiter(tInputOptions.sDelimiter);
    }

    // Everything the tool writes is UTF-8 (a table says so in its .cpg), so no character of
    // the input is lost whatever its code page.
    platform::SetNarrowCodePage(platform::CodePage::Utf8);
    Input tInput = OpenInput(tInputOptions);
    const std::unique_ptr<RecordWriter> oWriter = tOut.fnNewWriter();
    CheckNotInput(tInput.sPath, *oWriter, t.sPath);
    tnwDecoderRecordSource& oSource = *tInput.oSource;

    MakeFolder(t.sPath);
    oWriter->Open(t, tInput, oConsole);
    oSource.SetCallback(oConsole.Progress("converting"));
    const Counts tCounts = WriteRecords(tInput, *oWriter, oConsole);
    oWriter->Close(tCounts.lWritten);
    oConsole.EndProgress();

    std::uintmax_t nOutBytes = 0;
    std::string sFiles;
    for (const fs::path& oFile : oWriter->Files()) {
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
                           SizeText(nOutBytes) + oWriter->Detail() + ") in " + aSeconds;
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
