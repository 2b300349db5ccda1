// Registration of the stand-ins, the point list, the text builder, the error handler and the
// arc angle.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <numbers>
#include <regex>

#include "RegisterStandIns.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "core/Services.h"
#include "core/StringBuilder.h"
#include "gislib/GISFactory.h"
#include "log/ErrorReports.h"
#include "support/TestSupport.h"

namespace tnw::standins {
namespace {

TEST(StandIns, RegisteredProgramIdsMakeTheirObjects) {
    RegisterStandIns();
    RegisterStandIns();  // twice does no harm
    EXPECT_TRUE(CreateAs<tnwGISFactory>("tnwGIS.tnwGISFactory", "x"));
    EXPECT_TRUE(CreateAs<tnwColumns>("TNWGIS.TNWCOLUMNS", "x"));  // ids ignore case
    EXPECT_NE(CreateAs<tnwPointList>("tnwGIS.tnwPointList", "x"),
              CreateAs<tnwPointList>("tnwGIS.tnwPointList", "x"));
    EXPECT_EQ(CreateAs<tnwFileUtility>("tnwGIS.tnwFileUtility", "x"), FileUtility());  // shared
    EXPECT_TRUE(CreateAs<ItnwErrorHandler>("tnwLog.tnwHandler", "x"));
    EXPECT_TRUE(CreateAs<tnwStringBuilder>("tnwlib.tnwStringBuilder", "x"));

    // The arc angle is counter-clockwise from the x axis, in (-pi, pi].
    const double dPi = std::numbers::pi;
    const std::array<double, 5> aCases[] = {{1, 1, 2, 2, dPi / 4},
                                            {0, 0, 0, 1, dPi / 2},
                                            {5, 5, 4, 5, dPi},
                                            {1, 1, 1, 0, -dPi / 2},
                                            {0, 0, -1, -1, -3 * dPi / 4}};
    for (const auto& [dX1, dY1, dX2, dY2, dAngle] : aCases)
        EXPECT_DOUBLE_EQ(CallArcAngle(dX1, dY1, dX2, dY2), dAngle);
}

TEST(StandIns, PointListChecksIndexes) {
    PointList oList;
    GISFactory oFactory;
    for (int i = 0; i < 3; ++i)
        oList.Add(oFactory.CreatePoint(i, -i, nullptr));
    EXPECT_EQ(oList.Item(2)->X(), 2.0);
    EXPECT_EQ(test::ErrorNumberOf([&] { oList.Item(-1); }), errSubscript);
    EXPECT_EQ(test::ErrorNumberOf([&] { oList.Item(3); }), errSubscript);
    EXPECT_THROW(oList.Add(nullptr), Error);
}

// Pieces of every size, some longer than a block, come out whole and in order.
TEST(StandIns, TextBuilderKeepsEveryPieceInOrder) {
    RegisterStandIns();
    auto oBuilder = CreateAs<tnwStringBuilder>("tnwlib.tnwStringBuilder", "x");
    std::string sExpected;
    for (std::size_t nSize : {0, 255, 257, 70000, (1 << 20) + 3, 5, 2 << 20, 0}) {
        const std::string sPiece(nSize, static_cast<char>('a' + sExpected.size() % 26));
        oBuilder->AppendLine(sPiece);
        oBuilder->Append(sPiece);
        sExpected += sPiece + "\r\n" + sPiece;
    }
    EXPECT_EQ(oBuilder->Text(), sExpected);
    // A separator goes in front of each further piece until it is taken away.
    oBuilder = CreateAs<tnwStringBuilder>("tnwlib.tnwStringBuilder", "x");
    oBuilder->Append("a");
    oBuilder->SetSeparator(",");
    oBuilder->Append("b");
    oBuilder->AppendLine("c");
    oBuilder->SetSeparator("");
    oBuilder->Append("d");
    EXPECT_EQ(oBuilder->Text(), "a,b,c\r\nd");
}

TEST(StandIns, ErrorHandlerKeepsReportsAndAppendsToTheLogFile) {
    test::TempDir oDir;
    const std::string sLog = oDir.Path("errors.log");
    ::setenv("TNW_ERROR_LOG", sLog.c_str(), 1);
    ClearErrorReports();
    ErrorHandler oHandler;
    oHandler.errorMessage("app", "1.2.3", "tnwShapeEncoder.Update", 53, "tnwEncoders",
                          "File not found", "");
    oHandler.errorMessage("app", "1.2.3", "tnwFGPDecoder.MoveNext",
                          static_cast<std::int32_t>(0x80040005u), "", "two\tlines\r\nhere", "more");
    ::unsetenv("TNW_ERROR_LOG");
    oHandler.errorMessage("app", "1.2.3", "tnwINIFile.Save", 75, "", "not logged to file", "");

    const auto aReports = ErrorReports();
    ASSERT_EQ(aReports.size(), 3u);
    EXPECT_EQ(aReports[1].sDescription, "two\tlines\r\nhere");  // kept as given
    EXPECT_EQ(aReports[2].sSource, "tnwINIFile.Save");
    const std::string sTime = "\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ";
    const std::regex oExpected(
        sTime + "\tapp 1.2.3\ttnwShapeEncoder.Update\t53\ttnwEncoders\tFile not found\t\n" + sTime +
        "\tapp 1.2.3\ttnwFGPDecoder.MoveNext\t80040005\t\ttwo lines  here\tmore\n");
    const std::string sWritten = test::ReadFile(sLog);
    EXPECT_TRUE(std::regex_match(sWritten, oExpected)) << sWritten;
    ClearErrorReports();
    EXPECT_TRUE(ErrorReports().empty());
}

}  // namespace
}  // namespace tnw::standins
