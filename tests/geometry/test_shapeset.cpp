// Polygon and polyline sets written through the shapefile encoder: the strict checker must pass
// them with their winding, and GDAL must read back every input coordinate, exterior rings
// clockwise and holes counter-clockwise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "gislib/Projection.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

using XY = standins::Coordinate;
using Rings = std::vector<std::vector<XY>>;

std::vector<XY> Reversed(std::vector<XY> vRing) {
    std::reverse(vRing.begin(), vRing.end());
    return vRing;
}

std::shared_ptr<IGeometry> Poly(const Rings& vRings) {
    return std::make_shared<standins::Polygon>(vRings);
}
std::shared_ptr<standins::LineString> Line(const std::vector<XY>& vCoords) {
    return std::make_shared<standins::LineString>(vCoords);
}
std::shared_ptr<IGeometry> Collection(std::vector<std::shared_ptr<IGeometry>> vMembers) {
    return std::make_shared<standins::GeometryCollection>(std::move(vMembers));
}

// One feature as ogr_rings.py prints it: members (polygons or lines) of rings of points.
std::string Feature(const std::vector<Rings>& vMembers) {
    std::string sOut;
    for (std::size_t m = 0; m < vMembers.size(); ++m) {
        if (m) sOut += " / ";
        for (std::size_t r = 0; r < vMembers[m].size(); ++r) {
            if (r) sOut += " | ";
            for (std::size_t i = 0; i < vMembers[m][r].size(); ++i) {
                char aText[64];
                std::snprintf(aText, sizeof aText, "%s%.17g %.17g", i ? "," : "",
                              vMembers[m][r][i].dX, vMembers[m][r][i].dY);
                sOut += aText;
            }
        }
    }
    return sOut + "\n";
}

class ShapeSet : public ::testing::Test {
protected:
    std::string Base() const { return dir.Path("set"); }
    void Write(std::shared_ptr<IGeometry> oGeometry, bool bWritten = true) {
        oId->SetValue(++lId);
        encoder.SetGeometry(std::move(oGeometry));
        EXPECT_EQ(encoder.Update(), bWritten) << "record " << lId;
    }
    void ExpectSet(const std::string& sFeatures) {
        encoder.CloseFiles();
        const CommandResult tCheck = CheckShapeSet(Base(), "--winding");
        EXPECT_EQ(tCheck.iStatus, 0) << tCheck.sOutput;
        EXPECT_EQ(RunCommand("/usr/bin/python3 " TNW_OGR_RINGS " '" + Base() + ".shp'").sOutput,
                  sFeatures);
        EXPECT_TRUE(capture.vReports.empty());
    }

    ScopedCapture capture;
    TempDir dir;
    std::shared_ptr<tnwColumns> oColumns = NewColumns();
    std::shared_ptr<tnwColumn> oId = AddColumn(*oColumns, "Id", vtInt32, 4);
    std::int32_t lId = 0;
    tnwShapeEncoder encoder;
};

const std::vector<XY> kSquareCW = {{0, 0}, {0, 4}, {4, 4}, {4, 0}, {0, 0}};
const std::vector<XY> kHoleCCW = {{1, 1}, {2, 1}, {2, 2}, {1, 2}, {1, 1}};
const std::vector<XY> kWideCW = {{20, 0}, {20, 10}, {30, 10}, {30, 0}, {20, 0}};
const std::vector<XY> kSmallCCW = {{21, 1}, {22, 1}, {22, 2}, {21, 2}, {21, 1}};
const std::vector<XY> kOtherCCW = {{25, 5}, {26, 5}, {26, 6}, {25, 6}, {25, 5}};
const std::vector<XY> kApartCCW = {{40, 0}, {42, 0}, {42, 2}, {40, 2}, {40, 0}};

// Mixed winding in a multi-polygon with holes, and collections giving only their polygons;
// projected, then offset.
TEST_F(ShapeSet, PolygonsComeOutInTheShapefileWinding) {
    const auto oMercator = standins::SpatialReference::WebMercator();
    encoder.SetProjection(std::make_shared<standins::Projection>(oMercator));
    encoder.SetXOffset(1000);
    encoder.SetYOffset(-500);
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryRegion));
    Write(Poly({Reversed(kSquareCW), Reversed(kHoleCCW)}));
    Write(std::make_shared<standins::MultiPolygon>(std::vector<std::shared_ptr<IPolygon>>{
        std::make_shared<standins::Polygon>(Rings{kWideCW, kSmallCCW, Reversed(kOtherCCW)}),
        std::make_shared<standins::Polygon>(Rings{kApartCCW})}));
    Write(Collection({standins::Point::Create(5, 5), Line({{0, 0}, {1, 1}}), Poly({kApartCCW}),
                      Poly({kSquareCW})}));
    Write(Collection({standins::Point::Create(1, 1), Line({{0, 0}, {1, 1}})}), false);
    Write(Line({{0, 0}, {1, 1}}), false);

    const auto out = [&](std::vector<XY> vRing) {
        for (XY& t : vRing) {
            const XY tProjected = oMercator->Forward(t);
            t = {tProjected.dX + 1000, tProjected.dY - 500};
        }
        return vRing;
    };
    ExpectSet(
        Feature({{out(kSquareCW), out(kHoleCCW)}}) +
        Feature({{out(kWideCW), out(kSmallCCW), out(kOtherCCW)}, {out(Reversed(kApartCCW))}}) +
        Feature({{out(Reversed(kApartCCW))}, {out(kSquareCW)}}));
}

// Lines of several parts keep their direction and take the offsets; polygons are left out.
TEST_F(ShapeSet, LinesKeepTheirDirectionAndTakeTheOffsets) {
    encoder.SetXOffset(100);
    encoder.SetYOffset(200);
    ASSERT_TRUE(encoder.Initialize(Base(), oColumns, tnwGeometryLine));
    const std::vector<XY> vWest = {{5, 0}, {3, 1}, {0, 0}};
    const std::vector<XY> vLoop = {{10, 10}, {11, 12}, {12, 10}, {10, 10}};
    const std::vector<XY> vNorth = {{-1, -1}, {-1, 5}};

    Write(Line(vWest));
    Write(std::make_shared<standins::MultiLineString>(
        std::vector<std::shared_ptr<ILineString>>{Line(vLoop), Line(vNorth)}));
    Write(
        Collection({Line(vNorth), Poly({kSquareCW}), standins::Point::Create(3, 3), Line(vWest)}));
    Write(Collection({Poly({kSquareCW})}), false);
    Write(Poly({kSquareCW}), false);

    const auto output = [](std::vector<XY> vLine) {
        for (XY& t : vLine)
            t = {t.dX + 100, t.dY + 200};
        return Rings{vLine};
    };
    ExpectSet(Feature({output(vWest)}) + Feature({output(vLoop), output(vNorth)}) +
              Feature({output(vNorth), output(vWest)}));
}

}  // namespace
}  // namespace tnw::test
