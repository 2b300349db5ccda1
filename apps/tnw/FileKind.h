// The kinds of file the tool reads and writes, in one table: each kind says which names and
// extensions it answers to, how it opens as a record source, how records are written to it, and
// what `info` tells of it. The commands work through a kind's row and never ask which kind it is.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace tnw::cli {

class Console;
class RecordWriter;
struct Input;
struct InputOptions;

// Groups of convert's output options; a kind takes some of them and refuses the others.
enum OutputOptionGroup : unsigned {
    kShapeOptions = 1U << 0,  // --geometry, --x-offset, --y-offset, --centroids, --projection
    kTextOptions = 1U << 1,   // --no-header, --geometry-text, --lonlat
    kPlanOptions = 1U << 2,   // --rate
};

struct FileKind {
    std::string_view sName;                    // "delimited text"
    std::span<const std::string_view> vNames;  // extensions and --from/--to names, lower case
    // Opens a file of this kind as a record source; nullptr when the tool doesn't read it so.
    void (*fnOpen)(const InputOptions& tOptions, Input& tInput);
    // A writer of records to this kind; nullptr when the tool doesn't write it.
    std::unique_ptr<RecordWriter> (*fnNewWriter)();
    // Prints what `info` tells of a file of this kind.
    void (*fnInfo)(const InputOptions& tOptions, Console& oConsole);
    unsigned fOutputOptions;  // the OutputOptionGroup bits it takes
    bool bDelimited;          // fields split at a delimiter: --delimiter applies
};

// Every kind, in the order the help texts name them.
std::span<const FileKind> FileKinds();

// The kind named by --from or --to, or else by the file's extension, case-insensitive.
// Failure kExitUsage for an override that names no kind, kExitKind for an extension that names
// none.
const FileKind& ResolveKind(const std::string& sPath, std::string_view sOverride);

// "csv, txt, tsv, dbf or shp": the names of the kinds that fnOpen (bRead) or fnNewWriter opens.
std::string KindNames(bool bRead);

// The file's extension in lower case, without the dot; "" when it has none.
std::string LowerExtension(const std::string& sPath);

}  // namespace tnw::cli

namespace tnw::cli {

// "812 bytes", "147.5 KiB", "12.0 MiB".
std::string SizeText(std::uintmax_t nBytes);

// "1 record", "2 records".
std::string CountText(std::int64_t lCount, const std::string& sNoun);

}  // namespace tnw::cli
