// The summary export against a recording summary (the summary stand-in with a recording track
// region): the order of bar calls and reads, the written set as the
// checker and GDAL see it, and the failures that stop the export.
#include <gtest/gtest.h>

#include <filesystem>

#include "ShapeTestSupport.h"
#include "shapefile/tnwShapeEncoder.h"
#include "veld/Summary.h"

namespace tnw::test {
namespace {

using Calls = std::vector<std::string>;
using Doubles = std::vector<double>;
using UnitRef = const std::shared_ptr<tnwUnit>&;
using standins::QuantityDef;

// A region's series; unlike the stand-in's, keys may repeat.
template <class T>
struct RecList final : VELDList<T> {
    std::vector<std::shared_ptr<T>> vItems;
    const std::vector<std::shared_ptr<T>>& Items() const override { return vItems; }
    std::shared_ptr<T> Item(std::string_view sKey) const override {
        for (const auto& o : vItems)
            if (o->Key() == sKey) return o;
        return nullptr;
    }
};

// Record i: position (i, 2i), elevation 100 + i, width 30, distance i, duration 1, UTC 1e9 + i,
// engaged but on record 1, mappable i. Each read is noted with the switch state and the unit.
struct RecTrack final : VELDRegion, VELDTrackRegion {
    std::shared_ptr<RecList<VELDSeries>> oSeries = std::make_shared<RecList<VELDSeries>>();
    std::shared_ptr<RecList<VELDRatioSeries>> oRatios =
        std::make_shared<RecList<VELDRatioSeries>>();
    Calls* pCalls;
    std::int32_t lRecords, lPositions;
    bool bSwitch = true;
    RecTrack(Calls* p, std::int32_t n) : pCalls(p), lRecords(n), lPositions(n) {}
    std::shared_ptr<VELDRatioSeriesList> RatioSeries() const override { return oRatios; }
    std::shared_ptr<VELDSeriesList> Series() const override { return oSeries; }
    std::int32_t RecordCount() const override { return lRecords; }
    template <class T = double>
    std::vector<T> Read(const std::string& sWhat, double dFirst, double dStep,
                        const std::shared_ptr<tnwUnit>& oUnit = nullptr, std::int32_t n = -1) {
        const std::string sUnit = oUnit ? "," + std::to_string(standins::UnitId(oUnit)) : "";
        pCalls->push_back(sWhat + "(" + (bSwitch ? "on" : "off") + sUnit + ")");
        std::vector<T> a;
        for (std::int32_t i = 0; i < (n < 0 ? lRecords : n); ++i)
            a.push_back(static_cast<T>(dFirst + dStep * i));
        return a;
    }
    std::vector<std::int32_t> Mappable() override { return Read<std::int32_t>("Mappable", 0, 1); }
    std::vector<bool> Engaged() override { return Read<bool>("Engaged", 1, -1); }
    Doubles UTCTimes() override { return Read("UTCTimes", 1e9, 1); }
    Doubles Durations(UnitRef o) override { return Read("Durations", 1, 0, o); }
    Doubles Positions(double, double, std::int32_t, std::int32_t) override {
        Doubles a;
        for (double d : Read("Positions", 0, 1, nullptr, lPositions))
            a.insert(a.end(), {d, 2 * d});
        return a;
    }
    Doubles Elevations(UnitRef o, bool) override { return Read("Elevations", 100, 1, o); }
    Doubles Distances(UnitRef o, bool) override { return Read("Distances", 0, 1, o); }
    Doubles Widths(UnitRef o, bool) override { return Read("Widths", 30, 0, o); }
    bool ExportSwitch() const override { return bSwitch; }
    void SetExportSwitch(bool b) override { bSwitch = b; }
};

struct SummaryExportFixture : ::testing::Test {
    ScopedCapture capture;
    TempDir dir;
    tnwShapeEncoder encoder;
    std::shared_ptr<RecordingCallback> oCallback = std::make_shared<RecordingCallback>();
    Calls* pCalls = &oCallback->vCalls;
    // Yield (one unit), Rate (two units), and Unused, which no region carries.
    std::shared_ptr<QuantityDef> oYield = std::make_shared<QuantityDef>("Y", "Yield", 16);
    std::shared_ptr<QuantityDef> oRate = std::make_shared<QuantityDef>("R", "Rate", 16);
    std::shared_ptr<standins::Summary> oSummary;

