// The stand-in field-operation summary: an in-memory model a host fills. A summary has its
// quantity definitions and a list of regions; a region carries series of values under keys,
// and a TrackRegion also has its recorded positions and per-record arrays.
//
// Values are kept in the units they were recorded in and converted when read (veld/Unit.h):
// with bOption True in the unit asked for, with bOption False as recorded.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/KeyedList.h"
#include "core/VELDLib.h"
#include "veld/Unit.h"

namespace tnw::standins {

// A quantity: the key regions hold its series under, its name and its unit. The same class
// serves one-unit and two-unit quantities.
class QuantityDef final : public VELDSeriesDef, public VELDRatioSeriesDef {
public:
    QuantityDef(std::string sKey, std::string sName, std::int32_t lUnit)
        : m_sKey(std::move(sKey)),
          m_sName(std::move(sName)),
          m_oUnit(std::make_shared<standins::Unit>(lUnit)) {}
    const std::string& Key() const override { return m_sKey; }
    const std::string& Name() const override { return m_sName; }
    std::shared_ptr<tnwUnit> Unit() const override { return m_oUnit; }

private:
    std::string m_sKey, m_sName;
    std::shared_ptr<standins::Unit> m_oUnit;
};

// One value per record, in the unit of the definition.
class Series final : public VELDSeries {
public:
    Series(std::string sKey, std::shared_ptr<QuantityDef> oDefinition)
        : m_sKey(std::move(sKey)), m_oDefinition(std::move(oDefinition)) {}
    void Add(double dValue) { m_aValues.push_back(dValue); }

    const std::string& Key() const override { return m_sKey; }
    std::shared_ptr<VELDSeriesDef> Definition() const override { return m_oDefinition; }
    std::vector<double> Values(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) override;

private:
    std::string m_sKey;
    std::shared_ptr<QuantityDef> m_oDefinition;
    std::vector<double> m_aValues;
};

// One value per record, in the definition's unit per the second unit.
class RatioSeries final : public VELDRatioSeries, public VELDRatioValues {
public:
    RatioSeries(std::string sKey, std::shared_ptr<QuantityDef> oDefinition,
                std::int32_t lSecondUnit)
        : m_sKey(std::move(sKey)),
          m_oDefinition(std::move(oDefinition)),
          m_oSecondUnit(std::make_shared<Unit>(lSecondUnit)) {}
    void Add(double dValue) { m_aValues.push_back(dValue); }

    const std::string& Key() const override { return m_sKey; }
    std::shared_ptr<VELDRatioSeriesDef> Definition() const override { return m_oDefinition; }
    std::shared_ptr<tnwUnit> SecondUnit() const override { return m_oSecondUnit; }
    std::vector<double> Values(const std::shared_ptr<tnwUnit>& oUnit,
                               const std::shared_ptr<tnwUnit>& oSecondUnit, bool bOption) override;

private:
    std::string m_sKey;
    std::shared_ptr<QuantityDef> m_oDefinition;
    std::shared_ptr<Unit> m_oSecondUnit;
    std::vector<double> m_aValues;
};

// A region's series, in order of addition; keys are unique without regard to case.
template <class TSeries>
class SeriesList final : public VELDList<TSeries> {
public:
    // False, and nothing added, for a key the list has; error 91 for nothing.
    bool Add(std::shared_ptr<TSeries> oSeries) {
        if (!oSeries) Raise(errObjectNotSet, "VELDLib");
        if (!m_oByKey.Add(oSeries->Key(), oSeries)) return false;
        m_aItems.push_back(std::move(oSeries));
        return true;
    }
    const std::vector<std::shared_ptr<TSeries>>& Items() const override { return m_aItems; }
    std::shared_ptr<TSeries> Item(std::string_view sKey) const override {
        const auto* pSeries = m_oByKey.Find(sKey);
        return pSeries ? *pSeries : nullptr;
    }

private:
    KeyedList<std::shared_ptr<TSeries>> m_oByKey;
    std::vector<std::shared_ptr<TSeries>> m_aItems;
};

// A region with series but no recorded positions.
class Region : public VELDRegion {
public:
    std::shared_ptr<VELDRatioSeriesList> RatioSeries() const override { return m_oRatioSeries; }
    std::shared_ptr<VELDSeriesList> Series() const override { return m_oSeries; }
    std::int32_t RecordCount() const override { return 0; }

