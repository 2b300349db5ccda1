// The three kinds of file the tool reads and writes, told by extension or by name.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tnw::cli {

enum class FileKind {
    Text,    // delimited text: .csv, .txt, .tsv
    Table,   // a dBase table: .dbf
    Shapes,  // a shapefile set: .shp with .shx and .dbf
};

// The kind named by --from or --to ("csv", "txt", "tsv", "text", "dbf", "shp"), or else by the
// file's extension, case-insensitive. Failure kExitUsage for an override that names no kind,
// kExitKind for an extension that names none.
FileKind ResolveKind(const std::string& sPath, std::string_view sOverride);

// The file's extension in lower case, without the dot; "" when it has none.
std::string LowerExtension(const std::string& sPath);

std::string_view KindName(FileKind eKind);

}  // namespace tnw::cli

namespace tnw::cli {

// "812 bytes", "147.5 KiB", "12.0 MiB".
std::string SizeText(std::uintmax_t nBytes);

// "1 record", "2 records".
std::string CountText(std::int64_t lCount, const std::string& sNoun);

}  // namespace tnw::cli