    void SetUp() override { NewSummary(); }
    void NewSummary() {
        oSummary = std::make_shared<standins::Summary>();
        oSummary->AddSeriesDef(std::make_shared<QuantityDef>("U", "Unused", 16));
        oSummary->AddSeriesDef(oYield);
        oSummary->AddRatioSeriesDef(oRate);
    }
    std::shared_ptr<RecTrack> AddTrack(int nRecords) {
        auto oTrack = std::make_shared<RecTrack>(pCalls, nRecords);
        oSummary->AddRegion(oTrack);
        return oTrack;
    }
    static void AddSeries(RecTrack& oTrack, std::string sKey, Doubles a,
                          std::shared_ptr<QuantityDef> oDef) {
        auto oSeries = std::make_shared<standins::Series>(std::move(sKey), std::move(oDef));
        for (double d : a)
            oSeries->Add(d);
        oTrack.oSeries->vItems.push_back(oSeries);
    }
    bool Export() { return encoder.ExportVELDSummary(oCallback, oSummary, dir.Path("s.shp")); }
};

const Calls kTrackReads = {"Positions(off)",     "Elevations(off,513)", "Widths(off,257)",
                           "Distances(off,257)", "Durations(off,277)",  "UTCTimes(off)",
                           "Engaged(off)",       "Mappable(off)"};

Calls Join(std::initializer_list<Calls> vParts) {
    Calls v;
    for (const Calls& vPart : vParts)
        v.insert(v.end(), vPart.begin(), vPart.end());
    return v;
}

TEST_F(SummaryExportFixture, RegionsInOrderWithBarsReadsAndEveryColumnReadBack) {
    auto oFirst = AddTrack(2);
    AddSeries(*oFirst, "Y", {150.5, 160.25}, oYield);
    auto oRatio = std::make_shared<standins::RatioSeries>("R", oRate, 16);
    oRatio->Add(12.5);
    oRatio->Add(13);
    oFirst->oRatios->vItems.push_back(oRatio);
    oSummary->AddRegion(std::make_shared<standins::Region>());  // no track face
    AddTrack(0);
    AddTrack(1);  // carries neither quantity
    encoder.SetXOffset(100.0);
    encoder.SetYOffset(-1.0);
    ASSERT_TRUE(Export());

    const Calls vEnd = {"ClearBarText(1,-)", "ResetBar(1,-)"};
    EXPECT_EQ(*pCalls, Join({{"SetBarText(0,Regions)", "SetBarRange(0,0.000000,4.000000)",
                              "SetBarText(1,1 / 4)", "SetBarRange(1,0.000000,2.000000)"},
                             kTrackReads,
                             {"SetBarValue(1,0.000000)"},
                             vEnd,
                             {"SetBarText(1,2 / 4)", "SetBarRange(1,0.000000,0.000000)"},
                             vEnd,
                             {"SetBarText(1,3 / 4)", "SetBarRange(1,0.000000,0.000000)"},
                             kTrackReads,
                             vEnd,
                             {"SetBarText(1,4 / 4)", "SetBarRange(1,0.000000,1.000000)"},
                             kTrackReads,
                             {"SetBarValue(1,0.000000)"},
                             vEnd,
                             {"ClearBarText(0,-)", "ResetBar(0,-)"}}));
    EXPECT_TRUE(oFirst->bSwitch);
    EXPECT_EQ(dynamic_cast<standins::Unit&>(*oRate->Unit()).UnitOption(), 4);

    const CommandResult tCheck = CheckShapeSet(dir.Path("s"));
    EXPECT_EQ(tCheck.iStatus, 0) << tCheck.sOutput;
    EXPECT_EQ(GdalDump(dir.Path("s.shp")).sOutput,
              "Elevation:Real:6:1|Width:Integer:4:0|Distance:Integer:4:0|Duration:Integer:3:0|"
              "UTC:Integer64:10:0|Engaged:String:6:0|Mappable:Integer:4:0|Yield:Real:12:4|"
              "Rate:Real:10:4\n"
              "POINT (100 -1)|100.0|30|0|1|1000000000|'Y'|0|150.5|12.5\n"
              "POINT (101 1)|101.0|30|1|1|1000000001|'N'|1|160.25|13.0\n"
              "POINT (100 -1)|100.0|30|0|1|1000000000|'Y'|0|0.0|0.0\n");
    EXPECT_TRUE(capture.vReports.empty());
}

// Each failure ends the export where it happens: no bar is cleared, the files stay open.
TEST_F(SummaryExportFixture, FailuresStopTheExport) {
    struct Case {
        void (*fnBreak)(SummaryExportFixture&, RecTrack&);
        std::int32_t lError;
        bool bSwitchAfter;  // the reads failed: the region's switch stays off
    } const aCases[] = {
        {[](SummaryExportFixture& f, RecTrack& t) {  // two series of one key
             f.AddSeries(t, "Y", {1}, f.oYield);
             f.AddSeries(t, "y", {2}, f.oYield);
         },
         errKeyExists, false},
        {[](SummaryExportFixture&, RecTrack& t) { t.lPositions = 0; }, errSubscript, true},
        {[](SummaryExportFixture& f, RecTrack& t) { f.AddSeries(t, "Y", {}, f.oYield); },
         errSubscript, true},
        {[](SummaryExportFixture& f, RecTrack& t) {  // a quantity with no column
             f.AddSeries(t, "X", {1}, std::make_shared<QuantityDef>("X", "X", 16));
         },
         errObjectNotSet, true},
    };
    for (const Case& tCase : aCases) {
        SCOPED_TRACE(tCase.lError);
        pCalls->clear();
        capture.vReports.clear();
        NewSummary();
        auto oTrack = AddTrack(1);
        AddTrack(1);
        tCase.fnBreak(*this, *oTrack);
        EXPECT_FALSE(Export());
        ASSERT_EQ(capture.vReports.size(), 1u);
        EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.ExportVELDSummary");
        EXPECT_EQ(capture.vReports[0].lNumber, tCase.lError);
        EXPECT_EQ(pCalls->back().rfind("Clear", 0), std::string::npos);
        EXPECT_EQ(oTrack->bSwitch, tCase.bSwitchAfter);
        EXPECT_FALSE(std::filesystem::exists(dir.Path("s.mcd")));  // written at close
        encoder.CloseFiles();
        std::filesystem::remove(dir.Path("s.mcd"));
    }
}

}  // namespace
}  // namespace tnw::test
