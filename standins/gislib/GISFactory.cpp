#include "gislib/GISFactory.h"

#include <limits>

#include "core/Error.h"
#include "ogc_sf/Geometries.h"

namespace tnw::standins {

std::shared_ptr<IPoint> GISFactory::CreatePoint(double dX, double dY,
                                                const std::shared_ptr<tnwProjection>&) {
    return Point::Create(dX, dY);
}

void PointList::Add(std::shared_ptr<IPoint> oPoint) {
    if (!oPoint) Raise(errObjectNotSet, "tnwGIS.tnwPointList");
    if (m_aPoints.size() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        Raise(errOverflow, "tnwGIS.tnwPointList");
    m_aPoints.push_back(std::move(oPoint));
}

std::int32_t PointList::Count() const {
    return static_cast<std::int32_t>(m_aPoints.size());
}

std::shared_ptr<IPoint> PointList::Item(std::int32_t lIndex) const {
    if (lIndex < 0 || static_cast<std::size_t>(lIndex) >= m_aPoints.size())
        Raise(errSubscript, "tnwGIS.tnwPointList");
    return m_aPoints[static_cast<std::size_t>(lIndex)];
}

}  // namespace tnw::standins
