// Runs the peer tools (GDAL's ogr2ogr/ogrinfo, shapelib's dbfcreate/dbfadd) that write the
// files the decoders are tested on.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/TestSupport.h"

namespace tnw::test {

// Succeeds when the command does; what it printed goes to the test log only when it fails.
inline ::testing::AssertionResult RunTool(const std::string& sCommand) {
    const CommandResult tResult = RunCommand(sCommand);
    if (tResult.iStatus == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << sCommand << " gave " << tResult.iStatus << "\n"
                                         << tResult.sOutput;
}

// A temporary path for the shell; such paths hold no quote.
inline std::string Quoted(const std::string& sPath) {
    return "'" + sPath + "'";
}

}  // namespace tnw::test

#define TNW_REQUIRE_TOOL(tool)                                    \
    if (::tnw::test::RunCommand("command -v " tool).iStatus != 0) \
    GTEST_SKIP() << tool " is not installed"
