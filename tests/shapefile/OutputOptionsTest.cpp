// tnwShapeEncoder's extensions: field names kept apart within their 11 bytes, records without
// geometry kept as null shapes, points projected, and the .prj of the projection.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ShapeTestSupport.h"
#include "gislib/Projection.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

struct OutputOptionsTest : ::testing::Test {
    ScopedCapture capture;
    TempDir dir;
    tnwShapeEncoder encoder;

    std::string Base() const { return dir.Path("s"); }
    std::string Read(const std::string& sExtension) const { return ReadFile(Base() + sExtension); }
};

TEST_F(OutputOptionsTest, FieldNamesWithinElevenBytes) {
    struct Case {
        std::vector<std::string> vKeys;
        bool bUnique;
        std::vector<std::string> vNames;
    };
    const std::vector<Case> vCases = {
        {{"Steckertype1", "Steckertype2", "Steckertype3"},
         false,
         {"Steckertype", "Steckertype", "Steckertype"}},
        {{"Steckertype1", "Steckertype2", "Steckertype3"},
         true,
         {"Steckertype", "Steckerty_1", "Steckerty_2"}},
        {{"Steckerty_1", "Steckertype1", "Steckertype2"},
         true,
         {"Steckerty_1", "Steckertype", "Steckerty_2"}},
        {{"a", "b"}, true, {"a", "b"}},
    };
    for (const Case& c : vCases) {
        SCOPED_TRACE(c.vKeys[0] + (c.bUnique ? " unique" : ""));
        auto oColumns = NewColumns();
        for (const std::string& sKey : c.vKeys)
            AddColumn(*oColumns, sKey, vtString, 4);
        encoder.SetUniqueFieldNames(c.bUnique);
        ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
        encoder.CloseFiles();
        const std::string sDbf = Read(".dbf");
        std::vector<std::string> vNames;
        for (std::size_t i = 0; i < c.vKeys.size(); ++i) {
            const std::string sName = sDbf.substr(32 + 32 * i, 11);
            vNames.push_back(sName.substr(0, sName.find('\0')));
        }
        EXPECT_EQ(vNames, c.vNames);
    }
}

TEST_F(OutputOptionsTest, RecordsWithoutGeometry) {
    for (const bool bNullShapes : {false, true}) {
        SCOPED_TRACE(bNullShapes);
        auto oColumns = NewColumns();
        auto oId = AddColumn(*oColumns, "Id", vtInt32, 4);
        encoder.SetWriteNullShapes(bNullShapes);
        ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
        std::vector<bool> vTaken;
        for (std::int32_t i = 1; i <= 3; ++i) {
            oId->SetValue(i);
            encoder.SetGeometry(i == 2 ? nullptr : MakePoint(i, i));
            vTaken.push_back(encoder.Update());
        }
        encoder.CloseFiles();
        EXPECT_EQ(vTaken, (std::vector<bool>{true, bNullShapes, true}));
        const std::string sShp = Read(".shp");
        EXPECT_EQ(LittleLong(Read(".dbf"), 4), bNullShapes ? 3 : 2);
        if (bNullShapes) {
            // The second record holds shape type 0 alone; the box is the points'.
            EXPECT_EQ(BigLong(sShp, 128 + 4), 2);
            EXPECT_EQ(LittleLong(sShp, 128 + 8), 0);
        }
        EXPECT_EQ(LittleDouble(sShp, 36), 1.0);
        EXPECT_EQ(LittleDouble(sShp, 52), 3.0);
        // The strict checker wants no null shape in a point set; GDAL reads them as such.
        const std::string sRead = GdalDump(Base() + ".shp").sOutput;
        EXPECT_NE(sRead.find(bNullShapes ? "\nPOINT (1 1)|1\nNone|2\nPOINT (3 3)|3\n"
                                         : "\nPOINT (1 1)|1\nPOINT (3 3)|3\n"),
                  std::string::npos)
            << sRead;
    }
}

TEST_F(OutputOptionsTest, ProjectedPointsAndTheirPrj) {
    struct Case {
        bool bProject;
        bool bPrj;
        double dX;  // of the point at 9 E, 50 N in UTM zone 32 north
        std::string sPrjStart;
    };
    const std::vector<Case> vCases = {
        {false, false, 9.0, "GEOGCS [\"GCS_WGS_1984\""},
        {true, false, 500000.0, "GEOGCS [\"GCS_WGS_1984\""},
        {true, true, 500000.0, "PROJCS[\"WGS_1984_UTM_Zone_32N\",GEOGCS[\"GCS_WGS_1984\""},
    };
    auto oColumns = NewColumns();
    AddColumn(*oColumns, "Id", vtInt32, 4);
    encoder.SetProjection(
        std::make_shared<standins::Projection>(standins::SpatialReference::Utm(32, true)));
    for (const Case& c : vCases) {
        SCOPED_TRACE(std::to_string(c.bProject) + std::to_string(c.bPrj));
        encoder.SetProjectPoints(c.bProject);
        encoder.SetPrjFromProjection(c.bPrj);
        ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
        encoder.SetGeometry(MakePoint(9.0, 50.0));
        ASSERT_TRUE(encoder.Update());
        encoder.CloseFiles();
        const std::string sShp = Read(".shp");
        EXPECT_NEAR(LittleDouble(sShp, 112), c.dX, 1e-6);
        EXPECT_EQ(LittleDouble(sShp, 120) > 5e6, c.bProject);
        EXPECT_EQ(Read(".prj").rfind(c.sPrjStart, 0), 0u) << Read(".prj");
    }
}

}  // namespace
}  // namespace tnw::test
