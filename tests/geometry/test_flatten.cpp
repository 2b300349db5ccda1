// Flattening polygons and lines into one record's accumulators, and the gathering rules of the
// two record writers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "FakeGeometry.h"
#include "core/Services.h"
#include "geometry/Flatten.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

using detail::FlattenSettings;
using detail::PartAccumulators;

int g_nArcCalls = 0;
std::vector<XY> g_vPivots;

double CountingArcAngle(double dX1, double dY1, double dX2, double dY2) {
    ++g_nArcCalls;
    g_vPivots.push_back({dX1, dY1});
    return std::atan2(dY2 - dY1, dX2 - dX1);
}

std::vector<XY> Output(const PartAccumulators& tAcc) {
    std::vector<XY> vOut;
    for (std::int32_t i = 0; i < tAcc.oPoints->Count(); ++i) {
        const auto oPoint = tAcc.oPoints->Item(i);
        vOut.push_back({oPoint->X(), oPoint->Y()});
    }
    return vOut;
}

void ExpectBox(const ShapeBox& tBox, double dXmin, double dYmin, double dXmax, double dYmax) {
    EXPECT_EQ(tBox.Xmin, dXmin);
    EXPECT_EQ(tBox.Ymin, dYmin);
    EXPECT_EQ(tBox.Xmax, dXmax);
    EXPECT_EQ(tBox.Ymax, dYmax);
}

// Rings named by their winding.
const std::vector<XY> kSquareCW = {{0, 0}, {0, 4}, {4, 4}, {4, 0}, {0, 0}};
const std::vector<XY> kSquareCCW = {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}};
const std::vector<XY> kHoleCW = {{1, 1}, {1, 2}, {2, 2}, {2, 1}, {1, 1}};
const std::vector<XY> kHoleCCW = {{1, 1}, {2, 1}, {2, 2}, {1, 2}, {1, 1}};
const std::vector<XY> kFarCCW = {{10, 10}, {12, 10}, {12, 12}, {10, 12}, {10, 10}};
const std::vector<XY> kFarCW = {{10, 10}, {10, 12}, {12, 12}, {12, 10}, {10, 10}};

std::vector<XY> Concat(std::initializer_list<std::vector<XY>> vParts) {
    std::vector<XY> vOut;
    for (const auto& v : vParts)
        vOut.insert(vOut.end(), v.begin(), v.end());
    return vOut;
}

std::shared_ptr<FakeFactory> FailingFactory(int nFailAt) {
    auto oFactory = std::make_shared<FakeFactory>();
    oFactory->nFailAt = nFailAt;
    return oFactory;
}

class Flatten : public ::testing::Test {
protected:
    void SetUp() override {
        g_nArcCalls = 0;
        g_vPivots.clear();
        RegisterArcAngle(&CountingArcAngle);
        tSettings.oFactory = oFactory;
    }
    std::vector<std::string> ReportSources() const {
        std::vector<std::string> v;
        for (const auto& tReport : capture.vReports)
            v.push_back(tReport.sSource);
        return v;
    }

    ScopedCapture capture;
    std::shared_ptr<FakeFactory> oFactory = std::make_shared<FakeFactory>();
    FlattenSettings tSettings;
    PartAccumulators tAcc;
};

TEST_F(Flatten, AccumulatorsStartEmpty) {
    EXPECT_EQ(tAcc.oPoints->Count(), 0);
    EXPECT_TRUE(tAcc.vParts.empty());
    EXPECT_EQ(tAcc.lPartIndex, 0);
    ExpectBox(tAcc.tBox, 999999999.0, 999999999.0, -999999999.0, -999999999.0);
}

