// The summary export against a recording summary: the order of bar calls and reads, the
// written set as the checker and GDAL see it, and the failures that stop the export.
#include <gtest/gtest.h>

#include <filesystem>

#include "ShapeTestSupport.h"
#include "shapefile/tnwShapeEncoder.h"
#include "veld/Unit.h"

namespace tnw::test {
namespace {

using Calls = std::vector<std::string>;

struct RecUnit final : tnwUnit {
    Calls* pCalls;
    std::string sName;
    RecUnit(Calls* p, std::string s) : pCalls(p), sName(std::move(s)) {}
    void SetUnitOption(std::int32_t l) override {
        pCalls->push_back("UnitOption(" + sName + "," + std::to_string(l) + ")");
    }
};

struct RecDef final : VELDSeriesDef, VELDRatioSeriesDef {
    std::string sKey, sName;
    std::shared_ptr<tnwUnit> oUnit;
    const std::string& Key() const override { return sKey; }
    const std::string& Name() const override { return sName; }
    std::shared_ptr<tnwUnit> Unit() const override { return oUnit; }
};

template <class T>
struct RecList final : VELDList<T> {
    std::vector<std::shared_ptr<T>> vItems;  // keys may repeat
    const std::vector<std::shared_ptr<T>>& Items() const override { return vItems; }
    std::shared_ptr<T> Item(std::string_view sKey) const override {
        for (const auto& o : vItems)
            if (o->Key() == sKey) return o;
        return nullptr;
    }
};

struct RecRegion : VELDRegion {
    std::shared_ptr<RecList<VELDSeries>> oSeries = std::make_shared<RecList<VELDSeries>>();
    std::shared_ptr<RecList<VELDRatioSeries>> oRatios =
        std::make_shared<RecList<VELDRatioSeries>>();
    std::int32_t lRecordCount = 7;
    std::shared_ptr<VELDRatioSeriesList> RatioSeries() const override { return oRatios; }
    std::shared_ptr<VELDSeriesList> Series() const override { return oSeries; }
    std::int32_t RecordCount() const override { return lRecordCount; }
};

// Record i: position (i, 2i), elevation 100 + i, width 30, distance i, duration 1,
// UTC 1e9 + i, engaged on even records, mappable i. Each read is noted with the switch state.
struct RecTrack final : RecRegion, VELDTrackRegion {
    Calls* pCalls;
    bool bSwitch = true;
    std::vector<double> aXY, aElevation, aWidth, aDistance, aDuration, aUTC;
    std::vector<bool> aEngaged;
    std::vector<std::int32_t> aMappable;
    RecTrack(Calls* p, int n) : pCalls(p) {
        lRecordCount = n;
        for (int i = 0; i < n; ++i) {
            aXY.insert(aXY.end(), {1.0 * i, 2.0 * i});
            aElevation.push_back(100 + i);
            aWidth.push_back(30);
            aDistance.push_back(i);
            aDuration.push_back(1);
            aUTC.push_back(1e9 + i);
            aEngaged.push_back(i % 2 == 0);
            aMappable.push_back(i);
        }
    }
    template <class T>
    T Read(const std::string& sWhat, const T& aValues,
           const std::shared_ptr<tnwUnit>& oUnit = nullptr) {
        const std::string sUnit = oUnit ? "," + std::to_string(standins::UnitId(oUnit)) : "";
        pCalls->push_back(sWhat + "(" + (bSwitch ? "on" : "off") + sUnit + ")");
        return aValues;
    }
    std::vector<std::int32_t> Mappable() override { return Read("Mappable", aMappable); }
    std::vector<bool> Engaged() override { return Read("Engaged", aEngaged); }
    std::vector<double> UTCTimes() override { return Read("UTCTimes", aUTC); }
    std::vector<double> Durations(const std::shared_ptr<tnwUnit>& o) override {
        return Read("Durations", aDuration, o);
    }
    std::vector<double> Positions(double, double, std::int32_t, std::int32_t) override {
        return Read("Positions", aXY);
    }
    std::vector<double> Elevations(const std::shared_ptr<tnwUnit>& o, bool) override {
        return Read("Elevations", aElevation, o);
    }
    std::vector<double> Distances(const std::shared_ptr<tnwUnit>& o, bool) override {
        return Read("Distances", aDistance, o);
    }
    std::vector<double> Widths(const std::shared_ptr<tnwUnit>& o, bool) override {
        return Read("Widths", aWidth, o);
    }
    bool ExportSwitch() const override { return bSwitch; }
    void SetExportSwitch(bool b) override { bSwitch = b; }
};

struct RecSeries final : VELDSeries {
    std::string sKey;
    std::shared_ptr<RecDef> oDef;
    std::vector<double> aValues;
    Calls* pCalls;
    RecSeries(std::string s, std::shared_ptr<RecDef> o, std::vector<double> a, Calls* p)
        : sKey(std::move(s)), oDef(std::move(o)), aValues(std::move(a)), pCalls(p) {}
    const std::string& Key() const override { return sKey; }
    std::shared_ptr<VELDSeriesDef> Definition() const override { return oDef; }
    std::vector<double> Values(const std::shared_ptr<tnwUnit>&, bool) override {
        pCalls->push_back("Values(" + sKey + ")");
        return aValues;
    }
};

struct RecRatio final : VELDRatioSeries, VELDRatioValues {
    std::string sKey;
    std::shared_ptr<RecDef> oDef;
    std::vector<double> aValues;
    Calls* pCalls;
    RecRatio(std::string s, std::shared_ptr<RecDef> o, std::vector<double> a, Calls* p)
        : sKey(std::move(s)), oDef(std::move(o)), aValues(std::move(a)), pCalls(p) {}
    const std::string& Key() const override { return sKey; }
    std::shared_ptr<VELDRatioSeriesDef> Definition() const override { return oDef; }
    std::shared_ptr<tnwUnit> SecondUnit() const override { return nullptr; }
    std::vector<double> Values(const std::shared_ptr<tnwUnit>&, const std::shared_ptr<tnwUnit>&,
                               bool) override {
        pCalls->push_back("RatioValues(" + sKey + ")");
        return aValues;
    }
};

struct RecRegions final : VELDRegionList {
    std::vector<std::shared_ptr<VELDRegion>> vItems;
    std::int32_t Count() const override { return static_cast<std::int32_t>(vItems.size()); }
    const std::vector<std::shared_ptr<VELDRegion>>& Items() const override { return vItems; }
};

struct RecSummary final : VELDSummary {
    std::shared_ptr<RecRegions> oRegions = std::make_shared<RecRegions>();
    std::vector<std::shared_ptr<VELDRatioSeriesDef>> vRatioDefs;
    std::vector<std::shared_ptr<VELDSeriesDef>> vDefs;
    std::shared_ptr<VELDRegionList> Regions() const override { return oRegions; }
    std::vector<std::shared_ptr<VELDRatioSeriesDef>> RatioSeriesDefs() const override {
        return vRatioDefs;
    }
    std::vector<std::shared_ptr<VELDSeriesDef>> SeriesDefs() const override { return vDefs; }
};

struct SummaryExportFixture : ::testing::Test {
    ScopedCapture capture;
    TempDir dir;
    tnwShapeEncoder encoder;
    std::shared_ptr<RecordingCallback> oCallback = std::make_shared<RecordingCallback>();
    Calls* pCalls = &oCallback->vCalls;
    std::shared_ptr<RecSummary> oSummary = std::make_shared<RecSummary>();
    // Yield (one unit), Rate (two units), and Unused, which no region carries.
    std::shared_ptr<RecDef> oYield = Def("Y", "Yield"), oRate = Def("R", "Rate");

