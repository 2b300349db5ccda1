// What the summary export relies on of the field-operation summary objects: a summary, its
// regions with their value series, the definitions of the quantities, and the track-region face
// of a region that has recorded positions. The library only declares these; a host hands it
// its own objects (the stand-ins are in standins/veld).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Component.h"
#include "core/GISLib.h"

namespace tnw {

// A one-unit quantity the summary knows of.
class VELDSeriesDef : public virtual IComponent {
public:
    // The key under which a region holds its series of this quantity.
    virtual const std::string& Key() const = 0;
    // The quantity's name: the key of its output column.
    virtual const std::string& Name() const = 0;
    virtual std::shared_ptr<tnwUnit> Unit() const = 0;
};

// A two-unit quantity (an amount per something) the summary knows of.
class VELDRatioSeriesDef : public virtual IComponent {
public:
    virtual const std::string& Key() const = 0;
    virtual const std::string& Name() const = 0;
    // The first of the quantity's two units.
    virtual std::shared_ptr<tnwUnit> Unit() const = 0;
};

// A region's values of a one-unit quantity, one per record.
class VELDSeries : public virtual IComponent {
public:
    virtual const std::string& Key() const = 0;
    virtual std::shared_ptr<VELDSeriesDef> Definition() const = 0;
    virtual std::vector<double> Values(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) = 0;
};

// A region's values of a two-unit quantity; its values come through the VELDRatioValues face.
class VELDRatioSeries : public virtual IComponent {
public:
    virtual const std::string& Key() const = 0;
    virtual std::shared_ptr<VELDRatioSeriesDef> Definition() const = 0;
};

class VELDRatioValues : public virtual IComponent {
public:
    virtual std::shared_ptr<tnwUnit> SecondUnit() const = 0;
    virtual std::vector<double> Values(const std::shared_ptr<tnwUnit>& oUnit,
                                       const std::shared_ptr<tnwUnit>& oSecondUnit,
                                       bool bOption) = 0;
};

// A region's series lists: enumerable in a stable order, and found by key.
template <class TSeries>
class VELDList : public virtual IComponent {
public:
    virtual const std::vector<std::shared_ptr<TSeries>>& Items() const = 0;
    // Nothing for an unknown key; not a failure.
    virtual std::shared_ptr<TSeries> Item(std::string_view sKey) const = 0;
};
using VELDSeriesList = VELDList<VELDSeries>;
using VELDRatioSeriesList = VELDList<VELDRatioSeries>;

class VELDRegion : public virtual IComponent {
public:
    virtual std::shared_ptr<VELDRatioSeriesList> RatioSeries() const = 0;
    virtual std::shared_ptr<VELDSeriesList> Series() const = 0;
    // Only the top of a progress bar.
    virtual std::int32_t RecordCount() const = 0;
};

// The face of a region that has recorded positions. Every array has one element per record
// but Positions, which has two: X and Y of record 0, X and Y of record 1, and so on.
class VELDTrackRegion : public virtual IComponent {
public:
    virtual std::vector<std::int32_t> Mappable() = 0;
    virtual std::vector<bool> Engaged() = 0;
    virtual std::vector<double> UTCTimes() = 0;
    virtual std::vector<double> Durations(const std::shared_ptr<tnwUnit>& oUnit) = 0;
    // The export passes four zeros; what they select is the summary library's business.
    virtual std::vector<double> Positions(double dArgument1, double dArgument2,
                                          std::int32_t lArgument3, std::int32_t lArgument4) = 0;
    virtual std::vector<double> Elevations(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) = 0;
    virtual std::vector<double> Distances(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) = 0;
    virtual std::vector<double> Widths(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) = 0;
    virtual bool ExportSwitch() const = 0;
    virtual void SetExportSwitch(bool bExportSwitch) = 0;
};

class VELDRegionList : public virtual IComponent {
public:
    virtual std::int32_t Count() const = 0;
    // The regions in a stable order, the same each time.
    virtual const std::vector<std::shared_ptr<VELDRegion>>& Items() const = 0;
};

// The field-operation summary a host hands to tnwShapeEncoder::ExportVELDSummary.
class VELDSummary : public virtual IComponent {
public:
    virtual std::shared_ptr<VELDRegionList> Regions() const = 0;
    virtual std::vector<std::shared_ptr<VELDRatioSeriesDef>> RatioSeriesDefs() const = 0;
    virtual std::vector<std::shared_ptr<VELDSeriesDef>> SeriesDefs() const = 0;
};

}  // namespace tnw
