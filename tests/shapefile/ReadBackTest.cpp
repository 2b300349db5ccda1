// Whole sets checked by the strict checker and read back by GDAL, feature by feature and field
// by field.
#include <gtest/gtest.h>

#include "ShapeTestSupport.h"
#include "core/SerialDate.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

struct ReadBackFixture : ::testing::Test {
    ScopedCapture capture;
    TempDir dir;
    std::shared_ptr<tnwColumns> oColumns = NewColumns();
    tnwShapeEncoder encoder;
    std::string Base() const { return dir.Path("r"); }

    // Every field type, keys of 11 and 12 characters, an invisible column and a "geometry"
    // column, which have no field.
    std::shared_ptr<tnwColumn> oName = AddColumn(*oColumns, "Name", vtString, 8);
    std::shared_ptr<tnwColumn> oElevation = AddColumn(*oColumns, "Elevation", vtDouble, 8, 1);
    std::shared_ptr<tnwColumn> oCount = AddColumn(*oColumns, "Count", vtInt32, 4);
    std::shared_ptr<tnwColumn> oEngaged = AddColumn(*oColumns, "Engaged", vtBoolean, 1);
    std::shared_ptr<tnwColumn> oDay = AddColumn(*oColumns, "Day", vtDate, 8);
    std::shared_ptr<tnwColumn> oEleven = AddColumn(*oColumns, "Elevenchars", vtFloat, 6, 2);
    std::shared_ptr<tnwColumn> oTwelve = AddColumn(*oColumns, "TwelveCharsX", vtString, 3);
    std::shared_ptr<tnwColumn> oHidden = AddColumn(*oColumns, "Hidden", vtDouble, 4, 0, false);
    std::shared_ptr<tnwColumn> oShape =
        AddColumn(*oColumns, "Shape", vtString, 20, 0, true, "geometry");

    void Values(const char* sName, double dElevation, std::int32_t lCount, bool bEngaged,
                SerialDate tDay, float fEleven, const char* sTwelve) {
        oName->SetValue(sName);
        oElevation->SetValue(dElevation);
        oCount->SetValue(lCount);
        oEngaged->SetValue(bEngaged);
        oDay->SetValue(tDay);
        oEleven->SetValue(fEleven);
        oTwelve->SetValue(sTwelve);
        oHidden->SetValue(1.0);
        oShape->SetValue("POINT (1 1)");
    }
    void Write(std::shared_ptr<IGeometry> oGeometry) {
        encoder.SetGeometry(std::move(oGeometry));
        EXPECT_TRUE(encoder.Update());
    }
    // GDAL gives every date field its own width of 10 ("yyyy/mm/dd").
    std::string Fields() const {
        return "Name:String:8:0|Elevation:Real:8:1|Count:Integer:4:0|Engaged:String:1:0|"
               "Day:Date:10:0|Elevenchars:Real:6:2|TwelveChars:String:3:0\n";
    }
};

TEST_F(ReadBackFixture, PointSet) {
    encoder.SetXOffset(100.0);
    ASSERT_TRUE(encoder.Initialize(Base() + ".shp", oColumns, tnwGeometryPoint));
    Values("Corn", 250.5, 12, true, DateSerial(2004, 3, 9), 0.5f, "abc");
    Write(MakePoint(-96.25, 40.5));
    // Too wide for their fields: text is cut on the right, numbers on the left.
    Values("Winter wheat", 123456789.5, 123456, false, DateSerial(1999, 12, 31), -1.25f, "abcdef");
    Write(MakePoint(-95.0, 41.0));
    Values("\xC3\xA9t\xC3\xA9", 1e20, -7, true, DateSerial(2020, 2, 29), 1234.5f, "");
    Write(MakePoint(-94.5, 39.75));
    encoder.CloseFiles();

    const CommandResult tCheck = CheckShapeSet(Base());
    EXPECT_EQ(tCheck.iStatus, 0) << tCheck.sOutput;
    // GDAL, told that the text is Windows-1252, gives it back as UTF-8.
    EXPECT_EQ(GdalDump(Base() + ".shp").sOutput,
              Fields() +
                  "POINT (3.75 40.5)|'Corn'|250.5|12|'Y'|'2004/03/09'|0.5|'abc'\n"
                  "POINT (5 41)|'Winter w'|456789.5|3456|'N'|'1999/12/31'|-1.25|'abc'\n"
                  "POINT (5.5 39.75)|'\xC3\xA9t\xC3\xA9'|1e+20|-7|'Y'|'2020/02/29'|1234.5|None\n");
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(ReadBackFixture, MultiPointSet) {
    encoder.SetXOffset(100.0);  // multipoints keep their coordinates
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryMultiPoint));
    Values("One", 1.0, 1, false, DateSerial(2001, 1, 1), 1.0f, "x");
    Write(MakeMultiPoint({{1, 2}}));
    Values("Three", 3.0, 3, true, DateSerial(2003, 3, 3), 3.0f, "y");
    Write(MakeMultiPoint({{3, 1}, {-1, 5}, {2, 2}}));
    encoder.CloseFiles();

    const CommandResult tCheck = CheckShapeSet(Base());
    EXPECT_EQ(tCheck.iStatus, 0) << tCheck.sOutput;
    EXPECT_EQ(GdalDump(Base() + ".shp").sOutput,
              Fields() +
                  "MULTIPOINT ((1 2))|'One'|1.0|1|'N'|'2001/01/01'|1.0|'x'\n"
                  "MULTIPOINT ((3 1),(-1 5),(2 2))|'Three'|3.0|3|'Y'|'2003/03/03'|3.0|'y'\n");
}

}  // namespace
}  // namespace tnw::test
