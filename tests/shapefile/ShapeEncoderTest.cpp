// The file set of tnwShapeEncoder: names, creation and the "DBF Error" box, record routing and
// bookkeeping, point records, close-out, and the failure paths.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <limits>

#include "ShapeTestSupport.h"
#include "gislib/Projection.h"
#include "platform/File.h"
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
};

void ExpectPoint(const std::string& sShp, std::size_t nRecord, std::int32_t lNumber, double x,
                 double y) {
    const std::size_t n = 100 + 28 * nRecord;
    EXPECT_EQ(BigLong(sShp, n), lNumber);
    EXPECT_EQ(BigLong(sShp, n + 4), 10);
    EXPECT_EQ(LittleLong(sShp, n + 8), 1);
    EXPECT_EQ(LittleDouble(sShp, n + 12), x);
    EXPECT_EQ(LittleDouble(sShp, n + 20), y);
}

void ExpectBox(const std::string& sFile, std::size_t n, double x0, double y0, double x1,
               double y1) {
    EXPECT_EQ(LittleDouble(sFile, n), x0);
    EXPECT_EQ(LittleDouble(sFile, n + 8), y0);
    EXPECT_EQ(LittleDouble(sFile, n + 16), x1);
    EXPECT_EQ(LittleDouble(sFile, n + 24), y1);
}

TEST_F(SetFixture, BaseNames) {
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
}

TEST_F(SetFixture, GeometryTypeDecidesTheFiles) {
    const std::vector<std::pair<std::int32_t, std::int32_t>> vTypes = {
        {1, 1}, {2, 3}, {3, 5}, {4, 8}, {0, 0}, {5, 0}, {-1, 0}};
    for (const auto& [lGeometryType, lShapeType] : vTypes) {
        SCOPED_TRACE(lGeometryType);
        std::filesystem::remove_all(dir.Root());
        std::filesystem::create_directories(dir.Root());
        ASSERT_TRUE(
            encoder.Initialize(Base(), oColumns, static_cast<tnwGeometryType>(lGeometryType)));
        encoder.CloseFiles();
        EXPECT_EQ(Exists(".shp"), lShapeType != 0);
        EXPECT_EQ(Exists(".shx"), lShapeType != 0);
        EXPECT_EQ(Exists(".prj"), lShapeType != 0);
        if (lShapeType != 0) {
            EXPECT_EQ(LittleLong(Read(".shp"), 32), lShapeType);
        }
    }
    // Initialize without a type makes polygons.
    std::filesystem::remove_all(dir.Root());
    std::filesystem::create_directories(dir.Root());
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns));
    encoder.CloseFiles();
    EXPECT_EQ(LittleLong(Read(".shp"), 32), 5);
}

TEST_F(SetFixture, EmptySetIsFinished) {
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns));
    encoder.CloseFiles();
    encoder.CloseFiles();  // the second does nothing
    for (const char* sExtension : {".shp", ".shx"}) {
        const std::string sFile = Read(sExtension);
        ASSERT_EQ(sFile.size(), 100u);
        EXPECT_EQ(BigLong(sFile, 0), 9994);
        EXPECT_EQ(BigLong(sFile, 24), 50);
        EXPECT_EQ(LittleLong(sFile, 28), 1000);
        ExpectBox(sFile, 36, 999999999.0, 999999999.0, -999999999.0, -999999999.0);
        EXPECT_EQ(sFile.substr(68), std::string(32, '\0'));
    }
    EXPECT_EQ(Read(".dbf").size(), 32u + 32u + 1u);
    EXPECT_EQ(Read(".prj"), kPrj);
    EXPECT_EQ(Read(".mcd"), "<Columns>\r\n" + oId->ToXML("  ") + "</Columns>\r\n");
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
}

