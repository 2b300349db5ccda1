// Helpers of the robustness tests: columns of a test record, the strict shapefile checker, and
// the records a table holds as read back by the library's own reader.
#pragma once

#include <sys/wait.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "core/Component.h"
#include "core/GISLib.h"
#include "decoders/tnwDBFDecoder.h"

namespace tnw::test {

inline std::shared_ptr<tnwColumns> NewColumns() {
    return CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
}

// A column as hosts add them: empty name and description, kind 1, visible and active.
inline std::shared_ptr<tnwColumn> AddColumn(tnwColumns& oColumns, const std::string& sKey,
                                            std::int32_t lType, std::int16_t iSize,
                                            std::int16_t iPrecision = 0) {
    return oColumns.Add(sKey, "", "", lType, iSize, iPrecision, 0, 1, 0, "", true, true);
}

// The exit status of the strict checker on a set: 0 when every file is whole and they agree.
// The byte checks only; the peer readers would make a sweep of many sets slow.
inline int CheckShapeSet(const std::string& sBase) {
    const std::string sCommand =
        TNW_CHECK_SHAPESET " --quiet --no-peers '" + sBase + "' >/dev/null 2>&1";
    const int iStatus = std::system(sCommand.c_str());
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
}

// The numbers in field sKey of every record of a table, read with tnwDBFDecoder.
inline std::vector<std::int32_t> ReadNumbers(const std::string& sPath, const std::string& sKey) {
    std::vector<std::int32_t> vNumbers;
    tnwDBFDecoder oReader;
    oReader.SetFilename(sPath);
    const auto oColumn = oReader.Columns()->Item(sKey);
    if (!oColumn) return vNumbers;
    for (bool bMore = oReader.MoveFirst().EqualsTrue(); bMore; bMore = oReader.MoveNext())
        vNumbers.push_back(oColumn->Value().ToLong());
    return vNumbers;
}

}  // namespace tnw::test
