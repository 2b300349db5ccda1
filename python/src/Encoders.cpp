// The encoders. Each is its class with its own operations and properties; what they share for
// Python (SetGeometry from any geometry form, write(), the context manager) comes from
// AddEncoderProtocol.
#include "Bindings.h"
#include "encoders/tnwASCIIEncoder.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::python {

void BindEncoders(py::module_& m) {
    py::class_<tnwShapeEncoder> oShape(m, "tnwShapeEncoder");
    oShape.def(py::init<>())
        .def("Initialize", &tnwShapeEncoder::Initialize, py::arg("filename"), py::arg("columns"),
             py::arg("geometry_type") = tnwGeometryRegion)
        .def("InitializeFile", &tnwShapeEncoder::InitializeFile, py::arg("filename"),
             py::arg("columns"))
        .def("Update", &tnwShapeEncoder::Update)
        .def("Update2", &tnwShapeEncoder::Update2, py::arg("force_geometry") = false)
        .def("CloseFiles", &tnwShapeEncoder::CloseFiles)
        .def("ImportRS", &tnwShapeEncoder::ImportRS, py::arg("filename"), py::arg("source"))
        .def_property("GeometryType", &tnwShapeEncoder::GeometryType,
                      &tnwShapeEncoder::SetGeometryType)
        .def_property("XOffset", &tnwShapeEncoder::XOffset, &tnwShapeEncoder::SetXOffset)
        .def_property("YOffset", &tnwShapeEncoder::YOffset, &tnwShapeEncoder::SetYOffset)
        .def_property("IncludeInvisible", &tnwShapeEncoder::IncludeInvisible,
                      &tnwShapeEncoder::SetIncludeInvisible)
        .def_property("ExportCentroids", &tnwShapeEncoder::ExportCentroids,
                      &tnwShapeEncoder::SetExportCentroids)
        .def_property("Projection", &tnwShapeEncoder::Projection, &tnwShapeEncoder::SetProjection)
        .def_property(
            "Callback", [](const tnwShapeEncoder& o) { return CallbackTarget(o.Callback()); },
            [](tnwShapeEncoder& o, py::object oTarget) {
                o.SetCallback(MakeCallback(std::move(oTarget)));
            });
    AddEncoderProtocol(oShape);

    py::class_<tnwASCIIEncoder> oASCII(m, "tnwASCIIEncoder");
    oASCII.def(py::init<>())
        .def("Initialize", &tnwASCIIEncoder::Initialize, py::arg("filename"), py::arg("columns"),
             py::arg("header") = true, py::arg("delimiter") = ",",
             py::arg("include_geometry") = false)
        .def("InitializeFile", &tnwASCIIEncoder::InitializeFile, py::arg("filename"),
             py::arg("columns"))
        .def("Update", &tnwASCIIEncoder::Update)
        .def("CloseFiles", &tnwASCIIEncoder::CloseFiles)
        .def("ImportRS", &tnwASCIIEncoder::ImportRS, py::arg("filename"), py::arg("source"),
             py::arg("header") = true, py::arg("delimiter") = ",",
             py::arg("include_geometry") = false)
        .def_property("Header", &tnwASCIIEncoder::Header, &tnwASCIIEncoder::SetHeader)
        .def_property("Delimiter", &tnwASCIIEncoder::Delimiter, &tnwASCIIEncoder::SetDelimiter)
        .def_property("IncludeGeometry", &tnwASCIIEncoder::IncludeGeometry,
                      &tnwASCIIEncoder::SetIncludeGeometry)
        .def_property("IncludeLonLat", &tnwASCIIEncoder::IncludeLonLat,
                      &tnwASCIIEncoder::SetIncludeLonLat)
        .def_property("IncludeInvisible", &tnwASCIIEncoder::IncludeInvisible,
                      &tnwASCIIEncoder::SetIncludeInvisible);
    AddEncoderProtocol(oASCII);
}

}  // namespace tnw::python
