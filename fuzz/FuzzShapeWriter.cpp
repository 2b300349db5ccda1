// Arbitrary geometry through the shapefile encoder. The first byte chooses the set's geometry
// type, centre points, offsets and a projection; the rest is well-known text. Whatever the
// encoder takes or refuses, the set it closes must agree with itself: the .shp and .shx
// lengths, the index entries and the .dbf record count all tell of the records Update wrote.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "FuzzSupport.h"
#include "core/Component.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "gislib/Projection.h"
#include "ogc_sf/WKT.h"
#include "shapefile/tnwShapeEncoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    if (nSize < 1) return 0;
    const std::uint8_t bySetUp = pData[0];
    std::shared_ptr<tnw::IGeometry> oGeometry;
    try {
        oGeometry = tnw::standins::ParseWKT(
            std::string_view(reinterpret_cast<const char*>(pData + 1), nSize - 1));
    } catch (const tnw::Error&) {
        return 0;
    }

    auto oColumns = tnw::CreateAs<tnw::tnwColumns>(tnw::kProgIdColumns, "Missing Component");
    auto oId = oColumns->Add("ID", "", "", tnw::vtDouble, 6, 0, 0, 1, 0, "", true, true);
    oColumns->Add("NAME", "", "", tnw::vtString, 4, 0, 0, 1, 0, "", true, true);
    static constexpr double aOffsets[] = {0.0, 1000.5, 1e308,
                                          -std::numeric_limits<double>::infinity()};

    const std::string sBase = tnw::fuzz::ScratchPath("_set");
    std::uint32_t nRecords = 0;
    {
        tnw::tnwShapeEncoder oEncoder;
        oEncoder.SetExportCentroids(bySetUp & 0x08);
        oEncoder.SetXOffset(aOffsets[(bySetUp >> 4) & 3]);
        if (bySetUp & 0x40) {
            oEncoder.SetProjection(std::make_shared<tnw::standins::Projection>(
                bySetUp & 0x80 ? tnw::standins::SpatialReference::WebMercator()
                               : tnw::standins::SpatialReference::Utm(15, true)));
        }
        const auto eType = static_cast<tnw::tnwGeometryType>(bySetUp & 7);
        if (!oEncoder.Initialize(sBase, oColumns, eType)) std::abort();
        // The geometry, nothing, the geometry again, and a record without forcing one.
        for (int i = 0; i < 4; ++i) {
            oId->SetValue(static_cast<double>(i));
            oEncoder.SetGeometry(i == 1 ? nullptr : oGeometry);
            if (i == 3 ? oEncoder.Update2(false) : oEncoder.Update()) ++nRecords;
        }
        oEncoder.CloseFiles();
        const bool bShapes = (bySetUp & 7) >= 1 && (bySetUp & 7) <= 4;
        if (tnw::fuzz::CheckClosedSet(sBase, bShapes) != nRecords) std::abort();
    }
    (void)oGeometry->WKT();
    return 0;
}
