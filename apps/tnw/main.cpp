// tnw: convert field data between delimited text, dBase tables and shapefile sets, write
// application plans as plan-grid files, tell what a file holds, and draw a map of it.
#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <exception>

#include "Console.h"
#include "Convert.h"
#include "ExitCodes.h"
#include "Info.h"
#include "Preview.h"
#include "Summary.h"
#include "core/Error.h"

using namespace tnw::cli;

namespace {

constexpr const char* kGlobalOptions =
    "Options of every command: -q,--quiet (no progress bar, no summary), --debug.\n\n";

constexpr const char* kDescription =
    "tnw moves precision-agriculture field data between delimited text (.csv .txt .tsv), "
    "dBase tables (.dbf), GPL logs (.gpl), shapefile sets (.shp) and FGP sets (.fgp), writes "
    "application plans "
    "as plan-grid files (.fpd), tells what a file holds, and draws a map of it. File kinds "
    "follow the extension, case-insensitive.";

void AddInputOptions(CLI::App& oCommand, InputOptions& tInput, bool bDelimiter) {
    const char* sGroup = "Input";
    oCommand
        .add_option("--from", tInput.sFrom,
                    "Kind of the input, whatever its extension: csv, "
                    "txt, tsv, dbf, shp, gpl or fgp")
        ->group(sGroup);
    if (bDelimiter) {
        oCommand
            .add_option("--delimiter", tInput.sDelimiter,
                        "Field delimiter of a text input: one character, or tab, comma, "
                        "semicolon, pipe, space (default: tab for .tsv, else found in the "
                        "header)")
            ->group(sGroup);
    }
    oCommand
        .add_option("--header-rows", tInput.lHeaderRows,
                    "Lines before the first record of a text input; the columns come from "
                    "the last of them (0: columns Field1, Field2...)")
        ->check(CLI::Range(0, 1000000))
        ->group(sGroup);
    oCommand
        .add_option("--lon-col", tInput.lLonCol,
                    "Field number (from 1) of the longitude; a text header named Longitude "
                    "or X is found by itself")
        ->check(CLI::PositiveNumber)
        ->group(sGroup);
    oCommand
        .add_option("--lat-col", tInput.lLatCol,
                    "Field number (from 1) of the latitude; Latitude or Y is found by itself")
        ->check(CLI::PositiveNumber)
        ->group(sGroup);
    oCommand
        .add_option("--wkt-col", tInput.lWKTCol,
                    "Field number (from 1) of the geometry as well-known text")
        ->check(CLI::PositiveNumber)
        ->group(sGroup);
    oCommand
        .add_option("--encoding", tInput.sEncoding,
                    "Text encoding of the input: utf-8, 1252 or latin1 (default: UTF-8 for text "
                    "that is UTF-8, a table's .cpg or language driver, else 1252)")
        ->group(sGroup);
    oCommand
        .add_flag("--keep-deleted", tInput.bKeepDeleted,
                  "Also read the records a dBase table marks as deleted")
        ->group(sGroup);
    oCommand
        .add_option("--type", tInput.vTypes,
                    "COLUMN=real|integer|text|date: the type of a text input's column, over "
                    "what its values show (repeatable)")
        ->group(sGroup);
    oCommand
        .add_flag("--decimal-comma", tInput.bDecimalComma,
                  "\",\" is the decimal mark of a text input's numbers (found by itself when "
                  "the delimiter is not \",\")")
        ->group(sGroup);
    oCommand
        .add_option("--phase", tInput.sPhase,
                    "Of an FGP set, only its regions, lines or points (default: all, in that "
                    "order)")
        ->check(CLI::IsMember({"regions", "lines", "points"}))
        ->group(sGroup);
    oCommand
        .add_flag("--as-sites", tInput.bAsSites,
                  "Of an FGP set, each vertex of a line as a point with its own values (default: "
                  "each line whole)")
        ->group(sGroup);
}

}  // namespace

