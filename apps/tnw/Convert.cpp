#include "Convert.h"

#include <unistd.h>

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

// The output is written under a name of its own beside the target, "unfinished-<pid>-yield.shp"
// for "yield.shp", and renamed into place only when it is finished: a conversion that fails or
// is killed never leaves a file under the target's name that looks whole, and says plainly what
// it left.
class StagedOutput {
public:
    explicit StagedOutput(const std::string& sTarget)
        : m_oFolder(fs::path(sTarget).parent_path()),
          m_sPrefix("unfinished-" + std::to_string(getpid()) + "-"),
          m_sPath((m_oFolder / (m_sPrefix + fs::path(sTarget).filename().string())).string()) {}
    // Removes every staged file unless Commit ran.
    ~StagedOutput() {
        if (m_bCommitted) return;
        std::error_code ec;
        const fs::path oFolder = m_oFolder.empty() ? fs::path(".") : m_oFolder;
        for (const auto& oEntry : fs::directory_iterator(oFolder, ec)) {
            if (oEntry.path().filename().string().starts_with(m_sPrefix)) fs::remove(oEntry, ec);
        }
    }
    StagedOutput(const StagedOutput&) = delete;
    StagedOutput& operator=(const StagedOutput&) = delete;

    const std::string& Path() const { return m_sPath; }
    // Renames the staged files into place; gives their new names.
    std::vector<fs::path> Commit(const std::vector<fs::path>& vStaged) {
        std::vector<fs::path> vFinal;
        for (const fs::path& oStaged : vStaged) {
            const fs::path oFinal =
                oStaged.parent_path() / oStaged.filename().string().substr(m_sPrefix.size());
            std::error_code ec;
            fs::rename(oStaged, oFinal, ec);
            if (ec) {
                throw Failure(kExitOutput, "can't put " + oFinal.string() + " in place: " +
                                               ec.message() + "; the output is unfinished");
            }
            vFinal.push_back(oFinal);
        }
        m_bCommitted = true;
        return vFinal;
    }

private:
    fs::path m_oFolder;
    std::string m_sPrefix;
    std::string m_sPath;
    bool m_bCommitted = false;
};

struct Counts {
    std::int64_t lWritten = 0;
    std::int64_t lRefused = 0;
    std::int64_t lNoPosition = 0;  // written without geometry: the row had no position
    std::int64_t lFileFaults = 0;  // reports of the file system failing the output
};

// Hands every record of the source to the encoder, as ImportRS would, but keeps each
// Update's result.
Counts WriteRecords(Input& tInput, RecordWriter& oWriter, Console& oConsole) {
    tnwDecoderRecordSource& oSource = *tInput.oSource;
    const std::string& sInput = tInput.sPath;
    Counts tCounts;
    bool bWriting = false;
    // The context reads this frame: it ends with it, also when a writer throws.
    struct ContextEnd {
        Console& oConsole;
        ~ContextEnd() { oConsole.SetContext({}); }
    } tContextEnd{oConsole};
    oConsole.SetContext([&] {
        const std::int64_t lRow =
            oSource.RecordsRead() + oSource.RowsSkipped() + (bWriting ? 0 : 1);
        return (bWriting ? "record " : "data row ") + std::to_string(lRow) + " of " + sInput;
    });
    const bool bPositions = tInput.eFormat == TNW_GeometryFormat_LonLat;
    oSource.MoveFirst();
    while (!oSource.Eof()) {
        bWriting = true;
        if (tInput.fnLostColumns) {
            for (const std::string& sKey : tInput.fnLostColumns()) {
                oConsole.Report(sInput, "the text of " + sKey +
                                            " is no value of its type and was read as NULL");
            }
        }
        const std::int64_t lFaults = oConsole.FileFaults();
        const std::shared_ptr<IGeometry> oGeometry = oSource.Geometry();
        if (oWriter.Write(oGeometry)) {
            ++tCounts.lWritten;
            if (bPositions && !oGeometry) ++tCounts.lNoPosition;
        } else {
            ++tCounts.lRefused;
        }
        tCounts.lFileFaults += oConsole.FileFaults() - lFaults;
        bWriting = false;
        // A disk that failed once is no place for the records after it.
        if (tCounts.lFileFaults > 0) break;
        oSource.MoveNext();
    }
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
    for (const std::string& sWarning : tInput.vWarnings)
        oConsole.Warn(sWarning);
    // Before the writer, so that the writer has closed its files when the staged ones go.
    StagedOutput oStaged(t.sPath);
    const std::unique_ptr<RecordWriter> oWriter = tOut.fnNewWriter();
    CheckNotInput(tInput.sPath, *oWriter, t.sPath);
    tnwDecoderRecordSource& oSource = *tInput.oSource;

    MakeFolder(t.sPath);
    OutputOptions tStaged = t;
    tStaged.sPath = oStaged.Path();
    oWriter->Open(tStaged, tInput, oConsole);
    oSource.SetCallback(oConsole.Progress("converting"));
    Counts tCounts = WriteRecords(tInput, *oWriter, oConsole);
    const std::int64_t lFaults = oConsole.FileFaults();
    bool bClosed = true;
    try {
        oWriter->Close(tCounts.lWritten);
    } catch (const Failure&) {
        bClosed = false;  // the staged name would only confuse: the sentence below tells
    }
    tCounts.lFileFaults += oConsole.FileFaults() - lFaults;
    oConsole.EndProgress();
    if (tCounts.lFileFaults > 0 || !bClosed) {
        throw Failure(kExitOutput, "the output " + t.sPath +
                                       " is unfinished: writing it failed, and no file under its "
                                       "name was changed");
    }
    const std::vector<fs::path> vFiles = oStaged.Commit(oWriter->Files());

    std::error_code ec;
    const std::uintmax_t nInBytes = fs::file_size(tInput.sPath, ec);
    const double dSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - tStart).count();
    char aSeconds[32];
    std::snprintf(aSeconds, sizeof aSeconds, "%.2f s", dSeconds);
    // Command rows (the start and stop rows of a GPL log) are steps of the input, not records.
    std::string sCommands;
    if (oSource.StartRows() + oSource.StopRows() > 0) {
        sCommands = ", " + CountText(oSource.StartRows(), "start row") + " and " +
                    CountText(oSource.StopRows(), "stop row");
    }
    std::string sSummary = "read " + CountText(oSource.RecordsRead(), "record") + sCommands +
                           " from " + tInput.sPath + " (" + SizeText(nInBytes) + "), wrote " +
                           std::to_string(tCounts.lWritten) + " to " +
                           OutputText(vFiles, oWriter->Detail()) + " in " + aSeconds;
    oConsole.Summary(sSummary);

    if (oSource.RowsSkipped() > 0) {
        oConsole.Warn(CountText(oSource.RowsSkipped(), "data row") + " of " + tInput.sPath +
                      " could not be read");
    }
    if (tCounts.lNoPosition > 0) {
        oConsole.Warn(CountText(tCounts.lNoPosition, "record") + " of " + tInput.sPath +
                      " had no position and went out without geometry");
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