TEST_F(Flatten, FastPathTurnsRingsAndAddsTheVerticesOwnPoints) {
    const auto oPolygon = Poly({kSquareCCW, kHoleCCW});
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oPolygon), 2);

    EXPECT_EQ(Output(tAcc), Concat({kSquareCW, kHoleCCW}));
    EXPECT_EQ(tAcc.vParts, (std::vector<std::int32_t>{0, 5}));
    EXPECT_EQ(tAcc.lPartIndex, 2);
    ExpectBox(tAcc.tBox, 0, 0, 4, 4);
    EXPECT_EQ(g_nArcCalls, 4);
    // The reversed exterior starts with the ring's last vertex object itself; no factory use.
    EXPECT_EQ(tAcc.oPoints->Item(0).get(), oPolygon->ExteriorRing()->Point(4).get());
    EXPECT_EQ(oFactory->nCalls, 0);
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(Flatten, GeneralPathReadsEachVertexOnceMoreThanTheFastPath) {
    const auto oFast = FakePoly(FakeRing(kSquareCW));
    const auto oGeneral = FakePoly(FakeRing(kSquareCW));
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oFast), 1);
    tSettings.dXOffset = std::numeric_limits<double>::denorm_min();
    PartAccumulators tOther;
    EXPECT_EQ(detail::GatherPolygons(tSettings, tOther, oGeneral), 1);
    EXPECT_EQ(oGeneral->oExteriorRing->nReads - oFast->oExteriorRing->nReads, 5);
    EXPECT_EQ(oFactory->nCalls, 5);
}

TEST_F(Flatten, ExactZeroOffsetsKeepTheFastPath) {
    tSettings.dXOffset = 0.0;
    tSettings.dYOffset = -0.0;
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, Poly({kSquareCW})), 1);
    EXPECT_EQ(oFactory->nCalls, 0);
}

TEST_F(Flatten, MultiPolygonOfMixedWindingNumbersRingsAcrossPolygons) {
    const auto oMulti = Multi({Poly({kSquareCW, kHoleCW}), Poly({kFarCCW})});
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oMulti), 3);
    EXPECT_EQ(Output(tAcc), Concat({kSquareCW, kHoleCCW, kFarCW}));
    EXPECT_EQ(tAcc.vParts, (std::vector<std::int32_t>{0, 5, 10}));
    ExpectBox(tAcc.tBox, 0, 0, 12, 12);
}

TEST_F(Flatten, MultiPolygonMemberThatIsNoPolygonFailsTheGathering) {
    const auto oPoint = std::make_shared<FakePoint>(1, 1);
    for (const std::shared_ptr<IGeometry>& oMember :
         {std::shared_ptr<IGeometry>(oPoint), std::shared_ptr<IGeometry>()}) {
        PartAccumulators tRecord;
        const auto oMulti = std::make_shared<FakeMultiPolygon>(
            std::vector<std::shared_ptr<IGeometry>>{FakePoly(FakeRing(kSquareCW)), oMember});
        try {
            detail::GatherPolygons(tSettings, tRecord, oMulti);
            ADD_FAILURE() << "no error";
        } catch (const Error& e) {
            EXPECT_EQ(e.lNumber, oMember ? errTypeMismatch : errObjectNotSet);
        }
    }
}

TEST_F(Flatten, CollectionsGiveOnlyTheirPolygonsOrTheirLines) {
    const auto oMixed =
        Collection({Pt(50, 50), Poly({kFarCW}), Line({{7, 7}, {8, 9}}), Poly({kSquareCCW})});
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oMixed), 2);
    EXPECT_EQ(Output(tAcc), Concat({kFarCW, kSquareCW}));
    EXPECT_EQ(tAcc.vParts, (std::vector<std::int32_t>{0, 5}));

    PartAccumulators tLines;
    EXPECT_EQ(detail::GatherLines(tSettings, tLines, oMixed), 1);
    EXPECT_EQ(Output(tLines), (std::vector<XY>{{7, 7}, {8, 9}}));
}

TEST_F(Flatten, GeometryOfTheWrongKindGathersNothing) {
    const std::shared_ptr<IGeometry> oPolygon = Poly({kSquareCW});
    const std::shared_ptr<IGeometry> oLine = Line({{0, 0}, {1, 1}});
    const std::shared_ptr<IGeometry> oPoint = Pt(1, 1);
    const std::shared_ptr<IGeometry> oNoPolygon = Collection({oLine, oPoint});
    const std::shared_ptr<IGeometry> oNoLine = Collection({oPolygon, oPoint});

    for (const auto& oGeometry : {std::shared_ptr<IGeometry>(), oPoint, oLine, oNoPolygon}) {
        EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oGeometry), 0);
    }
    for (const auto& oGeometry : {std::shared_ptr<IGeometry>(), oPoint, oPolygon, oNoLine}) {
        EXPECT_EQ(detail::GatherLines(tSettings, tAcc, oGeometry), 0);
    }
    EXPECT_EQ(tAcc.oPoints->Count(), 0);
    ExpectBox(tAcc.tBox, 999999999.0, 999999999.0, -999999999.0, -999999999.0);
}