TEST_F(SetFixture, PointRecordsAndBookkeeping) {
    encoder.SetXOffset(10.0);
    encoder.SetYOffset(-1.0);
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
    EXPECT_TRUE(Put(1, MakePoint(1.5, 2.0)));
    EXPECT_TRUE(Put(2, MakePoint(-3.0, 4.25)));
    EXPECT_TRUE(Put(3, MakePoint(0.0, 0.0)));
    EXPECT_FALSE(encoder.Update());  // the geometry went with the record before
    EXPECT_TRUE(encoder.Update2());  // the stored point again
    encoder.CloseFiles();

    const std::string sShp = Read(".shp");
    const std::string sShx = Read(".shx");
    ASSERT_EQ(sShp.size(), 100u + 4 * 28);
    EXPECT_EQ(BigLong(sShp, 24), 50 + 14 * 4);
    EXPECT_EQ(BigLong(sShx, 24), 50 + 4 * 4);
    ExpectPoint(sShp, 0, 1, 11.5, 1.0);
    ExpectPoint(sShp, 1, 2, 7.0, 3.25);
    ExpectPoint(sShp, 2, 3, 10.0, -1.0);
    ExpectPoint(sShp, 3, 4, 10.0, -1.0);
    EXPECT_EQ(BigLong(sShx, 116), 78);  // the third entry
    EXPECT_EQ(BigLong(sShx, 120), 10);
    ExpectBox(sShp, 36, 7.0, -1.0, 11.5, 3.25);
    EXPECT_EQ(sShx.substr(28, 72), sShp.substr(28, 72));
    EXPECT_EQ(DbfRecords(), 4);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
}

TEST_F(SetFixture, StoredPointAndCentroids) {
    const auto oSquare = MakePolygon({{{0, 0}, {0, 2}, {2, 2}, {2, 0}, {0, 0}}});
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
    EXPECT_TRUE(encoder.Update2());  // (0, 0) before any geometry
    EXPECT_TRUE(Put(2, MakePoint(5, 6)));
    EXPECT_TRUE(Put(3, oSquare));  // repeats the last point
    encoder.SetExportCentroids(true);
    EXPECT_TRUE(Put(4, oSquare));  // the square's centre
    encoder.SetGeometry(oSquare);
    encoder.SetGeometry(nullptr);
    EXPECT_FALSE(encoder.Update());
    encoder.CloseFiles();
    const std::string sShp = Read(".shp");
    ExpectPoint(sShp, 0, 1, 0, 0);
    ExpectPoint(sShp, 1, 2, 5, 6);
    ExpectPoint(sShp, 2, 3, 5, 6);
    ExpectPoint(sShp, 3, 4, 1, 1);
    EXPECT_EQ(DbfRecords(), 4);
}

TEST_F(SetFixture, ClosedEncoderFailsAtTheFirstWrite) {
    EXPECT_FALSE(Put(1, nullptr));
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.Update2");
}

TEST_F(SetFixture, ReplacesAnEarlierSetAndStartsAgain) {
    WriteFile(Base() + ".shp", std::string(5000, 'x'));
    encoder.SetProjection(
        std::make_shared<standins::Projection>(standins::SpatialReference::WebMercator()));
    for (int iSet = 0; iSet < 2; ++iSet) {
        ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
        EXPECT_TRUE(Put(1, MakePoint(iSet, iSet)));
        encoder.CloseFiles();
        const std::string sShp = Read(".shp");
        ASSERT_EQ(sShp.size(), 128u);
        ExpectPoint(sShp, 0, 1, iSet, iSet);
        ExpectBox(sShp, 36, iSet, iSet, iSet, iSet);
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
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.CloseFiles");
    EXPECT_EQ(DbfRecords(), 1);
    EXPECT_EQ(BigLong(Read(".shp"), 24), 50 + 14);
    EXPECT_FALSE(Exists(".prj"));
    encoder.CloseFiles();
    const std::string sShx = Read(".shx");
    EXPECT_EQ(sShx.size(), 108u);
    EXPECT_EQ(BigLong(sShx, 24), 50);
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

// Coordinates that are not finite numbers cannot be placed by any reader: the record is refused.
TEST_F(SetFixture, NonFiniteCoordinatesAreRefused) {
    const double dNaN = std::numeric_limits<double>::quiet_NaN();
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryPoint));
    EXPECT_FALSE(Put(1, MakePoint(dNaN, 1)));
    EXPECT_TRUE(Put(2, MakePoint(1, 1)));
    encoder.SetXOffset(std::numeric_limits<double>::infinity());
    EXPECT_FALSE(Put(3, MakePoint(1, 1)));
    encoder.CloseFiles();
    EXPECT_EQ(DbfRecords(), 1);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
    ASSERT_EQ(capture.vReports.size(), 2u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.WritePoint");
}

// A multipoint whose record would not fit the 16-bit word count of an int32 is refused before
// anything is staged.
TEST_F(SetFixture, RecordPastTheWordLimitIsRefused) {
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
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.WriteMultiPoint");
    EXPECT_EQ(capture.vReports[0].lNumber, errOverflow);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
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
