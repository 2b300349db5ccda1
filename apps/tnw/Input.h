// Opening an input file as a record source: the decoder that reads its kind, set up from the
// command line, behind the library's tnwDecoderRecordSource.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "FileKind.h"
#include "bridge/tnwDecoderRecordSource.h"
#include "platform/CodePage.h"

namespace tnw::cli {

struct InputOptions {
    std::string sPath;
    std::string sFrom;       // a kind name overriding the extension
    std::string sDelimiter;  // "" for the file's own: tab for .tsv, else found in the header
    std::int32_t lHeaderRows = 1;
    std::int32_t lLonCol = 0;  // 1-based field numbers; 0 for none
    std::int32_t lLatCol = 0;
    std::int32_t lWKTCol = 0;
    std::string sEncoding;            // --encoding: "" to find it from the file
    bool bKeepDeleted = false;        // --keep-deleted: a table's deleted records are read too
    bool bDecimalComma = false;       // "," is the decimal mark of numbers in the text
    std::vector<std::string> vTypes;  // --type COLUMN=real|integer|text|date, as given
    std::string sPhase;               // of an FGP set: "regions", "lines" or "points"; "" for all
    bool bAsSites = false;            // of an FGP set: each vertex of a line a point of its own
};

struct Input {
    const FileKind* pKind = nullptr;
    std::string sPath;
    std::shared_ptr<tnwDecoderRecordSource> oSource;
    TNW_Encoders_GeometryFormats eFormat = TNW_GeometryFormat_None;  // how records carry geometry
    std::shared_ptr<tnwASCIIDecoder> oText;  // the decoder of a text input, for what info tells
    // The keys of the current record's columns whose text was no value of its type and was
    // read as NULL; unset for a kind that reads every text it meets.
    std::function<std::vector<std::string>()> fnLostColumns;
    std::vector<std::string> vWarnings;  // what the opener has to tell about the input
};

// Opens a file as a record source through its kind's row. Failures: kExitInput for a file that
// is missing or can't be read, kExitUsage for options that don't fit the file, kExitKind for a
// kind that isn't read as records.
Input OpenInput(const InputOptions& tOptions);

// The openers of the kinds' rows. Text: the columns come from the last header row
// (AutoGenColumns), or are named Field1, Field2... when there is none, a lone line feed ends a
// line, a byte-order mark is skipped, text columns are never cut, and the file is read as UTF-8
// when it has a mark or is valid UTF-8 with bytes past ASCII. Every row is looked at to type the
// columns that have no unit, a quoted field may hold line breaks, and an empty header cell names
// a column field_<n>. Tables: values are read NULL-aware, deleted records are skipped, and the
// code page comes from the .cpg beside the table, else from the language driver byte.
// --encoding overrides both. The column that holds
// the well-known text is hidden: the geometry carries it.
void OpenText(const InputOptions& tOptions, Input& tInput);
void OpenTable(const InputOptions& tOptions, Input& tInput);
// A GPL log, with the columns of its companion table (.gpd) when it has one. Its name must end
// in ".gpl": the reader knows a log by its name alone.
void OpenLog(const InputOptions& tOptions, Input& tInput);
// A .shp with the values of its records from the .dbf beside it, each record's geometry as
// stored (see ShapeGeometryReader).
void OpenShapeSet(const InputOptions& tOptions, Input& tInput);

// A dBase table as the tool reads one: each field sets its value, in the code page found for
// it; fields of a repeated name kept apart and read; Visual FoxPro tables refused; deleted
// records passed over when bSkipDeleted. Failure kExitInput when it can't be read.
std::shared_ptr<tnwDBFDecoder> OpenTableDecoder(const InputOptions& tOptions,
                                                const std::string& sPath, bool bSkipDeleted,
                                                Input& tInput);

// One delimiter character from what the user typed: a single character, or "tab", "\t",
// "comma", "semicolon", "pipe", "space". Failure kExitUsage otherwise.
std::string ParseDelimiter(const std::string& sText);

// The code page of an encoding name: "utf-8", "1252" or "latin1" and their usual spellings,
// case-insensitive; nothing for a name the tool doesn't know.
std::optional<platform::CodePage> CodePageOfName(std::string_view sName);

// Failure kExitInput unless sPath names a readable regular file.
void RequireFile(const std::string& sPath);

}  // namespace tnw::cli
