// The file set of tnwShapeEncoder: names, creation and the "DBF Error" box, record routing and
// bookkeeping, point records byte for byte, close-out, and the failure paths.
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "ShapeTestSupport.h"
#include "gislib/Projection.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

const std::string kPrj =
    "GEOGCS [\"GCS_WGS_1984\",DATUM[\"D_WGS_1984\",SPHEROID[\"WGS_1984\",6378137.0,"
    "298.257223563]],PRIMEM[\"Greenwich\",0.0],UNIT[\"Degree\",0.0174532925199433]]";

struct SetFixture : ::testing::Test {
    ScopedCapture capture;
    TempDir dir;
    std::shared_ptr<tnwColumns> oColumns = NewColumns();
    std::shared_ptr<tnwColumn> oId = AddColumn(*oColumns, "Id", vtInt32, 4);
    tnwShapeEncoder encoder;

    std::string Base() const { return dir.Path("s"); }
    std::string Read(const std::string& sExtension) const { return ReadFile(Base() + sExtension); }
    bool Exists(const std::string& sExtension) const {
        return std::filesystem::exists(Base() + sExtension);
    }
    // One record: an id and a geometry (nothing for none), through Update.
    bool Put(std::int32_t lId, std::shared_ptr<IGeometry> oGeometry) {
        oId->SetValue(lId);
        encoder.SetGeometry(std::move(oGeometry));
        return encoder.Update();
    }
    std::int32_t DbfRecords() const { return LittleLong(Read(".dbf"), 4); }
    void ExpectReport(const std::string& sSource, std::int32_t lNumber = 0) {
        ASSERT_EQ(capture.vReports.size(), 1u);
        EXPECT_EQ(capture.vReports[0].sSource, sSource);
        if (lNumber) {
            EXPECT_EQ(capture.vReports[0].lNumber, lNumber);
        }
    }
};

// Record header (big-endian number and length 10), shape type 1, x, y.
void ExpectPoints(const std::string& sShp, const std::vector<std::pair<double, double>>& vXY) {
    ASSERT_EQ(sShp.size(), 100 + 28 * vXY.size());
    for (std::size_t i = 0; i < vXY.size(); ++i) {
        const std::size_t n = 100 + 28 * i;
        EXPECT_EQ(std::tuple(BigLong(sShp, n), BigLong(sShp, n + 4), LittleLong(sShp, n + 8),
                             LittleDouble(sShp, n + 12), LittleDouble(sShp, n + 20)),
                  std::tuple(static_cast<std::int32_t>(i + 1), 10, 1, vXY[i].first, vXY[i].second))
            << "record " << i + 1;
    }
}

void ExpectBox(const std::string& sFile, double x0, double y0, double x1, double y1) {
    EXPECT_EQ(std::tuple(LittleDouble(sFile, 36), LittleDouble(sFile, 44), LittleDouble(sFile, 52),
                         LittleDouble(sFile, 60)),
              std::tuple(x0, y0, x1, y1));
}

TEST_F(SetFixture, NamesAndGeometryTypesDecideTheFiles) {
    const std::vector<std::pair<std::string, std::string>> vNames = {
        {"a.shp", "a"}, {"a.dbf", "a"}, {"a", "a"}, {"a.data", "a.data"}, {"a.b.shx", "a.b"}};
    for (const auto& [sGiven, sBase] : vNames) {
        SCOPED_TRACE(sGiven);
        ASSERT_TRUE(encoder.Initialize(dir.Path(sGiven), oColumns, tnwGeometryPoint));
        encoder.CloseFiles();
        EXPECT_EQ(encoder.Filename(), dir.Path(sBase));
        for (const char* sExtension : {".dbf", ".shp", ".shx", ".mcd", ".prj"})
            EXPECT_TRUE(std::filesystem::exists(dir.Path(sBase) + sExtension)) << sExtension;
    }
    // Geometry type to shape type; -2 stands for Initialize without a type, which makes polygons.
    for (const auto& [lGeometryType, lShapeType] :
         std::vector<std::pair<std::int32_t, std::int32_t>>{
             {1, 1}, {2, 3}, {3, 5}, {4, 8}, {0, 0}, {5, 0}, {-1, 0}, {-2, 5}}) {
        SCOPED_TRACE(lGeometryType);
        std::filesystem::remove_all(dir.Root());
        std::filesystem::create_directories(dir.Root());
        ASSERT_TRUE(lGeometryType == -2
                        ? encoder.Initialize(Base(), oColumns)
                        : encoder.Initialize(Base(), oColumns,
                                             static_cast<tnwGeometryType>(lGeometryType)));
        encoder.CloseFiles();
        for (const char* sExtension : {".shp", ".shx", ".prj"})
            EXPECT_EQ(Exists(sExtension), lShapeType != 0) << sExtension;
        if (lShapeType != 0) {
            EXPECT_EQ(LittleLong(Read(".shp"), 32), lShapeType);
        }
    }
}

