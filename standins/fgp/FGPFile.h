// The reader of an FGP set's main file (format: docs/fgp-format.md). Open checks every count
// and entry against the file's size before anything else is read; points are read from the
// file when asked for, so memory stays flat in the number of points.
#pragma once

#include <memory>
#include <string>

#include "core/FGPFile.h"
#include "fgp/FGPFormat.h"

namespace tnw::standins {

class FGPPoint final : public tnwFGPPoint {
public:
    explicit FGPPoint(const fgp::PointData& tData) : m_t(tData) {}
    std::int32_t FSNRecord() const override { return m_t.lFSNRecord; }
    std::int32_t AttributeID() const override { return m_t.lAttributeID; }
    std::int32_t RegionID() const override { return m_t.lRegionID; }
    double Time() const override { return m_t.dTime; }
    double Latitude() const override { return m_t.dLatitude; }
    double Longitude() const override { return m_t.dLongitude; }
    double Altitude() const override { return m_t.dAltitude; }
    double Heading() const override { return m_t.dHeading; }

private:
    fgp::PointData m_t;
};

namespace fgp {
class Store;
}

// Failures of Open: 53 or 75 from the platform, 321 "Invalid file format" with the reason in
// the description for a file that is not a whole main file of a known version. Regions,
// Lines and Points raise 91 while no set is open.
class FGPFile final : public tnwFGPFile {
public:
    void Open(const std::string& sFilename) override;
    std::shared_ptr<tnwFGPPartList> Regions() const override;
    std::shared_ptr<tnwFGPPartList> Lines() const override;
    std::shared_ptr<tnwFGPPointList> Points() const override;

private:
    std::shared_ptr<tnwFGPPartList> m_oRegions;
    std::shared_ptr<tnwFGPPartList> m_oLines;
    std::shared_ptr<tnwFGPPointList> m_oPoints;
};

inline constexpr std::int32_t errInvalidFileFormat = 321;

}  // namespace tnw::standins
