// Runs the peer tools (GDAL's ogr2ogr/ogrinfo, shapelib's dbfcreate/dbfadd) that write the
// files the decoders are tested on.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace tnw::test {

inline bool HaveTool(const std::string& sTool) {
    return std::system(("command -v " + sTool + " >/dev/null 2>&1").c_str()) == 0;
}

// Runs a shell command quietly; its output goes to the test log only when it fails.
inline ::testing::AssertionResult RunTool(const std::string& sCommand) {
    const std::string sLog = ::testing::TempDir() + "tnw_tool.log";
    const int iStatus = std::system((sCommand + " >" + sLog + " 2>&1").c_str());
    if (iStatus == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << sCommand << " gave " << iStatus;
}

// Quotes a path for the shell.
inline std::string Quoted(const std::string& sText) {
    std::string s = "'";
    for (char c : sText)
        s += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return s + "'";
}

}  // namespace tnw::test

#define TNW_REQUIRE_TOOL(tool) \
    if (!::tnw::test::HaveTool(tool)) GTEST_SKIP() << tool " is not installed"
