// The encoders. Each is its class with its own operations and properties; what they share for
// Python (SetGeometry from any geometry form, write(), the context manager) comes from
// AddEncoderProtocol.
#include "Bindings.h"
#include "encoders/tnwASCIIEncoder.h"
#include "encoders/tnwFSEncoder.h"
#include "encoders/tnwGPLEncoder.h"
#include "shapefile/tnwShapeEncoder.h"
#include "veld/Summary.h"

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
        .def(
            "ExportVELDSummary",
            [](tnwShapeEncoder& o, py::object oCallback,
               std::shared_ptr<standins::Summary> oSummary, const std::string& sFilename) {
                return o.ExportVELDSummary(MakeCallback(std::move(oCallback)), std::move(oSummary),
                                           sFilename);
            },
            py::arg("callback"), py::arg("summary"), py::arg("filename"))
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

    py::class_<tnwGPLEncoder> oGPL(m, "tnwGPLEncoder");
    oGPL.def(py::init<>())
        .def("Initialize", &tnwGPLEncoder::Initialize, py::arg("filename"), py::arg("columns"),
             py::arg("gpd") = true)
        .def("InitializeFile", &tnwGPLEncoder::InitializeFile, py::arg("filename"),
             py::arg("columns"))
        .def("Update", &tnwGPLEncoder::Update)
        .def("CloseFiles", &tnwGPLEncoder::CloseFiles)
        .def("ImportRS", &tnwGPLEncoder::ImportRS, py::arg("filename"), py::arg("source"),
             py::arg("gpd") = true)
        .def_property("GPD", &tnwGPLEncoder::GPD, &tnwGPLEncoder::SetGPD)
        .def_property("KeepExtension", &tnwGPLEncoder::KeepExtension,
                      &tnwGPLEncoder::SetKeepExtension)
        .def_property("PositionFromPoint", &tnwGPLEncoder::PositionFromPoint,
                      &tnwGPLEncoder::SetPositionFromPoint)
        .def_property("WriteStartStop", &tnwGPLEncoder::WriteStartStop,
                      &tnwGPLEncoder::SetWriteStartStop);
    AddEncoderProtocol(oGPL);

    py::class_<tnwFSEncoder> oFS(m, "tnwFSEncoder");
    oFS.def(py::init<>())
        .def("Initialize", &tnwFSEncoder::Initialize, py::arg("filename"), py::arg("columns"),
             py::arg("rate_column_key") = "")
        .def("InitializeFile", &tnwFSEncoder::InitializeFile, py::arg("filename"),
             py::arg("columns"))
        .def("Update", &tnwFSEncoder::Update)
        .def("CloseFiles", &tnwFSEncoder::CloseFiles)
        .def("ImportRS", &tnwFSEncoder::ImportRS, py::arg("filename"), py::arg("source"),
             py::arg("rate_column_key") = "")
        .def_property("RateColumnKey", &tnwFSEncoder::RateColumnKey,
                      &tnwFSEncoder::SetRateColumnKey)
        .def_property("SignedZeroDegrees", &tnwFSEncoder::SignedZeroDegrees,
                      &tnwFSEncoder::SetSignedZeroDegrees);
    AddEncoderProtocol(oFS);
}

}  // namespace tnw::python
