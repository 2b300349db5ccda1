// Ring orientation: the pivot, its neighbours, the two arc angles and the failure cases.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "FakeGeometry.h"
#include "core/Services.h"
#include "geometry/Flatten.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

struct ArcCall {
    XY tPivot;
    XY tNeighbour;
};
std::vector<ArcCall> g_vArcCalls;

double RecordingArcAngle(double dX1, double dY1, double dX2, double dY2) {
    g_vArcCalls.push_back({{dX1, dY1}, {dX2, dY2}});
    return std::atan2(dY2 - dY1, dX2 - dX1);
}

double ConstantArcAngle(double, double, double, double) {
    return 1.0;
}

class Winding : public ::testing::Test {
protected:
    void SetUp() override {
        g_vArcCalls.clear();
        RegisterArcAngle(&RecordingArcAngle);
    }
    ScopedCapture capture;
};

struct WindingCase {
    const char* sName;
    std::vector<XY> vRing;
    bool bClockwise;
    XY tPivot;
    XY tNext;
    XY tPrev;
};

TEST_F(Winding, JudgesAtLowestLeftmostVertexWithTwoArcAngles) {
    const std::vector<WindingCase> vCases = {
        {"square clockwise",
         {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}},
         true,
         {0, 0},
         {0, 1},
         {1, 0}},
        {"square counter-clockwise",
         {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}},
         false,
         {0, 0},
         {1, 0},
         {0, 1}},
        {"not closed", {{0, 0}, {0, 1}, {1, 1}, {1, 0}}, true, {0, 0}, {0, 1}, {1, 0}},
        {"closed three times",
         {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}, {0, 0}, {0, 0}},
         true,
         {0, 0},
         {0, 1},
         {1, 0}},
        {"pivot at index 0",
         {{0, 0}, {0.1, 0.2}, {0.2, 2}, {0.5, 3}, {3, 1}, {0, 0}},
         true,
         {0, 0},
         {0.1, 0.2},
         {3, 1}},
        {"pivot at the last index",
         {{0.1, 0.2}, {0.2, 2}, {0.5, 3}, {3, 1}, {0, 0}},
         true,
         {0, 0},
         {0.1, 0.2},
         {3, 1}},
        {"flat bottom, right end first",
         {{2, 0}, {1, 0}, {0, 0}, {0, 1}, {2, 1}, {2, 0}},
         true,
         {0, 0},
         {0, 1},
         {1, 0}},
        {"flat bottom, left end first",
         {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {0, 1}, {0, 0}},
         false,
         {0, 0},
         {1, 0},
         {0, 1}},
        {"repeated pivot, next passes the last index",
         {{2, 1}, {1, 2}, {0, 0}, {0, 0}, {2, 1}},
         false,
         {0, 0},
         {2, 1},
         {1, 2}},
        {"repeated pivot, skipped forward",
         {{2, 1}, {0, 0}, {0, 0}, {1, 2}, {2, 1}},
         true,
         {0, 0},
         {1, 2},
         {2, 1}},
        {"A-B-A, previous passes index 0", {{0, 0}, {1, 1}, {0, 0}}, false, {0, 0}, {1, 1}, {1, 1}},
        {"A-B-A closed once more", {{0, 0}, {1, 1}, {0, 0}, {0, 0}}, false, {0, 0}, {1, 1}, {1, 1}},
        {"B-A-B", {{1, 1}, {0, 0}, {1, 1}}, false, {0, 0}, {1, 1}, {1, 1}},
        {"two vertices", {{1, 1}, {0, 0}}, false, {0, 0}, {1, 1}, {1, 1}},
    };
    for (const WindingCase& tCase : vCases) {
        SCOPED_TRACE(tCase.sName);
        g_vArcCalls.clear();
        EXPECT_EQ(detail::IsClockwise(Line(tCase.vRing)), tCase.bClockwise);
        ASSERT_EQ(g_vArcCalls.size(), 2u);  // next neighbour first, then previous
        EXPECT_EQ(g_vArcCalls[0].tPivot, tCase.tPivot);
        EXPECT_EQ(g_vArcCalls[0].tNeighbour, tCase.tNext);
        EXPECT_EQ(g_vArcCalls[1].tPivot, tCase.tPivot);
        EXPECT_EQ(g_vArcCalls[1].tNeighbour, tCase.tPrev);
    }
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(Winding, EqualAnglesGiveFalse) {
    RegisterArcAngle(&ConstantArcAngle);
    EXPECT_FALSE(detail::IsClockwise(Line({{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}})));
    EXPECT_TRUE(capture.vReports.empty());
}

TEST_F(Winding, RingsThatCannotBeJudgedGiveFalseThroughTheErrorPath) {
    const std::vector<std::pair<const char*, std::shared_ptr<ILineString>>> vRings = {
        {"nothing", nullptr},
        {"no vertex", Line({})},
        {"one vertex", Line({{3, 4}})},
        {"all vertices coincide", Line({{5, 5}, {5, 5}, {5, 5}, {5, 5}})},
    };
    for (const auto& [sName, oRing] : vRings) {
        SCOPED_TRACE(sName);
        capture.vReports.clear();
        EXPECT_FALSE(detail::IsClockwise(oRing));
        ASSERT_EQ(capture.vReports.size(), 1u);
        EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.IsClockwise");
    }
    EXPECT_TRUE(g_vArcCalls.empty());
}

TEST_F(Winding, MissingArcAngleGivesFalseThroughTheErrorPath) {
    RegisterArcAngle(nullptr);
    EXPECT_FALSE(detail::IsClockwise(Line({{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}})));
    ASSERT_EQ(capture.vReports.size(), 1u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwShapeEncoder.IsClockwise");
    EXPECT_EQ(capture.vReports[0].lNumber, 453);
}

}  // namespace
}  // namespace tnw::test
