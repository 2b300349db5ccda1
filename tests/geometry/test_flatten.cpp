// Ring orientation and flattening into one record's accumulators: the pivot and its neighbours,
// the failure paths, and where the projection and offsets act.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/Services.h"
#include "geometry/Flatten.h"
#include "gislib/GISFactory.h"
#include "gislib/Projection.h"
#include "ogc_sf/Geometries.h"
#include "support/TestSupport.h"

namespace tnw::standins {
inline void PrintTo(const Coordinate& t, std::ostream* pOut) {
    *pOut << "(" << t.dX << ", " << t.dY << ")";
}
}  // namespace tnw::standins

namespace tnw::test {
namespace {

using detail::PartAccumulators;
using XY = standins::Coordinate;

// A ring that counts the vertex reads made on it and can give nothing for one vertex.
struct FakeRing : ILineString {
    explicit FakeRing(const std::vector<XY>& vCoords, std::size_t nNullAt = SIZE_MAX) {
        for (const XY& t : vCoords)
            vPoints.push_back(vPoints.size() == nNullAt ? nullptr
                                                        : standins::Point::Create(t.dX, t.dY));
    }
    std::int32_t NumPoints() const override { return static_cast<std::int32_t>(vPoints.size()); }
    std::shared_ptr<IPoint> Point(std::int32_t lIndex) const override {
        ++nReads;
        return vPoints.at(static_cast<std::size_t>(lIndex));
    }
    std::int32_t GeometryType() const override { return ogcLineString; }
    std::shared_ptr<IPoint> Centroid() const override { return nullptr; }
    std::string WKT() const override { return {}; }
    std::shared_ptr<IGeometry> Project(const std::shared_ptr<ISpatialReference>&) const override {
        return nullptr;
    }
    std::vector<std::shared_ptr<IPoint>> vPoints;
    mutable int nReads = 0;
};

std::shared_ptr<IPolygon> Poly(std::shared_ptr<ILineString> oExterior,
                               std::vector<std::shared_ptr<ILineString>> vHoles = {}) {
    return std::make_shared<standins::Polygon>(std::move(oExterior), std::move(vHoles));
}

std::vector<XY> Output(const PartAccumulators& tAcc) {
    std::vector<XY> vOut;
    for (std::int32_t i = 0; i < tAcc.oPoints->Count(); ++i)
        vOut.push_back({tAcc.oPoints->Item(i)->X(), tAcc.oPoints->Item(i)->Y()});
    return vOut;
}

struct ArcCall {
    XY tPivot, tNeighbour;
};
std::vector<ArcCall> g_vArcCalls;

double RecordingArcAngle(double dX1, double dY1, double dX2, double dY2) {
    g_vArcCalls.push_back({{dX1, dY1}, {dX2, dY2}});
    return std::atan2(dY2 - dY1, dX2 - dX1);
}

class Flatten : public ::testing::Test {
protected:
    void SetUp() override {
        g_vArcCalls.clear();
        RegisterArcAngle(&RecordingArcAngle);
        tSettings.oFactory = std::make_shared<standins::GISFactory>();
        tAcc.Start();
    }
    ScopedCapture capture;
    detail::FlattenSettings tSettings;
    PartAccumulators tAcc;
};

const std::vector<XY> kSquareCW = {{0, 0}, {0, 4}, {4, 4}, {4, 0}, {0, 0}};
const std::vector<XY> kHoleCCW = {{1, 1}, {2, 1}, {2, 2}, {1, 2}, {1, 1}};

// Judged at the lowest-then-leftmost vertex (always (0, 0) here) with exactly two arc angles:
// to the next distinct neighbour, then to the previous one, wrapping across the ends.
TEST_F(Flatten, WindingAtThePivot) {
    struct Case {
        const char* sName;
        std::vector<XY> vRing;
        bool bClockwise;
        XY tNext, tPrev;
    };
    // clang-format off
    const std::vector<Case> vCases = {
        {"square cw",          {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}}, true, {0, 1}, {1, 0}},
        {"square ccw",         {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}}, false, {1, 0}, {0, 1}},
        {"not closed",         {{0, 0}, {0, 1}, {1, 1}, {1, 0}}, true, {0, 1}, {1, 0}},
        {"closed three times", {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}, {0, 0}, {0, 0}}, true, {0, 1}, {1, 0}},
        {"pivot at index 0",   {{0, 0}, {0.1, 0.2}, {0.2, 2}, {0.5, 3}, {3, 1}, {0, 0}}, true, {0.1, 0.2}, {3, 1}},
        {"pivot at the end",   {{0.1, 0.2}, {0.2, 2}, {0.5, 3}, {3, 1}, {0, 0}}, true, {0.1, 0.2}, {3, 1}},
        {"flat bottom, right", {{2, 0}, {1, 0}, {0, 0}, {0, 1}, {2, 1}, {2, 0}}, true, {0, 1}, {1, 0}},
        {"flat bottom, left",  {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {0, 1}, {0, 0}}, false, {1, 0}, {0, 1}},
        {"repeat, next wraps", {{2, 1}, {1, 2}, {0, 0}, {0, 0}, {2, 1}}, false, {2, 1}, {1, 2}},
        {"repeat, skipped",    {{2, 1}, {0, 0}, {0, 0}, {1, 2}, {2, 1}}, true, {1, 2}, {2, 1}},
        {"A-B-A",              {{0, 0}, {1, 1}, {0, 0}}, false, {1, 1}, {1, 1}},
        {"A-B-A-A",            {{0, 0}, {1, 1}, {0, 0}, {0, 0}}, false, {1, 1}, {1, 1}},
        {"B-A-B",              {{1, 1}, {0, 0}, {1, 1}}, false, {1, 1}, {1, 1}},
        {"two vertices",       {{1, 1}, {0, 0}}, false, {1, 1}, {1, 1}},
    };
    // clang-format on
    for (const Case& tCase : vCases) {
        SCOPED_TRACE(tCase.sName);
        const auto expectArcCalls = [&] {
            ASSERT_EQ(g_vArcCalls.size(), 2u);
            EXPECT_EQ(g_vArcCalls[0].tPivot, XY(0, 0));
            EXPECT_EQ(g_vArcCalls[0].tNeighbour, tCase.tNext);
            EXPECT_EQ(g_vArcCalls[1].tPivot, XY(0, 0));
            EXPECT_EQ(g_vArcCalls[1].tNeighbour, tCase.tPrev);
            g_vArcCalls.clear();
        };
        EXPECT_EQ(detail::IsClockwise(std::make_shared<FakeRing>(tCase.vRing)), tCase.bClockwise);
        expectArcCalls();

        // The fast path reads each vertex once, judges by the same rule, and copies an
        // exterior ring forward exactly when it runs clockwise.
        const auto oRing = std::make_shared<FakeRing>(tCase.vRing);
        tAcc.Start();
        tAcc.vParts.resize(1);
        detail::FastPolygonToPoints(tAcc, Poly(oRing));
        EXPECT_EQ(oRing->nReads, static_cast<int>(tCase.vRing.size()));
        expectArcCalls();
        std::vector<XY> vExpected = tCase.vRing;
        if (!tCase.bClockwise) std::reverse(vExpected.begin(), vExpected.end());
        EXPECT_EQ(Output(tAcc), vExpected);
        std::vector<double> vXY;
        for (const XY& t : vExpected)
            vXY.insert(vXY.end(), {t.dX, t.dY});
        EXPECT_EQ(tAcc.vXY, vXY);
    }
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(Flatten, RingsThatCannotBeJudgedGiveFalse) {
    RegisterArcAngle([](double, double, double, double) { return 1.0; });
    EXPECT_FALSE(detail::IsClockwise(std::make_shared<FakeRing>(kSquareCW)));  // equal angles
    EXPECT_TRUE(capture.vReports.empty());

    const std::vector<std::shared_ptr<ILineString>> vRings = {
        nullptr, std::make_shared<FakeRing>(std::vector<XY>{}),
        std::make_shared<FakeRing>(std::vector<XY>{{3, 4}}),
        std::make_shared<FakeRing>(std::vector<XY>{{5, 5}, {5, 5}, {5, 5}})};
    for (const auto& oRing : vRings)
        EXPECT_FALSE(detail::IsClockwise(oRing));
    RegisterArcAngle(nullptr);
    EXPECT_FALSE(detail::IsClockwise(std::make_shared<FakeRing>(kSquareCW)));
    ASSERT_EQ(capture.vReports.size(), 5u);
    for (const CapturedReport& tReport : capture.vReports)
        EXPECT_EQ(tReport.sSource, "tnwShapeEncoder.IsClockwise");
    EXPECT_EQ(capture.vReports.back().lNumber, 453);
}