TEST_F(SetFixture, EmptySetIsFinished) {
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns));
    encoder.CloseFiles();
    encoder.CloseFiles();  // the second does nothing
    for (const char* sExtension : {".shp", ".shx"}) {
        const std::string sFile = Read(sExtension);
        ASSERT_EQ(sFile.size(), 100u);
        EXPECT_EQ(std::tuple(BigLong(sFile, 0), BigLong(sFile, 24), LittleLong(sFile, 28)),
                  std::tuple(9994, 50, 1000));
        ExpectBox(sFile, 999999999.0, 999999999.0, -999999999.0, -999999999.0);
        EXPECT_EQ(sFile.substr(68), std::string(32, '\0'));
    }
    EXPECT_EQ(Read(".dbf").size(), 32u + 32u + 1u);
    EXPECT_EQ(Read(".prj"), kPrj);
    EXPECT_EQ(Read(".mcd"), "<Columns>\r\n" + oId->ToXML("  ") + "</Columns>\r\n");
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
}

// Offsets move points; Update2 writes the stored point again, before any geometry (0, 0) and
// after a polygon (the last point); centroids make points of polygons.
TEST_F(SetFixture, PointRecordsAndBookkeeping) {
    const auto oSquare = MakePolygon({{{0, 0}, {0, 2}, {2, 2}, {2, 0}, {0, 0}}});
    EXPECT_FALSE(Put(1, nullptr));  // nothing open
    ExpectReport("tnwShapeEncoder.Update2");
    encoder.SetXOffset(10.0);
    encoder.SetYOffset(-1.0);
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
    EXPECT_TRUE(encoder.Update2());
    EXPECT_TRUE(Put(2, MakePoint(1.5, 2.0)));
    EXPECT_TRUE(Put(3, MakePoint(-3.0, 4.25)));
    EXPECT_FALSE(encoder.Update());  // the geometry went with the record before
    EXPECT_TRUE(encoder.Update2());
    EXPECT_TRUE(Put(5, oSquare));
    encoder.SetExportCentroids(true);
    EXPECT_TRUE(Put(6, oSquare));
    encoder.SetGeometry(oSquare);
    encoder.SetGeometry(nullptr);
    EXPECT_FALSE(encoder.Update());
    encoder.CloseFiles();

    const std::string sShp = Read(".shp");
    const std::string sShx = Read(".shx");
    ExpectPoints(sShp, {{10, -1}, {11.5, 1}, {7, 3.25}, {7, 3.25}, {7, 3.25}, {11, 0}});
    EXPECT_EQ(BigLong(sShp, 24), 50 + 14 * 6);
    EXPECT_EQ(BigLong(sShx, 24), 50 + 4 * 6);
    EXPECT_EQ(std::pair(BigLong(sShx, 116), BigLong(sShx, 120)), std::pair(78, 10));  // entry 3
    ExpectBox(sShp, 7.0, -1.0, 11.5, 3.25);
    EXPECT_EQ(sShx.substr(28, 72), sShp.substr(28, 72));
    EXPECT_EQ(DbfRecords(), 6);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
}

TEST_F(SetFixture, ReplacesAnEarlierSetAndStartsAgain) {
    WriteFile(Base() + ".shp", std::string(5000, 'x'));
    encoder.SetProjection(
        std::make_shared<standins::Projection>(standins::SpatialReference::WebMercator()));
    for (int iSet = 0; iSet < 2; ++iSet) {
        ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
        EXPECT_TRUE(Put(1, MakePoint(iSet, iSet)));
        encoder.CloseFiles();
        ExpectPoints(Read(".shp"), {{iSet, iSet}});
        ExpectBox(Read(".shp"), iSet, iSet, iSet, iSet);
        EXPECT_EQ(DbfRecords(), 1);
        EXPECT_EQ(Read(".prj"), kPrj);  // whatever the projection
    }
}

