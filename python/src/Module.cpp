// The module tnw._tnw, which the package tnw presents. Importing it registers the stand-ins of
// the outside components, so that the classes can make their columns, points and handler.
#include "Bindings.h"
#include "RegisterStandIns.h"
#include "core/Enums.h"

namespace tnw::python {
namespace {

void BindEnumerations(py::module_& m) {
    py::enum_<tnwGeometryType>(m, "tnwGeometryType", py::arithmetic())
        .value("tnwGeometryPoint", tnwGeometryPoint)
        .value("tnwGeometryLine", tnwGeometryLine)
        .value("tnwGeometryRegion", tnwGeometryRegion)
        .value("tnwGeometryMultiPoint", tnwGeometryMultiPoint)
        .export_values();
    py::enum_<TNW_Encoders_GeometryFormats>(m, "TNW_Encoders_GeometryFormats", py::arithmetic())
        .value("TNW_GeometryFormat_None", TNW_GeometryFormat_None)
        .value("TNW_GeometryFormat_WKT", TNW_GeometryFormat_WKT)
        .value("TNW_GeometryFormat_LonLat", TNW_GeometryFormat_LonLat)
        .export_values();
    py::enum_<TNW_Encoders_AutoGenFlags>(m, "TNW_Encoders_AutoGenFlags", py::arithmetic())
        .value("TNW_AutoGenFlags_Default", TNW_AutoGenFlags_Default)
        .export_values();
    py::enum_<VarType>(m, "VarType", py::arithmetic())
        .value("vtEmpty", vtEmpty)
        .value("vtInt16", vtInt16)
        .value("vtInt32", vtInt32)
        .value("vtFloat", vtFloat)
        .value("vtDouble", vtDouble)
        .value("vtDate", vtDate)
        .value("vtString", vtString)
        .value("vtBoolean", vtBoolean)
        .export_values();
}

}  // namespace
}  // namespace tnw::python

PYBIND11_MODULE(_tnw, m) {
    using namespace tnw::python;
    tnw::standins::RegisterStandIns();
    m.doc() = "Field data in and out of shapefiles, dBase tables and delimited text.";
    BindEnumerations(m);
    BindErrors(m);
    BindGeometry(m);
    BindColumns(m);
    BindSources(m);
    BindEncoders(m);
    BindDecoders(m);
    BindINI(m);
    BindSummary(m);
}