TEST_F(Flatten, OffsetsShiftEveryVertexAndTheBoxWithoutProjecting) {
    tSettings.dXOffset = 10;
    const auto oPolygon = FakePoly(FakeRing(kSquareCCW));
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oPolygon), 1);
    EXPECT_EQ(Output(tAcc), (std::vector<XY>{{10, 0}, {10, 4}, {14, 4}, {14, 0}, {10, 0}}));
    ExpectBox(tAcc.tBox, 10, 0, 14, 4);
    EXPECT_EQ(oPolygon->nProjects, 0);
    EXPECT_EQ(oFactory->nCalls, 5);
}

TEST_F(Flatten, ProjectionActsBeforeTheWindingAndTheOffsetsAfter) {
    // Mirroring Y turns a clockwise ring counter-clockwise.
    const auto oProjection = std::make_shared<FakeProjection>([](XY t) { return XY{t.dX, -t.dY}; });
    tSettings.oProjection = oProjection;
    tSettings.dYOffset = 100;
    const auto oPolygon = FakePoly(FakeRing(kSquareCW), {FakeRing(kHoleCCW)});
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oPolygon), 2);

    EXPECT_EQ(oPolygon->nProjects, 1);
    EXPECT_EQ(Output(tAcc), (std::vector<XY>{{0, 100},
                                             {4, 100},
                                             {4, 96},
                                             {0, 96},
                                             {0, 100},
                                             {1, 99},
                                             {1, 98},
                                             {2, 98},
                                             {2, 99},
                                             {1, 99}}));
    ExpectBox(tAcc.tBox, 0, 96, 4, 100);
    // Pivots in projected coordinates, without the offset.
    EXPECT_EQ(g_vPivots, (std::vector<XY>{{0, -4}, {0, -4}, {1, -2}, {1, -2}}));
    ASSERT_EQ(oFactory->vProjections.size(), 10u);
    for (const auto& oHanded : oFactory->vProjections)
        EXPECT_EQ(oHanded, oProjection);
}

TEST_F(Flatten, EmptyAndDegenerateRingsAreCopiedAsTheyStand) {
    const auto oPolygon = Poly({kSquareCW, {}, {{3, 3}, {3, 3}, {3, 3}}, kHoleCCW});
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oPolygon), 4);
    EXPECT_EQ(Output(tAcc), Concat({kSquareCW, {{3, 3}, {3, 3}, {3, 3}}, kHoleCCW}));
    EXPECT_EQ(tAcc.vParts, (std::vector<std::int32_t>{0, 5, 5, 8}));
    // The two degenerate rings could not be judged.
    EXPECT_EQ(ReportSources(), (std::vector<std::string>{"tnwShapeEncoder.IsClockwise",
                                                         "tnwShapeEncoder.IsClockwise"}));
}

TEST_F(Flatten, PolygonFailureStopsAtTheVertexAndTheRecordIsDropped) {
    struct Case {
        const char* sName;
        double dXOffset;
        int nFactoryFailAt;
        const char* sSource;
        std::int32_t lNumber;
    };
    const Case vCases[] = {
        {"fast path, centroid fails", 0, 0, "tnwShapeEncoder.FastPolygonToPoints", 5},
        {"general path, factory fails", 1, 3, "tnwShapeEncoder.PolygonToPoints", 5},
        {"general path, offset overflows", 1e308, 0, "tnwShapeEncoder.PolygonToPoints", 6},
    };
    for (const Case& tCase : vCases) {
        SCOPED_TRACE(tCase.sName);
        capture.vReports.clear();
        tSettings.oFactory = FailingFactory(tCase.nFactoryFailAt);
        tSettings.dXOffset = tCase.dXOffset;

        const auto oExterior = FakeRing({{0, 0}, {0, 1}, {1e308, 1}, {1e308, 0}, {0, 0}});
        if (tCase.dXOffset == 0) oExterior->vPoints[2]->bFailCentroid = true;
        const auto oHole = FakeRing(kHoleCCW);
        PartAccumulators tRecord;
        tRecord.vParts.resize(2);
        detail::PolygonToPoints(tSettings, tRecord, FakePoly(oExterior, {oHole}));

        EXPECT_EQ(tRecord.oPoints->Count(), 2);
        EXPECT_EQ(tRecord.lPartIndex, 0);
        EXPECT_EQ(oHole->nReads, 0);
        ASSERT_EQ(capture.vReports.size(), 1u);
        EXPECT_EQ(capture.vReports[0].sSource, tCase.sSource);
        EXPECT_EQ(capture.vReports[0].lNumber, tCase.lNumber);

        // The same failure in the second polygon of a record: nothing is written.
        tSettings.oFactory = FailingFactory(tCase.nFactoryFailAt ? 5 + tCase.nFactoryFailAt : 0);
        PartAccumulators tWhole;
        const auto oMulti =
            std::make_shared<FakeMultiPolygon>(std::vector<std::shared_ptr<IGeometry>>{
                FakePoly(FakeRing(kFarCW)), FakePoly(oExterior, {oHole})});
        EXPECT_EQ(detail::GatherPolygons(tSettings, tWhole, oMulti), 0);
    }
}

