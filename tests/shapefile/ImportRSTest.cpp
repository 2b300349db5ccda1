// Writing a whole record source, with progress reported to a callback.
#include <gtest/gtest.h>

#include <optional>

#include "ShapeTestSupport.h"
#include "gislib/MemoryRecordSource.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::test {
namespace {

// The stand-in source, able to misstate its RecordCount.
class CountingSource final : public tnwRecordSource {
public:
    CountingSource(std::shared_ptr<tnwColumns> oColumns, std::int32_t eGeometryType)
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

struct ImportFixture : ::testing::Test {
    ScopedCapture capture;
    TempDir dir;
    tnwShapeEncoder encoder;
    std::shared_ptr<RecordingCallback> oCallback = std::make_shared<RecordingCallback>();

    std::shared_ptr<CountingSource> PointSource(int nRecords) {
        auto oColumns = NewColumns();
        AddColumn(*oColumns, "N", vtInt32, 6);
        auto oSource = std::make_shared<CountingSource>(oColumns, tnwGeometryPoint);
        for (int i = 0; i < nRecords; ++i)
            oSource->m_oRows.AddRow({Variant(std::int32_t{i})}, MakePoint(i, -i));
        return oSource;
    }
    std::string Base() const { return dir.Path("i"); }
    std::int32_t Records() const { return LittleLong(ReadFile(Base() + ".dbf"), 4); }
};

const std::vector<std::string> kOpening = {"SetBarCount(1,-)", "SetBarText(0,)",
                                           "SetBarRange(0,0.000000,100.000000)"};

TEST_F(ImportFixture, ProgressEveryThousandRecords) {
    struct Case {
        int nRecords;
        std::vector<std::string> vValues;
    };
    for (const Case& tCase :
         {Case{999, {}}, Case{2500, {"SetBarValue(0,40.000000)", "SetBarValue(0,80.000000)"}}}) {
        SCOPED_TRACE(tCase.nRecords);
        oCallback->vCalls.clear();
        encoder.SetCallback(oCallback);
        auto oSource = PointSource(tCase.nRecords);
        ASSERT_TRUE(encoder.ImportRS(Base() + ".shp", oSource));
        encoder.CloseFiles();
        std::vector<std::string> vExpected = kOpening;
        vExpected.insert(vExpected.end(), tCase.vValues.begin(), tCase.vValues.end());
        EXPECT_EQ(oCallback->vCalls, vExpected);
        EXPECT_EQ(Records(), tCase.nRecords);
        EXPECT_EQ(CheckShapeSet(Base()).iStatus, 0);
    }
    EXPECT_TRUE(capture.vReports.empty());
}

// A stated count of 0 with records present fails at record 1000, before it is written; the
// records so far stay in the open files.
TEST_F(ImportFixture, ZeroRecordCountFailsAtTheThousandth) {
    encoder.SetCallback(oCallback);
    auto oSource = PointSource(1200);
    oSource->lStatedCount = 0;
    EXPECT_FALSE(encoder.ImportRS(Base(), oSource));
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.ImportRS");
    EXPECT_EQ(capture.vReports[0].lNumber, 11);
    encoder.CloseFiles();
    EXPECT_EQ(Records(), 999);
}

}  // namespace
}  // namespace tnw::test
