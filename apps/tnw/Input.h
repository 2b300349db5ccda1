// Opening an input file as a record source: the decoder that reads its kind, set up from the
// command line, behind the library's tnwDecoderRecordSource.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "FileKind.h"
#include "bridge/tnwDecoderRecordSource.h"

namespace tnw::cli {

struct InputOptions {
    std::string sPath;
    std::string sFrom;       // a kind name overriding the extension
    std::string sDelimiter;  // "" for the file's own: tab for .tsv, else found in the header
    std::int32_t lHeaderRows = 1;
    std::int32_t lLonCol = 0;  // 1-based field numbers; 0 for none
    std::int32_t lLatCol = 0;
    std::int32_t lWKTCol = 0;
    std::string sPhase;     // of an FGP set: "regions", "lines" or "points"; "" for all
    bool bAsSites = false;  // of an FGP set: each vertex of a line a point of its own
};

struct Input {
    const FileKind* pKind = nullptr;
    std::string sPath;
    std::shared_ptr<tnwDecoderRecordSource> oSource;
    TNW_Encoders_GeometryFormats eFormat = TNW_GeometryFormat_None;  // how records carry geometry
    std::shared_ptr<tnwASCIIDecoder> oText;  // the decoder of a text input, for what info tells
};

// Opens a file as a record source through its kind's row. Failures: kExitInput for a file that
// is missing or can't be read, kExitUsage for options that don't fit the file, kExitKind for a
// kind that isn't read as records.
Input OpenInput(const InputOptions& tOptions);

// The openers of the kinds' rows. Text: the columns come from the last header row
// (AutoGenColumns), or are named Field1, Field2... when there is none, and a lone line feed
// ends a line. The column that holds the well-known text is hidden: the geometry carries it.
void OpenText(const InputOptions& tOptions, Input& tInput);
void OpenTable(const InputOptions& tOptions, Input& tInput);
// A .shp with the values of its records from the .dbf beside it, each record's geometry as
// stored (see ShapeGeometryReader).
void OpenShapeSet(const InputOptions& tOptions, Input& tInput);

// One delimiter character from what the user typed: a single character, or "tab", "\t",
// "comma", "semicolon", "pipe", "space". Failure kExitUsage otherwise.
std::string ParseDelimiter(const std::string& sText);

// Failure kExitInput unless sPath names a readable regular file.
void RequireFile(const std::string& sPath);

}  // namespace tnw::cli