TEST_F(Flatten, LinesKeepTheirOrderAndOnlyHandOnTheProjection) {
    const auto oProjection = std::make_shared<FakeProjection>([](XY t) { return XY{t.dX, -t.dY}; });
    tSettings.oProjection = oProjection;
    tSettings.dXOffset = 1;
    tSettings.dYOffset = 2;
    const auto oRightToLeft = FakeRing({{5, 0}, {3, 1}, {0, 0}});
    const auto oClosed = FakeRing({{10, 10}, {11, 12}, {10, 10}});
    const auto oLines = std::make_shared<FakeCollection>(std::vector<std::shared_ptr<IGeometry>>{
        oRightToLeft, std::make_shared<FakePoint>(-50, -50), FakeRing({}), oClosed});

    EXPECT_EQ(detail::GatherLines(tSettings, tAcc, oLines), 3);
    EXPECT_EQ(Output(tAcc),
              (std::vector<XY>{{6, 2}, {4, 3}, {1, 2}, {11, 12}, {12, 14}, {11, 12}}));
    EXPECT_EQ(tAcc.vParts, (std::vector<std::int32_t>{0, 3, 3}));
    ExpectBox(tAcc.tBox, 1, 2, 12, 14);
    EXPECT_EQ(oRightToLeft->nProjects + oClosed->nProjects, 0);
    ASSERT_EQ(oFactory->vProjections.size(), 6u);
    for (const auto& oHanded : oFactory->vProjections)
        EXPECT_EQ(oHanded, oProjection);
    EXPECT_EQ(g_nArcCalls, 0);

    PartAccumulators tSingle;
    tSettings.oProjection = nullptr;
    EXPECT_EQ(detail::GatherLines(tSettings, tSingle, oRightToLeft), 1);
    EXPECT_EQ(Output(tSingle), (std::vector<XY>{{6, 2}, {4, 3}, {1, 2}}));
    EXPECT_EQ(oFactory->vProjections.back(), nullptr);
}

TEST_F(Flatten, LineFailureStopsAtTheVertexAndTheRecordIsDropped) {
    for (const bool bOverflow : {false, true}) {
        SCOPED_TRACE(bOverflow ? "offset overflows" : "factory fails");
        capture.vReports.clear();
        tSettings.oFactory = FailingFactory(bOverflow ? 0 : 2);
        tSettings.dYOffset = bOverflow ? -1e308 : 0;
        const auto oLine = FakeRing({{0, 0}, {1, -1e308}, {2, 2}});

        PartAccumulators tRecord;
        tRecord.vParts.resize(1);
        detail::LineToPoints(tSettings, tRecord, oLine);
        EXPECT_EQ(tRecord.oPoints->Count(), 1);
        EXPECT_EQ(tRecord.lPartIndex, 0);
        ASSERT_EQ(capture.vReports.size(), 1u);
        EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.LineToPoints");
        EXPECT_EQ(capture.vReports[0].lNumber, bOverflow ? 6 : 5);

        tSettings.oFactory = FailingFactory(bOverflow ? 0 : 4);
        PartAccumulators tWhole;
        const auto oLines = std::make_shared<FakeCollection>(
            std::vector<std::shared_ptr<IGeometry>>{FakeRing({{0, 0}, {1, 1}}), oLine});
        EXPECT_EQ(detail::GatherLines(tSettings, tWhole, oLines), 0);
    }
}

}  // namespace
}  // namespace tnw::test