    std::shared_ptr<RecDef> Def(const std::string& sKey, const std::string& sName) {
        auto oDef = std::make_shared<RecDef>();
        oDef->sKey = sKey;
        oDef->sName = sName;
        oDef->oUnit = std::make_shared<RecUnit>(pCalls, sName);
        return oDef;
    }
    void SetUp() override {
        oSummary->vDefs = {Def("U", "Unused"), oYield};
        oSummary->vRatioDefs = {oRate};
    }
    std::shared_ptr<RecTrack> AddTrack(int nRecords) {
        auto oTrack = std::make_shared<RecTrack>(pCalls, nRecords);
        oSummary->oRegions->vItems.push_back(oTrack);
        return oTrack;
    }
    void AddSeries(RecRegion& oRegion, const std::string& sKey, std::vector<double> aValues,
                   std::shared_ptr<RecDef> oDef = nullptr) {
        oRegion.oSeries->vItems.push_back(
            std::make_shared<RecSeries>(sKey, oDef ? oDef : oYield, std::move(aValues), pCalls));
    }
    void AddRatio(RecRegion& oRegion, std::vector<double> aValues) {
        oRegion.oRatios->vItems.push_back(
            std::make_shared<RecRatio>("R", oRate, std::move(aValues), pCalls));
    }
    bool Export() { return encoder.ExportVELDSummary(oCallback, oSummary, dir.Path("s.shp")); }
};

const Calls kTrackReads = {"Positions(off)",     "Elevations(off,513)", "Widths(off,257)",
                           "Distances(off,257)", "Durations(off,277)",  "UTCTimes(off)",
                           "Engaged(off)",       "Mappable(off)"};

TEST_F(SummaryExportFixture, RegionsInOrderWithBarsReadsAndEveryColumnReadBack) {
    auto oFirst = AddTrack(2);
    AddSeries(*oFirst, "Y", {150.5, 160.25});
    AddRatio(*oFirst, {12.5, 13});
    oSummary->oRegions->vItems.push_back(std::make_shared<RecRegion>());  // no track face
    AddTrack(0);
    AddTrack(1);  // carries neither quantity
    encoder.SetXOffset(100.0);
    encoder.SetYOffset(-1.0);
    ASSERT_TRUE(Export());

    Calls vExpected = {"SetBarText(0,Regions)", "SetBarRange(0,0.000000,4.000000)",
                       "SetBarText(1,1 / 4)", "SetBarRange(1,0.000000,2.000000)"};
    const auto Reads = [&](const Calls& vSeriesReads) {
        vExpected.insert(vExpected.end(), kTrackReads.begin(), kTrackReads.end());
        vExpected.insert(vExpected.end(), vSeriesReads.begin(), vSeriesReads.end());
    };
    Reads({"UnitOption(Rate,4)", "RatioValues(R)", "Values(Y)"});
    vExpected.insert(
        vExpected.end(),
        {"SetBarValue(1,0.000000)", "ClearBarText(1,-)", "ResetBar(1,-)", "SetBarText(1,2 / 4)",
         "SetBarRange(1,0.000000,7.000000)", "ClearBarText(1,-)", "ResetBar(1,-)",
         "SetBarText(1,3 / 4)", "SetBarRange(1,0.000000,0.000000)"});
    Reads({});
    vExpected.insert(vExpected.end(), {"ClearBarText(1,-)", "ResetBar(1,-)", "SetBarText(1,4 / 4)",
                                       "SetBarRange(1,0.000000,1.000000)"});
    Reads({});
    vExpected.insert(vExpected.end(), {"SetBarValue(1,0.000000)", "ClearBarText(1,-)",
                                       "ResetBar(1,-)", "ClearBarText(0,-)", "ResetBar(0,-)"});
    EXPECT_EQ(*pCalls, vExpected);
    EXPECT_TRUE(oFirst->bSwitch);

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

TEST_F(SummaryExportFixture, EmptySummaryIsAWholeSetWithTheFixedColumns) {
    ASSERT_TRUE(Export());
    EXPECT_EQ(*pCalls, (Calls{"SetBarText(0,Regions)", "SetBarRange(0,0.000000,0.000000)",
                              "ClearBarText(0,-)", "ResetBar(0,-)"}));
    EXPECT_EQ(CheckShapeSet(dir.Path("s")).iStatus, 0);
    EXPECT_EQ(encoder.Columns()->Count(), 7);
}

TEST_F(SummaryExportFixture, BarOneMovesEveryHundredRecords) {
    AddTrack(250);
    ASSERT_TRUE(encoder.ExportVELDSummary(oCallback, oSummary, dir.Path("s")));
    Calls vValues;
    for (const auto& s : *pCalls)
        if (s.rfind("SetBarValue", 0) == 0) vValues.push_back(s);
    EXPECT_EQ(vValues, (Calls{"SetBarValue(1,0.000000)", "SetBarValue(1,100.000000)",
                              "SetBarValue(1,200.000000)"}));
    EXPECT_EQ(std::filesystem::file_size(dir.Path("s.shx")), 100u + 8u * 250u);
}

// Each failure ends the export where it happens: no bar is cleared, the files stay open.
TEST_F(SummaryExportFixture, FailuresStopTheExport) {
    struct Case {
        const char* sName;
        void (*fnBreak)(SummaryExportFixture&, RecTrack&);
        std::int32_t lError;
        bool bSwitchAfter;  // the reads failed: the region's switch stays off
    };
    const Case aCases[] = {
        {"duplicate series key",
         [](SummaryExportFixture& f, RecTrack& t) {
             f.AddSeries(t, "Y", {1});
             f.AddSeries(t, "Y", {2});
         },
         errKeyExists, false},
        {"positions too short", [](SummaryExportFixture&, RecTrack& t) { t.aXY.pop_back(); },
         errSubscript, true},
        {"series too short", [](SummaryExportFixture& f, RecTrack& t) { f.AddSeries(t, "Y", {}); },
         errSubscript, true},
        {"quantity without a column",
         [](SummaryExportFixture& f, RecTrack& t) { f.AddSeries(t, "X", {1}, f.Def("X", "X")); },
         errObjectNotSet, true},
    };
    for (const Case& tCase : aCases) {
        SCOPED_TRACE(tCase.sName);
        SummaryExportFixture& f = *this;
        f.pCalls->clear();
        f.capture.vReports.clear();
        f.oSummary->oRegions->vItems.clear();
        auto oTrack = f.AddTrack(1);
        f.AddTrack(1);
        tCase.fnBreak(f, *oTrack);
        EXPECT_FALSE(f.Export());
        ASSERT_EQ(f.capture.vReports.size(), 1u);
        EXPECT_EQ(f.capture.vReports[0].sSource, "tnwShapeEncoder.ExportVELDSummary");
        EXPECT_EQ(f.capture.vReports[0].lNumber, tCase.lError);
        EXPECT_EQ(std::count(f.pCalls->begin(), f.pCalls->end(), "SetBarText(1,2 / 2)"), 0);
        EXPECT_EQ(f.pCalls->back().rfind("Clear", 0), std::string::npos);
        EXPECT_EQ(oTrack->bSwitch, tCase.bSwitchAfter);
        EXPECT_FALSE(std::filesystem::exists(f.dir.Path("s.mcd")));  // written at close
        f.encoder.CloseFiles();
        std::filesystem::remove(f.dir.Path("s.mcd"));
    }
}

TEST_F(SummaryExportFixture, NothingHappensWithoutASummaryOrFiles) {
    EXPECT_FALSE(encoder.ExportVELDSummary(oCallback, nullptr, dir.Path("s")));
    EXPECT_FALSE(encoder.ExportVELDSummary(oCallback, oSummary, dir.Path("missing/s")));
    EXPECT_TRUE(pCalls->empty());
    EXPECT_EQ(capture.vBoxes.size(), 1u);  // the "DBF Error" of the second call
    EXPECT_FALSE(std::filesystem::exists(dir.Path("s.dbf")));
}

}  // namespace
}  // namespace tnw::test
