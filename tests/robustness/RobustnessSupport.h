// Helpers of the robustness tests: the strict shapefile checker on the bytes of a set, and the
// records a table holds as read back by the library's own reader.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/Component.h"
#include "core/GISLib.h"
#include "decoders/tnwDBFDecoder.h"
#include "support/TestSupport.h"

namespace tnw::test {

// The exit status of the strict checker on a set: 0 when every file is whole and they agree.
// The byte checks only; the peer readers would make a sweep of many sets slow.
inline int CheckShapeSetBytes(const std::string& sBase) {
    return CheckShapeSet(sBase, "--no-peers").iStatus;
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
