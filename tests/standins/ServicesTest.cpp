// Registration of the stand-ins, the point factory and list, the error handler and the arc
// angle.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <regex>

#include "RegisterStandIns.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "core/Services.h"
#include "gislib/GISFactory.h"
#include "gislib/Projection.h"
#include "log/ErrorReports.h"
#include "support/TestSupport.h"

namespace tnw::standins {
namespace {

TEST(StandIns, RegisteredProgramIdsMakeTheirObjects) {
    RegisterStandIns();
    EXPECT_TRUE(CreateAs<tnwGISFactory>("tnwGIS.tnwGISFactory", "x"));
    EXPECT_TRUE(CreateAs<tnwColumns>("TNWGIS.TNWCOLUMNS", "x"));
    auto oList1 = CreateAs<tnwPointList>("tnwGIS.tnwPointList", "x");
    auto oList2 = CreateAs<tnwPointList>("tnwGIS.tnwPointList", "x");
    ASSERT_TRUE(oList1 && oList2);
    EXPECT_NE(oList1, oList2);
    // One shared file utility.
    EXPECT_EQ(CreateAs<tnwFileUtility>("tnwGIS.tnwFileUtility", "x"), FileUtility());
    EXPECT_TRUE(CreateAs<ItnwErrorHandler>("tnwLog.tnwHandler", "x"));
    EXPECT_DOUBLE_EQ(CallArcAngle(1, 1, 2, 2), std::numbers::pi / 4);
    RegisterStandIns();  // twice does no harm
    EXPECT_TRUE(CreateAs<tnwColumns>("tnwGIS.tnwColumns", "x"));
}

TEST(StandIns, ArcAngleIsCounterClockwiseFromTheXAxis) {
    RegisterStandIns();
    EXPECT_DOUBLE_EQ(CallArcAngle(0, 0, 1, 0), 0.0);
    EXPECT_DOUBLE_EQ(CallArcAngle(0, 0, 0, 1), std::numbers::pi / 2);
    EXPECT_DOUBLE_EQ(CallArcAngle(5, 5, 4, 5), std::numbers::pi);
    EXPECT_DOUBLE_EQ(CallArcAngle(1, 1, 1, 0), -std::numbers::pi / 2);
    EXPECT_DOUBLE_EQ(CallArcAngle(0, 0, -1, -1), -3 * std::numbers::pi / 4);
}

TEST(StandIns, FactoryPointsIgnoreTheProjection) {
    GISFactory oFactory;
    auto oProjection = std::make_shared<Projection>(SpatialReference::Utm(14, true));
    auto oPoint = oFactory.CreatePoint(-98.5, 38.25, oProjection);
    ASSERT_TRUE(oPoint);
    EXPECT_EQ(oPoint->X(), -98.5);
    EXPECT_EQ(oPoint->Y(), 38.25);
    EXPECT_EQ(oFactory.CreatePoint(1, 2, nullptr)->WKT(), "POINT (1 2)");
}

TEST(StandIns, PointListKeepsOrderAndChecksIndexes) {
    PointList oList;
    GISFactory oFactory;
    for (int i = 0; i < 3; ++i)
        oList.Add(oFactory.CreatePoint(i, -i, nullptr));
    EXPECT_EQ(oList.Count(), 3);
    EXPECT_EQ(oList.Item(2)->X(), 2.0);
    for (std::int32_t lIndex : {-1, 3}) {
        try {
            oList.Item(lIndex);
            ADD_FAILURE() << lIndex;
        } catch (const Error& e) {
            EXPECT_EQ(e.lNumber, errSubscript);
        }
    }
    EXPECT_THROW(oList.Add(nullptr), Error);
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
    EXPECT_EQ(aReports[0].sSource, "tnwShapeEncoder.Update");
    EXPECT_EQ(aReports[0].lNumber, 53);
    EXPECT_EQ(aReports[0].sErrSource, "tnwEncoders");
    EXPECT_EQ(aReports[1].sDescription, "two\tlines\r\nhere");
    EXPECT_EQ(aReports[1].sMoreInfo, "more");
    EXPECT_EQ(aReports[2].sApplication, "app");

    const std::string sTime = "\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ";
    const std::regex oExpected(sTime +
                               "\tapp 1.2.3\ttnwShapeEncoder.Update\t53\ttnwEncoders\tFile not "
                               "found\t\n" +
                               sTime +
                               "\tapp 1.2.3\ttnwFGPDecoder.MoveNext\t80040005\t\ttwo lines  "
                               "here\tmore\n");
    const std::string sWritten = test::ReadFile(sLog);
    EXPECT_TRUE(std::regex_match(sWritten, oExpected)) << sWritten;

    ClearErrorReports();
    EXPECT_TRUE(ErrorReports().empty());
}

}  // namespace
}  // namespace tnw::standins