// Empty and degenerate rings are copied as they stand (their winding cannot be judged).
TEST_F(Flatten, DegenerateRingsAreCopiedAsTheyStand) {
    const std::vector<XY> vDot = {{3, 3}, {3, 3}, {3, 3}};
    const auto oPolygon = std::make_shared<standins::Polygon>(
        std::vector<std::vector<XY>>{kSquareCW, {}, vDot, kHoleCCW});
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oPolygon), 4);
    std::vector<XY> vExpected = kSquareCW;
    vExpected.insert(vExpected.end(), vDot.begin(), vDot.end());
    vExpected.insert(vExpected.end(), kHoleCCW.begin(), kHoleCCW.end());
    EXPECT_EQ(Output(tAcc), vExpected);
    EXPECT_EQ(tAcc.vParts, (std::vector<std::int32_t>{0, 5, 5, 8}));
    EXPECT_EQ(capture.vReports.size(), 2u);

    // Letting go of a record keeps nothing of its points.
    tAcc.Release();
    EXPECT_EQ(tAcc.oPoints, nullptr);
    EXPECT_TRUE(tAcc.vXY.empty());
}

// The winding is judged on projected coordinates, before the offsets.
TEST_F(Flatten, ProjectionActsBeforeTheWindingAndTheOffsetsAfter) {
    const auto oMercator = standins::SpatialReference::WebMercator();
    const auto oProjection = std::make_shared<standins::Projection>(oMercator);
    tSettings.oProjection = oProjection;
    tSettings.dYOffset = 100;
    const std::vector<XY> vRing = {{10, 10}, {10, 20}, {20, 20}, {20, 10}, {10, 10}};
    EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, Poly(std::make_shared<FakeRing>(vRing))), 1);

    const XY tPivot = oMercator->Forward({10, 10});
    ASSERT_EQ(g_vArcCalls.size(), 2u);
    EXPECT_EQ(g_vArcCalls[0].tPivot, tPivot);
    ASSERT_EQ(Output(tAcc).size(), 5u);
    EXPECT_EQ(Output(tAcc)[0], XY(tPivot.dX, tPivot.dY + 100));
}

