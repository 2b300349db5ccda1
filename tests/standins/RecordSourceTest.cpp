// Walking the in-memory record source.
#include <gtest/gtest.h>

#include "gislib/Columns.h"
#include "gislib/MemoryRecordSource.h"
#include "ogc_sf/WKT.h"

namespace tnw::standins {
namespace {

TEST(MemoryRecordSource, MovesLoadColumnValuesByPosition) {
    auto oColumns = std::make_shared<Columns>();
    auto oId = oColumns->Add("Id", "", "", 3, 10, 0, 3, 1, 0, "", true, true);
    auto oName = oColumns->Add("Name", "", "", 8, 20, 0, 8, 1, 0, "", true, true);
    auto oBeyond = oColumns->Add("Beyond", "", "", 8, 20, 0, 8, 1, 0, "", true, true);
    oBeyond->SetPosition(5);

    MemoryRecordSource oSource(oColumns, 3);
    auto oFirst = ParseWKT("POLYGON ((0 0,1 0,1 1,0 0))");
    oSource.AddRow({std::int32_t{1}, "one", 1.0, 2.0, "fifth"}, oFirst);
    oSource.AddRow({std::int32_t{2}}, nullptr);  // a short row
    EXPECT_EQ(oSource.RecordCount(), 2);
    EXPECT_EQ(oSource.GeometryType(), 3);
    EXPECT_EQ(oSource.Columns(), oColumns);

    oSource.MoveFirst();
    ASSERT_FALSE(oSource.Eof());
    EXPECT_EQ(oId->Value(), Variant(std::int32_t{1}));
    EXPECT_EQ(oName->Text(), "one");
    EXPECT_EQ(oBeyond->Text(), "fifth");
    EXPECT_EQ(oSource.Geometry(), oFirst);

    oSource.MoveNext();
    ASSERT_FALSE(oSource.Eof());
    EXPECT_EQ(oId->Value(), Variant(std::int32_t{2}));
    EXPECT_TRUE(oName->Value().IsEmpty());
    EXPECT_TRUE(oBeyond->Value().IsEmpty());
    EXPECT_EQ(oSource.Geometry(), nullptr);

    oSource.MoveNext();
    EXPECT_TRUE(oSource.Eof());
    EXPECT_EQ(oSource.Geometry(), nullptr);
    EXPECT_EQ(oId->Value(), Variant(std::int32_t{2}));  // the last row's values stay
    oSource.MoveNext();                                 // harmless at the end
    EXPECT_TRUE(oSource.Eof());

    // Positions are read at each move.
    oName->SetPosition(1);
    oSource.MoveFirst();
    EXPECT_EQ(oName->Text(), "1");
}

TEST(MemoryRecordSource, EmptySourceIsAtItsEndAtOnce) {
    MemoryRecordSource oSource(std::make_shared<Columns>(), 1);
    oSource.MoveFirst();
    EXPECT_TRUE(oSource.Eof());
    EXPECT_EQ(oSource.RecordCount(), 0);
    EXPECT_EQ(oSource.Geometry(), nullptr);
}

}  // namespace
}  // namespace tnw::standins
