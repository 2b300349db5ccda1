// The stand-in field-operation summary, so that a Python user can fill one and export it with
// tnwShapeEncoder.ExportVELDSummary. Series take their values as an iterable too, and a track
// region's records and units come as keyword arguments.
#include "veld/Summary.h"
#include "Bindings.h"

namespace tnw::python {

void BindSummary(py::module_& m) {
    using namespace standins;

    py::class_<QuantityDef, std::shared_ptr<QuantityDef>>(m, "QuantityDef")
        .def(py::init<std::string, std::string, std::int32_t>(), py::arg("key"), py::arg("name"),
             py::arg("unit") = 16)
        .def_property_readonly("Key", &QuantityDef::Key)
        .def_property_readonly("Name", &QuantityDef::Name)
        .def_property_readonly("UnitId", [](const QuantityDef& o) { return UnitId(o.Unit()); });

    py::class_<Series, std::shared_ptr<Series>>(m, "Series")
        .def(py::init([](std::string sKey, std::shared_ptr<QuantityDef> oDefinition,
                         const std::vector<double>& aValues) {
                 auto o = std::make_shared<Series>(std::move(sKey), std::move(oDefinition));
                 for (double d : aValues)
                     o->Add(d);
                 return o;
             }),
             py::arg("key"), py::arg("definition"), py::arg("values") = std::vector<double>{})
        .def_property_readonly("Key", &Series::Key)
        .def("Add", &Series::Add, py::arg("value"));

    py::class_<RatioSeries, std::shared_ptr<RatioSeries>>(m, "RatioSeries")
        .def(py::init([](std::string sKey, std::shared_ptr<QuantityDef> oDefinition,
                         std::int32_t lSecondUnit, const std::vector<double>& aValues) {
                 auto o = std::make_shared<RatioSeries>(std::move(sKey), std::move(oDefinition),
                                                        lSecondUnit);
                 for (double d : aValues)
                     o->Add(d);
                 return o;
             }),
             py::arg("key"), py::arg("definition"), py::arg("second_unit"),
             py::arg("values") = std::vector<double>{})
        .def_property_readonly("Key", &RatioSeries::Key)
        .def("Add", &RatioSeries::Add, py::arg("value"));

    py::class_<Region, std::shared_ptr<Region>>(m, "Region")
        .def(py::init<>())
        .def("AddSeries",
             [](Region& o, std::shared_ptr<Series> oSeries) { return o.AddSeries(oSeries); })
        .def("AddRatioSeries",
             [](Region& o, std::shared_ptr<RatioSeries> oSeries) {
                 return o.AddRatioSeries(oSeries);
             })
        .def_property_readonly("RecordCount", &Region::RecordCount);

    py::class_<TrackRegion, Region, std::shared_ptr<TrackRegion>>(m, "TrackRegion")
        .def(py::init([](std::int32_t lElevation, std::int32_t lWidth, std::int32_t lDistance,
                         std::int32_t lDuration) {
                 return std::make_shared<TrackRegion>(
                     TrackUnits{lElevation, lWidth, lDistance, lDuration});
             }),
             py::arg("elevation_unit") = 513, py::arg("width_unit") = 257,
             py::arg("distance_unit") = 257, py::arg("duration_unit") = 277)
        .def(
            "AddRecord",
            [](TrackRegion& o, double dX, double dY, double dElevation, double dWidth,
               double dDistance, double dDuration, double dUTC, bool bEngaged,
               std::int32_t lMappable) {
                o.AddRecord(TrackRecord{dX, dY, dElevation, dWidth, dDistance, dDuration, dUTC,
                                        bEngaged, lMappable});
            },
            py::arg("x"), py::arg("y"), py::arg("elevation") = 0.0, py::arg("width") = 0.0,
            py::arg("distance") = 0.0, py::arg("duration") = 0.0, py::arg("utc") = 0.0,
            py::arg("engaged") = true, py::arg("mappable") = 1,
            "One recorded position; utc is in seconds since 1970-01-01 00:00 UTC.")
        .def_property("ExportSwitch", &TrackRegion::ExportSwitch, &TrackRegion::SetExportSwitch);

    py::class_<Summary, std::shared_ptr<Summary>>(m, "Summary")
        .def(py::init<>())
        .def("AddRegion", [](Summary& o, std::shared_ptr<Region> oRegion) { o.AddRegion(oRegion); })
        .def("AddSeriesDef", &Summary::AddSeriesDef, py::arg("definition"))
        .def("AddRatioSeriesDef", &Summary::AddRatioSeriesDef, py::arg("definition"))
        .def_property_readonly("RegionCount",
                               [](const Summary& o) { return o.Regions()->Count(); });
}

}  // namespace tnw::python
