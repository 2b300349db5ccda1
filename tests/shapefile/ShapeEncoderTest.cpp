// Point records of tnwShapeEncoder byte for byte, their bookkeeping, records no reader could
// place, and a whole record source with progress.
#include <gtest/gtest.h>

#include <limits>
#include <optional>

#include "ShapeTestSupport.h"
#include "gislib/MemoryRecordSource.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

// The stand-in source, able to misstate its RecordCount.
class MisstatedSource final : public tnwRecordSource {
public:
    MisstatedSource(std::shared_ptr<tnwColumns> oColumns, std::int32_t eGeometryType)
        : m_oRows(oColumns, eGeometryType) {}
    standins::MemoryRecordSource m_oRows;
    std::optional<std::int32_t> lStatedCount;

    void MoveFirst() override { m_oRows.MoveFirst(); }
    void MoveNext() override { m_oRows.MoveNext(); }
    bool Eof() const override { return m_oRows.Eof(); }
    std::int32_t RecordCount() const override {
        return lStatedCount.value_or(m_oRows.RecordCount());
    }
    std::int32_t GeometryType() const override { return m_oRows.GeometryType(); }
    std::shared_ptr<IGeometry> Geometry() const override { return m_oRows.Geometry(); }
    std::shared_ptr<tnwColumns> Columns() const override { return m_oRows.Columns(); }
};

struct SetFixture : ::testing::Test {
    ScopedCapture capture;
    TempDir dir;
    std::shared_ptr<tnwColumns> oColumns = NewColumns();
    std::shared_ptr<tnwColumn> oId = AddColumn(*oColumns, "Id", vtInt32, 4);
    tnwShapeEncoder encoder;

    std::string Base() const { return dir.Path("s"); }
    std::string Read(const std::string& sExtension) const { return ReadFile(Base() + sExtension); }
    // One record: an id and a geometry (nothing for none), through Update.
    bool Put(std::int32_t lId, std::shared_ptr<IGeometry> oGeometry) {
        oId->SetValue(lId);
        encoder.SetGeometry(std::move(oGeometry));
        return encoder.Update();
    }
    std::int32_t DbfRecords() const { return LittleLong(Read(".dbf"), 4); }
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

// Offsets move points; Update2 writes the stored point again, before any geometry (0, 0) and
// after a polygon (the last point); centroids make points of polygons.
TEST_F(SetFixture, PointRecordsAndBookkeeping) {
    const auto oSquare = MakePolygon({{{0, 0}, {0, 2}, {2, 2}, {2, 0}, {0, 0}}});
    EXPECT_FALSE(Put(1, nullptr));  // nothing open
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.Update2");
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
    EXPECT_EQ(std::tuple(LittleDouble(sShp, 36), LittleDouble(sShp, 44), LittleDouble(sShp, 52),
                         LittleDouble(sShp, 60)),
              std::tuple(7.0, -1.0, 11.5, 3.25));  // the bounding box
    EXPECT_EQ(sShx.substr(28, 72), sShp.substr(28, 72));
    EXPECT_EQ(DbfRecords(), 6);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
}

// A multipoint record: its own box, the count, then the points; offsets leave it alone.
TEST_F(SetFixture, MultiPointRecord) {
    encoder.SetXOffset(100.0);
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryMultiPoint));
    EXPECT_TRUE(Put(1, std::make_shared<standins::MultiPoint>(std::vector<std::shared_ptr<IPoint>>{
                           standins::Point::Create(3, 1), standins::Point::Create(-1, 5)})));
    encoder.CloseFiles();
    const std::string sShp = Read(".shp");
    ASSERT_EQ(sShp.size(), 100u + 8u + 40u + 32u);
    EXPECT_EQ(std::tuple(LittleLong(sShp, 108), LittleDouble(sShp, 112), LittleDouble(sShp, 136),
                         LittleLong(sShp, 144), LittleDouble(sShp, 164)),
              std::tuple(8, -1.0, 5.0, 2, -1.0));
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
}

// Coordinates that are not finite numbers cannot be placed by any reader: such records are
// refused before anything is staged.
TEST_F(SetFixture, RecordsNoReaderCouldPlaceAreRefused) {
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

// Progress every thousand records; a stated count of 0 with records present fails at record
// 1000, before it is written, leaving the records so far in the open files.
TEST_F(SetFixture, ImportRSProgressAndAZeroCount) {
    auto oCallback = std::make_shared<RecordingCallback>();
    encoder.SetCallback(oCallback);
    auto oSource = std::make_shared<MisstatedSource>(oColumns, tnwGeometryPoint);
    for (int i = 0; i < 2500; ++i)
        oSource->m_oRows.AddRow({Variant(std::int32_t{i})}, MakePoint(i, -i));
    ASSERT_TRUE(encoder.ImportRS(Base() + ".shp", oSource));
    encoder.CloseFiles();
    EXPECT_EQ(oCallback->vCalls,
              (std::vector<std::string>{"SetBarCount(1,-)", "SetBarText(0,)",
                                        "SetBarRange(0,0.000000,100.000000)",
                                        "SetBarValue(0,40.000000)", "SetBarValue(0,80.000000)"}));
    EXPECT_EQ(DbfRecords(), 2500);
    EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);

    oSource->lStatedCount = 0;
    EXPECT_FALSE(encoder.ImportRS(Base(), oSource));
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.ImportRS");
    EXPECT_EQ(capture.vReports[0].lNumber, 11);
    encoder.CloseFiles();
    EXPECT_EQ(DbfRecords(), 999);
}

}  // namespace
}  // namespace tnw::test
