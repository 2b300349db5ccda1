#include "FileKind.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>

#include "ExitCodes.h"

namespace tnw::cli {

namespace {

std::string Lower(std::string_view s) {
    std::string sLower(s);
    std::transform(sLower.begin(), sLower.end(), sLower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return sLower;
}

bool KindOfName(const std::string& sName, FileKind& eKind) {
    if (sName == "csv" || sName == "txt" || sName == "tsv" || sName == "text") {
        eKind = FileKind::Text;
    } else if (sName == "dbf") {
        eKind = FileKind::Table;
    } else if (sName == "shp") {
        eKind = FileKind::Shapes;
    } else {
        return false;
    }
    return true;
}

}  // namespace

std::string LowerExtension(const std::string& sPath) {
    const std::string sExtension = std::filesystem::path(sPath).extension().string();
    return sExtension.empty() ? std::string() : Lower(std::string_view(sExtension).substr(1));
}

FileKind ResolveKind(const std::string& sPath, std::string_view sOverride) {
    FileKind eKind{};
    if (!sOverride.empty()) {
        if (KindOfName(Lower(sOverride), eKind)) return eKind;
        throw Failure(kExitUsage, "\"" + std::string(sOverride) +
                                      "\" is no file kind; use csv, txt, tsv, dbf or shp");
    }
    const std::string sExtension = LowerExtension(sPath);
    if (KindOfName(sExtension, eKind)) return eKind;
    if (sExtension.empty()) {
        throw Failure(kExitKind, "can't tell the kind of " + sPath +
                                     " without an extension; name it with --from or --to");
    }
    throw Failure(kExitKind, "unknown file kind \"." + sExtension + "\" of " + sPath +
                                 "; the tool reads and writes .csv, .txt, .tsv, .dbf and .shp");
}

std::string_view KindName(FileKind eKind) {
    switch (eKind) {
        case FileKind::Text:
            return "delimited text";
        case FileKind::Table:
            return "dBase table";
        case FileKind::Shapes:
            return "shapefile set";
    }
    return "";
}

}  // namespace tnw::cli

namespace tnw::cli {

std::string SizeText(std::uintmax_t nBytes) {
    if (nBytes < 1024) return std::to_string(nBytes) + (nBytes == 1 ? " byte" : " bytes");
    const char* aUnits[] = {"KiB", "MiB", "GiB", "TiB"};
    double dSize = static_cast<double>(nBytes) / 1024.0;
    std::size_t nUnit = 0;
    while (dSize >= 1024.0 && nUnit + 1 < std::size(aUnits)) {
        dSize /= 1024.0;
        ++nUnit;
    }
    char aText[32];
    std::snprintf(aText, sizeof aText, "%.1f %s", dSize, aUnits[nUnit]);
    return aText;
}

std::string CountText(std::int64_t lCount, const std::string& sNoun) {
    return std::to_string(lCount) + " " + sNoun + (lCount == 1 ? "" : "s");
}

}  // namespace tnw::cli