    bool AddSeries(std::shared_ptr<VELDSeries> oSeries) {
        return m_oSeries->Add(std::move(oSeries));
    }
    bool AddRatioSeries(std::shared_ptr<VELDRatioSeries> oSeries) {
        return m_oRatioSeries->Add(std::move(oSeries));
    }

private:
    std::shared_ptr<SeriesList<VELDSeries>> m_oSeries = std::make_shared<SeriesList<VELDSeries>>();
    std::shared_ptr<SeriesList<VELDRatioSeries>> m_oRatioSeries =
        std::make_shared<SeriesList<VELDRatioSeries>>();
};

// One recorded position with its measures, in the units the region was made with.
struct TrackRecord {
    double dX = 0.0, dY = 0.0;
    double dElevation = 0.0, dWidth = 0.0, dDistance = 0.0, dDuration = 0.0;
    double dUTC = 0.0;  // seconds since 1970-01-01 00:00 UTC
    bool bEngaged = true;
    std::int32_t lMappable = 1;
};

// The units a track region's measures are recorded in.
struct TrackUnits {
    std::int32_t lElevation = 513, lWidth = 257, lDistance = 257, lDuration = 277;
};

class TrackRegion final : public Region, public VELDTrackRegion {
public:
    explicit TrackRegion(TrackUnits tUnits = {}) : m_tUnits(tUnits) {}
    void AddRecord(const TrackRecord& tRecord);
    std::int32_t RecordCount() const override;

    std::vector<std::int32_t> Mappable() override { return m_aMappable; }
    std::vector<bool> Engaged() override { return m_aEngaged; }
    std::vector<double> UTCTimes() override { return m_aUTC; }
    std::vector<double> Durations(const std::shared_ptr<tnwUnit>& oUnit) override;
    // Every position as recorded: the stand-in has no other views of them, and reads none of
    // the four arguments.
    std::vector<double> Positions(double, double, std::int32_t, std::int32_t) override {
        return m_aPositions;
    }
    std::vector<double> Elevations(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) override;
    std::vector<double> Distances(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) override;
    std::vector<double> Widths(const std::shared_ptr<tnwUnit>& oUnit, bool bOption) override;
    // A mark a host keeps on the region; the region's values do not depend on it.
    bool ExportSwitch() const override { return m_bExportSwitch; }
    void SetExportSwitch(bool bExportSwitch) override { m_bExportSwitch = bExportSwitch; }

private:
    TrackUnits m_tUnits;
    std::vector<double> m_aPositions, m_aElevations, m_aWidths, m_aDistances, m_aDurations, m_aUTC;
    std::vector<bool> m_aEngaged;
    std::vector<std::int32_t> m_aMappable;
    bool m_bExportSwitch = true;
};

class RegionList final : public VELDRegionList {
public:
    std::int32_t Count() const override { return static_cast<std::int32_t>(m_aItems.size()); }
    const std::vector<std::shared_ptr<VELDRegion>>& Items() const override { return m_aItems; }
    void Add(std::shared_ptr<VELDRegion> oRegion);

private:
    std::vector<std::shared_ptr<VELDRegion>> m_aItems;
};

class Summary final : public VELDSummary {
public:
    std::shared_ptr<VELDRegionList> Regions() const override { return m_oRegions; }
    std::vector<std::shared_ptr<VELDRatioSeriesDef>> RatioSeriesDefs() const override;
    std::vector<std::shared_ptr<VELDSeriesDef>> SeriesDefs() const override;

    // Error 91 for nothing.
    void AddRegion(std::shared_ptr<VELDRegion> oRegion) { m_oRegions->Add(std::move(oRegion)); }
    // False, and nothing added, for a key the summary has.
    bool AddSeriesDef(std::shared_ptr<QuantityDef> oDef);
    bool AddRatioSeriesDef(std::shared_ptr<QuantityDef> oDef);

private:
    std::shared_ptr<RegionList> m_oRegions = std::make_shared<RegionList>();
    KeyedList<std::shared_ptr<QuantityDef>> m_oSeriesDefs, m_oRatioSeriesDefs;
};

}  // namespace tnw::standins