int main(int argc, char** argv) {
    // A file that reaches the size limit for files then fails its write, which is told, rather
    // than ending the tool with no word.
    std::signal(SIGXFSZ, SIG_IGN);
    CLI::App oApp{kDescription, "tnw"};
    oApp.set_version_flag("--version", "tnw 1.0.0");
    oApp.require_subcommand(1);
    oApp.footer(kExitCodeHelp);
    bool bQuiet = false;
    bool bDebug = false;
    oApp.add_flag("-q,--quiet", bQuiet, "No progress bar and no summary line");
    oApp.add_flag("--debug", bDebug,
                  "Debug mode: the library shows each failure in full (as a message on stderr)");

    // convert
    InputOptions tConvertIn;
    OutputOptions tOut;
    CLI::App* pConvert = oApp.add_subcommand(
        "convert",
        "Convert a file: text, dBase, shapefile or GPL log records to a shapefile set, a dBase "
        "table, delimited text, a plan-grid file or a GPL log");
    pConvert->footer(
        std::string("Examples:\n"
                    "  tnw convert yield.csv yield.shp\n"
                    "  tnw convert boundaries.csv fields.shp --geometry region --wkt-col 3\n"
                    "  tnw convert table.dbf table.csv\n"
                    "  tnw convert yield.csv table.dbf\n"
                    "  tnw convert yield.csv copy.txt --delimiter ';'\n"
                    "  tnw convert zones.shp plan.fpd --rate RATE\n"
                    "  tnw convert log.gpl log.shp\n"
                    "  tnw convert yield.csv log.gpl\n"
                    "  tnw convert spray.fgp passes.shp --phase lines\n"
                    "  tnw convert spray.fgp sites.csv --as-sites\n"
                    "  tnw convert points.csv set.fgp\n\n") +
        kGlobalOptions + kExitCodeHelp);
    pConvert->fallthrough();
    pConvert->add_option("input", tConvertIn.sPath, "File to read")->required();
    pConvert
        ->add_option("output", tOut.sPath,
                     "File to write; a .shp makes .shp, .shx, .dbf, "
                     ".prj and .mcd")
        ->required();
    AddInputOptions(*pConvert, tConvertIn, false);
    pConvert
        ->add_option("--input-delimiter", tConvertIn.sDelimiter,
                     "Field delimiter of a text input when --delimiter is the output's")
        ->group("Input");
    pConvert
        ->add_option("--to", tOut.sTo,
                     "Kind of the output, whatever its extension: csv, txt, "
                     "tsv, dbf, shp, fpd, gpl or fgp")
        ->group("Output");
    pConvert
        ->add_option("--delimiter", tOut.sDelimiter,
                     "Field delimiter of the text file: the output's when it is text, else "
                     "the input's (one character, or tab, comma, semicolon, pipe, space)")
        ->group("Output");
    pConvert
        ->add_flag("--include-invisible", tOut.bIncludeInvisible,
                   "Also write columns that are hidden (the input's well-known text column)")
        ->group("Output");
    const char* sShp = "Shapefile output";
    pConvert
        ->add_option("--geometry", tOut.sGeometry,
                     "Shape kind: point, line, region, multipoint, or none for the .dbf alone "
                     "(default: the input's)")
        ->check(CLI::IsMember({"point", "line", "region", "multipoint", "none"}, CLI::ignore_case))
        ->group(sShp);
    pConvert->add_option("--x-offset", tOut.dXOffset, "Added to every x (longitude)")->group(sShp);
    pConvert->add_option("--y-offset", tOut.dYOffset, "Added to every y (latitude)")->group(sShp);
    pConvert->add_flag("--centroids", tOut.bCentroids, "Write each geometry's centre as a point")
        ->group(sShp);
    pConvert
        ->add_option("--projection", tOut.sProjection,
                     "Project polygons: utm:<zone><n|s> (e.g. utm:15n), webmercator, wgs84 or "
                     "epsg:<code>; the .prj still says WGS 84")
        ->group(sShp);
    const char* sText = "Text output";
    pConvert->add_flag("--no-header", tOut.bNoHeader, "No header line")->group(sText);
    bool bGeometryText = false;
    CLI::Option* pGeometryText =
        pConvert
            ->add_flag("--geometry-text,!--no-geometry-text", bGeometryText,
                       "Add each record's geometry as well-known text at the end of the line "
                       "(default: on when the input's geometry is well-known text)")
            ->group(sText);
    bool bLonLat = false;
    CLI::Option* pLonLat =
        pConvert
            ->add_flag("--lonlat,!--no-lonlat", bLonLat,
                       "Start each line with the point's longitude and latitude (default: on "
                       "when the input's geometry is a longitude/latitude pair)")
            ->group(sText);

    pConvert
        ->add_option("--rate", tOut.sRate,
                     "Column of the application rate; its numbers go to the plan rounded to "
                     "2 decimals")
        ->group("Plan-grid output");

    // info
    InputOptions tInfoIn;
    CLI::App* pInfo =
        oApp.add_subcommand("info", "Tell what a file holds: kind, extent, record count, columns");
    pInfo->footer(std::string("Examples:\n  tnw info fields.shp\n  tnw info table.dbf\n\n") +
                  kGlobalOptions + kExitCodeHelp);
    pInfo->fallthrough();
    pInfo->add_option("file", tInfoIn.sPath, "File to look at")->required();
    AddInputOptions(*pInfo, tInfoIn, true);

    // preview
    InputOptions tPreviewIn;
    PreviewOptions tPreview;
    CLI::App* pPreview = oApp.add_subcommand(
        "preview", "Draw the records of a file as an SVG map, coloured by a column");
    pPreview->footer(
        std::string("Example:\n  tnw preview yield.shp yield.svg --color-by Yield\n\n") +
        kGlobalOptions + kExitCodeHelp);
    pPreview->fallthrough();
    pPreview
        ->add_option("input", tPreviewIn.sPath,
                     "File to draw (.shp, or text or .dbf with "
                     "geometry)")
        ->required();
    pPreview->add_option("output", tPreview.sPath, "SVG file to write")->required();
    pPreview
        ->add_option("--color-by,--colour-by", tPreview.sColumn,
                     "Column whose values colour the marks: a scale for numbers, a colour "
                     "for each text")
        ->group("Map");
    pPreview->add_option("--width", tPreview.lWidth, "Width of the map in pixels")
        ->check(CLI::Range(100, 10000))
        ->group("Map");
    AddInputOptions(*pPreview, tPreviewIn, true);

    // summary
    InputOptions tSummaryIn;
    OutputOptions tSummaryOut;
    std::vector<std::string> vSummaryFiles;
    CLI::App* pSummary = oApp.add_subcommand(
        "summary",
        "Build a field-operation summary from yield logs, one region per log, and write it as "
        "one point shapefile set");
    pSummary->footer(std::string("Examples:\n"
                                 "  tnw summary north.csv south.csv fields.shp\n"
                                 "  tnw summary log.txt summary.shp --lon-col 2 --lat-col 3\n\n") +
                     kGlobalOptions + kExitCodeHelp);
    pSummary->fallthrough();
    pSummary
        ->add_option("files", vSummaryFiles,
                     "Yield logs to read (text or .dbf with positions), then the .shp to write")
        ->required()
        ->expected(2, 1 << 20);
    AddInputOptions(*pSummary, tSummaryIn, true);
    pSummary->add_option("--to", tSummaryOut.sTo, "Kind of the output, whatever its extension")
        ->group("Output");
    pSummary->add_option("--x-offset", tSummaryOut.dXOffset, "Added to every x (longitude)")
        ->group("Output");
    pSummary->add_option("--y-offset", tSummaryOut.dYOffset, "Added to every y (latitude)")
        ->group("Output");

    try {
        oApp.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return oApp.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return oApp.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return oApp.exit(e);
    } catch (const CLI::ParseError& e) {
        std::string sCommand = "tnw";
        for (const CLI::App* pCommand : oApp.get_subcommands())
            sCommand += " " + pCommand->get_name();
        std::fprintf(stderr, "tnw: %s; see %s --help.\n", e.what(), sCommand.c_str());
        return kExitUsage;
    }
    if (pGeometryText->count() > 0) tOut.bGeometryText = bGeometryText;
    if (pLonLat->count() > 0) tOut.bLonLat = bLonLat;

    Console oConsole(bQuiet, bDebug);
    try {
        if (pConvert->parsed()) return Convert(tConvertIn, tOut, oConsole);
        if (pInfo->parsed()) return Info(tInfoIn, oConsole);
        if (pSummary->parsed()) {
            tSummaryOut.sPath = vSummaryFiles.back();
            vSummaryFiles.pop_back();
            return Summary(vSummaryFiles, tSummaryIn, tSummaryOut, oConsole);
        }
        return Preview(tPreviewIn, tPreview, oConsole);
    } catch (const Failure& oFailure) {
        oConsole.EndProgress();
        oConsole.Fail(oFailure.what());
        return oFailure.Code();
    } catch (const tnw::Error& oError) {
        oConsole.EndProgress();
        oConsole.Fail(oError.sDescription + " (" + oError.sSource + ")");
        return kExitInternal;
    } catch (const std::exception& oError) {
        oConsole.EndProgress();
        oConsole.Fail(oError.what());
        return kExitInternal;
    }
}