// A failure while finishing skips what follows it: with no way to write the .mcd, the .prj is
// not written and the .shx is left unfinished, to be closed as it stands.
TEST_F(SetFixture, CloseFailureSkipsTheRest) {
    std::filesystem::create_directories(Base() + ".mcd");
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
    EXPECT_TRUE(Put(1, MakePoint(1, 2)));
    encoder.CloseFiles();
    ExpectReport("tnwShapeEncoder.CloseFiles");
    EXPECT_EQ(DbfRecords(), 1);
    EXPECT_EQ(BigLong(Read(".shp"), 24), 50 + 14);
    EXPECT_FALSE(Exists(".prj"));
    encoder.CloseFiles();
    EXPECT_EQ(Read(".shx").size(), 108u);
    EXPECT_EQ(BigLong(Read(".shx"), 24), 50);
    EXPECT_EQ(capture.vReports.size(), 1u);
}

TEST_F(SetFixture, DbfErrorBox) {
    EXPECT_FALSE(encoder.Initialize(Base(), nullptr, tnwGeometryPoint));
    EXPECT_FALSE(encoder.Initialize(dir.Path("missing/s"), oColumns, tnwGeometryPoint));
    ASSERT_EQ(capture.vBoxes.size(), 2u);
    EXPECT_EQ(capture.vBoxes[0].sTitle, "DBF Error");
    EXPECT_EQ(capture.vBoxes[0].sText,
              "Error: Object variable or With block variable not set\n" + Base());
    EXPECT_EQ(capture.vBoxes[0].eIcon, platform::MsgIcon::Exclamation);
    EXPECT_EQ(capture.vBoxes[1].sText.rfind("Error: File not found", 0), 0u);
    EXPECT_TRUE(capture.vReports.empty());
    // The failed set was finished and closed: a table with no fields, and no .shp.
    EXPECT_EQ(Read(".dbf").size(), 33u);
    EXPECT_FALSE(Exists(".shp"));
}

// Coordinates that are not finite numbers cannot be placed by any reader, and a multipoint
// whose record would not fit the 16-bit word count of an int32 cannot be indexed: such records
// are refused before anything is staged.
TEST_F(SetFixture, RecordsNoReaderCouldPlaceAreRefused) {
    struct HugeMultiPoint final : IMultiPoint {
        std::int32_t NumGeometries() const override { return 1 << 28; }
        std::shared_ptr<IGeometry> Geometry(std::int32_t) const override { return MakePoint(0, 0); }
        std::int32_t GeometryType() const override { return ogcMultiPoint; }
        std::shared_ptr<IPoint> Centroid() const override { return nullptr; }
        std::string WKT() const override { return {}; }
        std::shared_ptr<IGeometry> Project(
            const std::shared_ptr<ISpatialReference>&) const override {
            return nullptr;
        }
    };
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryMultiPoint));
    EXPECT_FALSE(Put(1, std::make_shared<HugeMultiPoint>()));
    encoder.CloseFiles();
    ExpectReport("tnwShapeEncoder.WriteMultiPoint", errOverflow);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);

    capture.vReports.clear();
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
    EXPECT_FALSE(Put(1, MakePoint(std::numeric_limits<double>::quiet_NaN(), 1)));
    EXPECT_TRUE(Put(2, MakePoint(1, 1)));
    encoder.SetXOffset(std::numeric_limits<double>::infinity());
    EXPECT_FALSE(Put(3, MakePoint(1, 1)));
    encoder.CloseFiles();
    EXPECT_EQ(DbfRecords(), 1);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
    ASSERT_EQ(capture.vReports.size(), 2u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.WritePoint");
}

// A write that fails is cut back out of the files: that record is refused and reported, and
// the set takes the records after it and ends whole.
TEST_F(SetFixture, FailedWriteIsCutBack) {
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
    const auto tSaved = platform::Sys().write;
    platform::Sys().write = [](int, const void*, std::size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    int nWritten = 0;
    while (Put(nWritten + 1, MakePoint(1, 1)))
        ++nWritten;
    platform::Sys().write = tSaved;
    EXPECT_GT(nWritten, 1000);  // the buffers filled before the first write
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].lNumber, errDiskFull);
    EXPECT_TRUE(Put(nWritten + 2, MakePoint(2, 2)));
    encoder.CloseFiles();
    EXPECT_EQ(DbfRecords(), nWritten + 1);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
}

}  // namespace
}  // namespace tnw::test