// A multi-polygon member that is no polygon fails the gathering, to the writer's handler.
TEST_F(Flatten, MultiPolygonMemberThatIsNoPolygon) {
    struct BadMulti : IMultiPolygon {
        std::shared_ptr<IGeometry> oMember;
        std::int32_t NumGeometries() const override { return 1; }
        std::shared_ptr<IGeometry> Geometry(std::int32_t) const override { return oMember; }
        std::int32_t GeometryType() const override { return ogcMultiPolygon; }
        std::shared_ptr<IPoint> Centroid() const override { return nullptr; }
        std::string WKT() const override { return {}; }
        std::shared_ptr<IGeometry> Project(
            const std::shared_ptr<ISpatialReference>&) const override {
            return nullptr;
        }
    };
    auto oMulti = std::make_shared<BadMulti>();
    EXPECT_EQ(ErrorNumberOf([&] { detail::GatherPolygons(tSettings, tAcc, oMulti); }),
              errObjectNotSet);
    oMulti->oMember = standins::Point::Create(1, 1);
    EXPECT_EQ(ErrorNumberOf([&] { detail::GatherPolygons(tSettings, tAcc, oMulti); }),
              errTypeMismatch);
}

// A conversion stops at the failing vertex with one report, and a record with a failing part
// is not written at all.
TEST_F(Flatten, FailureStopsAtTheVertexAndDropsTheRecord) {
    struct Case {
        const char* sName;
        bool bLine;
        double dOffset;
        const char* sSource;
        std::int32_t lNumber;
        std::size_t nReports;
    };
    const std::vector<Case> vCases = {
        // A missing vertex leaves the winding unjudged (a report of its own) as well.
        {"fast path, no vertex", false, 0, "tnwShapeEncoder.FastPolygonToPoints", 91, 2},
        {"polygon, no vertex", false, 1, "tnwShapeEncoder.PolygonToPoints", 91, 2},
        {"polygon, offset overflows", false, 1e308, "tnwShapeEncoder.PolygonToPoints", 6, 1},
        {"line, no vertex", true, 0, "tnwShapeEncoder.LineToPoints", 91, 1},
        {"line, offset overflows", true, 1e308, "tnwShapeEncoder.LineToPoints", 6, 1},
    };
    for (const Case& tCase : vCases) {
        SCOPED_TRACE(tCase.sName);
        capture.vReports.clear();
        tAcc.Start();
        tAcc.vParts.resize(2);
        tSettings.dXOffset = tCase.dOffset;
        const auto oFailing = std::make_shared<FakeRing>(
            std::vector<XY>{{0, 0}, {0, 1}, {1e308, 1}, {1e308, 0}, {0, 0}},
            tCase.lNumber == 91 ? 2 : SIZE_MAX);
        const auto oHole = std::make_shared<FakeRing>(kHoleCCW);
        if (tCase.bLine)
            detail::LineToPoints(tSettings, tAcc, oFailing);
        else
            detail::PolygonToPoints(tSettings, tAcc, Poly(oFailing, {oHole}));
        EXPECT_EQ(tAcc.oPoints->Count(), 2);
        EXPECT_EQ(tAcc.lPartIndex, 0);
        EXPECT_EQ(oHole->nReads, 0);
        ASSERT_EQ(capture.vReports.size(), tCase.nReports);
        EXPECT_EQ(capture.vReports.back().sSource, tCase.sSource);
        EXPECT_EQ(capture.vReports.back().lNumber, tCase.lNumber);

        // The same failure in the second member of a record: nothing is written.
        tAcc.Start();
        const auto oGood = std::make_shared<FakeRing>(kSquareCW);
        if (tCase.bLine) {
            const auto oLines = std::make_shared<standins::MultiLineString>(
                std::vector<std::shared_ptr<ILineString>>{oGood, oFailing});
            EXPECT_EQ(detail::GatherLines(tSettings, tAcc, oLines), 0);
        } else {
            const auto oPolygons = std::make_shared<standins::MultiPolygon>(
                std::vector<std::shared_ptr<IPolygon>>{Poly(oGood), Poly(oFailing, {oHole})});
            EXPECT_EQ(detail::GatherPolygons(tSettings, tAcc, oPolygons), 0);
        }
    }
}

}  // namespace
}  // namespace tnw::test
