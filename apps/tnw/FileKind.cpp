#include "FileKind.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <vector>

#include "ExitCodes.h"
#include "FGPSet.h"
#include "Info.h"
#include "Input.h"
#include "Writers.h"

namespace tnw::cli {

namespace {

std::string Lower(std::string_view s) {
    std::string sLower(s);
    std::transform(sLower.begin(), sLower.end(), sLower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return sLower;
}

constexpr std::string_view kTextNames[] = {"csv", "txt", "tsv", "text"};
constexpr std::string_view kTableNames[] = {"dbf"};
constexpr std::string_view kShapeNames[] = {"shp"};
constexpr std::string_view kPlanNames[] = {"fpd"};
constexpr std::string_view kLogNames[] = {"gpl"};
constexpr std::string_view kFGPNames[] = {"fgp"};

const FileKind kKinds[] = {
    {"delimited text", kTextNames, OpenText, NewTextWriter, TextInfo, kTextOptions, true},
    {"dBase table", kTableNames, OpenTable, NewTableWriter, TableInfo, 0, false},
    {"shapefile set", kShapeNames, OpenShapeSet, NewShapeSetWriter, ShapesInfo, kShapeOptions,
     false},
    {"plan-grid file", kPlanNames, nullptr, NewPlanWriter, PlanInfo, kPlanOptions, false},
    {"GPL log", kLogNames, OpenLog, NewLogWriter, LogInfo, 0, false},
    {"FGP set", kFGPNames, OpenFGP, NewFGPSetWriter, FGPInfo, 0, false},
};

const FileKind* KindOfName(std::string_view sName) {
    for (const FileKind& tKind : kKinds) {
        if (std::find(tKind.vNames.begin(), tKind.vNames.end(), sName) != tKind.vNames.end()) {
            return &tKind;
        }
    }
    return nullptr;
}

// "csv, txt, tsv, dbf or shp" of the kinds that pass the test.
template <class Test>
std::string NameList(Test fnTest, bool bWithText) {
    std::vector<std::string_view> vNames;
    for (const FileKind& tKind : kKinds) {
        if (!fnTest(tKind)) continue;
        for (std::string_view sName : tKind.vNames) {
            if (bWithText || sName != "text") vNames.push_back(sName);
        }
    }
    std::string sList;
    for (std::size_t n = 0; n < vNames.size(); ++n) {
        if (n > 0) sList += n + 1 == vNames.size() ? " or " : ", ";
        sList += vNames[n];
    }
    return sList;
}

}  // namespace

std::span<const FileKind> FileKinds() {
    return kKinds;
}

std::string KindNames(bool bRead) {
    return NameList(
        [&](const FileKind& t) { return bRead ? t.fnOpen != nullptr : t.fnNewWriter != nullptr; },
        false);
}

std::string LowerExtension(const std::string& sPath) {
    const std::string sExtension = std::filesystem::path(sPath).extension().string();
    return sExtension.empty() ? std::string() : Lower(std::string_view(sExtension).substr(1));
}

const FileKind& ResolveKind(const std::string& sPath, std::string_view sOverride) {
    const auto fnAll = [](const FileKind&) { return true; };
    if (!sOverride.empty()) {
        if (const FileKind* pKind = KindOfName(Lower(sOverride))) return *pKind;
        throw Failure(kExitUsage, "\"" + std::string(sOverride) + "\" is no file kind; use " +
                                      NameList(fnAll, false));
    }
    const std::string sExtension = LowerExtension(sPath);
    if (const FileKind* pKind = KindOfName(sExtension)) return *pKind;
    if (sExtension.empty()) {
        throw Failure(kExitKind, "can't tell the kind of " + sPath +
                                     " without an extension; name it with --from or --to");
    }
    throw Failure(kExitKind, "unknown file kind \"." + sExtension + "\" of " + sPath +
                                 "; the tool knows " + NameList(fnAll, false) + " files");
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
