// The stand-in point factory and point list.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/GISLib.h"

namespace tnw::standins {

class GISFactory final : public tnwGISFactory {
public:
    // A stand-in Point at (dX, dY). The coordinates are taken as already in the projection's
    // system: the projection is not applied.
    std::shared_ptr<IPoint> CreatePoint(double dX, double dY,
                                        const std::shared_ptr<tnwProjection>& oProjection) override;
};

class PointList final : public tnwPointList {
public:
    // Error 91 for nothing.
    void Add(std::shared_ptr<IPoint> oPoint) override;
    std::int32_t Count() const override;
    // 0-based; error 9 outside the list.
    std::shared_ptr<IPoint> Item(std::int32_t lIndex) const override;

private:
    std::vector<std::shared_ptr<IPoint>> m_aPoints;
};

}  // namespace tnw::standins
