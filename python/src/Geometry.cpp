// Geometry: the OpenGIS interfaces, the stand-in geometry made from Python, and well-known text
// both ways. A geometry always reaches Python as its most specific interface.
#include <vector>

#include "Bindings.h"
#include "gislib/Projection.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/WKT.h"

namespace tnw::python {
namespace {

using standins::Coordinate;

template <class Interface>
py::object Cast(const std::shared_ptr<IGeometry>& oGeometry) {
    return py::cast(std::dynamic_pointer_cast<Interface>(oGeometry));
}

// A vertex from a point object or an (x, y) pair.
Coordinate CoordinateOf(py::handle oPoint) {
    if (py::isinstance<IPoint>(oPoint)) {
        const auto oIPoint = oPoint.cast<std::shared_ptr<IPoint>>();
        return {oIPoint->X(), oIPoint->Y()};
    }
    const auto oPair = oPoint.cast<py::sequence>();
    if (py::len(oPair) != 2) throw py::value_error("a vertex is a point or an (x, y) pair");
    return {oPair[0].cast<double>(), oPair[1].cast<double>()};
}

std::vector<Coordinate> Coordinates(py::handle oPoints) {
    std::vector<Coordinate> aCoordinates;
    for (py::handle oPoint : oPoints)
        aCoordinates.push_back(CoordinateOf(oPoint));
    return aCoordinates;
}

// Members of a collection: objects of the interface, or what fnMake makes of anything else.
template <class Member, class Make>
std::vector<std::shared_ptr<Member>> Members(py::handle oItems, Make&& fnMake) {
    std::vector<std::shared_ptr<Member>> aMembers;
    for (py::handle oItem : oItems) {
        aMembers.push_back(py::isinstance<Member>(oItem) ? oItem.cast<std::shared_ptr<Member>>()
                                                         : fnMake(oItem));
    }
    return aMembers;
}

std::shared_ptr<IPoint> MakePoint(py::handle oPair) {
    const Coordinate t = CoordinateOf(oPair);
    return standins::Point::Create(t.dX, t.dY);
}

std::shared_ptr<ILineString> MakeLine(py::handle oPoints) {
    return std::make_shared<standins::LineString>(Coordinates(oPoints));
}

// A polygon from its rings, the exterior first, each a sequence of vertices.
std::shared_ptr<IPolygon> MakePolygon(py::handle oRings) {
    std::vector<std::vector<Coordinate>> aRings;
    for (py::handle oRing : oRings)
        aRings.push_back(Coordinates(oRing));
    return std::make_shared<standins::Polygon>(aRings);
}

std::string Repr(const IGeometry& oGeometry) {
    return "<tnw " + oGeometry.WKT() + ">";
}

}  // namespace

py::object GeometryToPython(const std::shared_ptr<IGeometry>& oGeometry) {
    if (std::dynamic_pointer_cast<IPoint>(oGeometry)) return Cast<IPoint>(oGeometry);
    if (std::dynamic_pointer_cast<ILineString>(oGeometry)) return Cast<ILineString>(oGeometry);
    if (std::dynamic_pointer_cast<IPolygon>(oGeometry)) return Cast<IPolygon>(oGeometry);
    if (std::dynamic_pointer_cast<IMultiPoint>(oGeometry)) return Cast<IMultiPoint>(oGeometry);
    if (std::dynamic_pointer_cast<IMultiLineString>(oGeometry))
        return Cast<IMultiLineString>(oGeometry);
    if (std::dynamic_pointer_cast<IMultiPolygon>(oGeometry)) return Cast<IMultiPolygon>(oGeometry);
    if (std::dynamic_pointer_cast<IGeometryCollection>(oGeometry))
        return Cast<IGeometryCollection>(oGeometry);
    return py::cast(oGeometry);  // nothing gives None
}

std::shared_ptr<IGeometry> GeometryFromPython(py::handle oValue) {
    if (oValue.is_none()) return nullptr;
    if (py::isinstance<IGeometry>(oValue)) return oValue.cast<std::shared_ptr<IGeometry>>();
    if (py::isinstance<py::str>(oValue)) return standins::ParseWKT(oValue.cast<std::string>());
    // An (x, y) pair, the common case of a point stream: read without making a sequence.
    if (PyTuple_Check(oValue.ptr()) && PyTuple_GET_SIZE(oValue.ptr()) == 2) {
        const double dX = PyFloat_AsDouble(PyTuple_GET_ITEM(oValue.ptr(), 0));
        const double dY = PyFloat_AsDouble(PyTuple_GET_ITEM(oValue.ptr(), 1));
        if (PyErr_Occurred()) throw py::error_already_set();
        return standins::Point::Create(dX, dY);
    }
    if (py::isinstance<py::sequence>(oValue)) return MakePoint(oValue);
    throw py::type_error(
        "a geometry is a geometry object, well-known text, an (x, y) pair or None");
}

void BindGeometry(py::module_& m) {
    py::class_<ISpatialReference, std::shared_ptr<ISpatialReference>>(m, "ISpatialReference")
        .def_property_readonly("Name", &ISpatialReference::Name);
    m.def(
        "SpatialReference",
        [](std::int32_t lEPSG) -> std::shared_ptr<ISpatialReference> {
            return standins::SpatialReference::FromEPSG(lEPSG);
        },
        py::arg("epsg"), "WGS 84 (4326), Web Mercator (3857) or a UTM zone (326zz, 327zz).");

    py::class_<tnwProjection, std::shared_ptr<tnwProjection>>(m, "tnwProjection")
        .def(py::init([](std::int32_t lEPSG) -> std::shared_ptr<tnwProjection> {
                 return std::make_shared<standins::Projection>(
                     standins::SpatialReference::FromEPSG(lEPSG));
             }),
             py::arg("epsg"))
        .def_property_readonly("SpatialReference", &tnwProjection::SpatialReference);

    py::class_<IGeometry, std::shared_ptr<IGeometry>>(m, "IGeometry")
        .def_property_readonly("GeometryType", &IGeometry::GeometryType)
        .def_property_readonly("Centroid", [](const IGeometry& o) { return o.Centroid(); })
        .def_property_readonly("WKT", &IGeometry::WKT)
        .def(
            "Project",
            [](const IGeometry& o, std::shared_ptr<ISpatialReference> oReference) {
                return GeometryToPython(o.Project(oReference));
            },
            py::arg("spatial_reference"))
        .def("__str__", &IGeometry::WKT)
        .def("__repr__", &Repr);

    py::class_<IPoint, IGeometry, std::shared_ptr<IPoint>>(m, "IPoint", py::multiple_inheritance())
        .def_property_readonly("X", &IPoint::X)
        .def_property_readonly("Y", &IPoint::Y);

    py::class_<ILineString, IGeometry, std::shared_ptr<ILineString>>(m, "ILineString",
                                                                     py::multiple_inheritance())
        .def_property_readonly("NumPoints", &ILineString::NumPoints)
        .def("Point", &ILineString::Point, py::arg("index"))
        .def("__len__", &ILineString::NumPoints)
        .def_property_readonly(
            "coords",
            [](const ILineString& o) {
                py::list oCoords;
                for (std::int32_t i = 0; i < o.NumPoints(); ++i) {
                    const auto oPoint = o.Point(i);
                    oCoords.append(py::make_tuple(oPoint->X(), oPoint->Y()));
                }
                return oCoords;
            },
            "The vertices as (x, y) pairs.");

    py::class_<IPolygon, IGeometry, std::shared_ptr<IPolygon>>(m, "IPolygon",
                                                               py::multiple_inheritance())
        .def_property_readonly("ExteriorRing", &IPolygon::ExteriorRing)
        .def_property_readonly("NumInteriorRings", &IPolygon::NumInteriorRings)
        .def("InteriorRing", &IPolygon::InteriorRing, py::arg("index"));

    py::class_<IGeometryCollection, IGeometry, std::shared_ptr<IGeometryCollection>>(
        m, "IGeometryCollection", py::multiple_inheritance())
        .def_property_readonly("NumGeometries", &IGeometryCollection::NumGeometries)
        .def(
            "Geometry",
            [](const IGeometryCollection& o, std::int32_t lIndex) {
                return GeometryToPython(o.Geometry(lIndex));
            },
            py::arg("index"))
        .def("__len__", &IGeometryCollection::NumGeometries)
        .def("__getitem__", [](const IGeometryCollection& o, std::int32_t lIndex) {
            if (lIndex < 0 || lIndex >= o.NumGeometries()) throw py::index_error();
            return GeometryToPython(o.Geometry(lIndex));
        });
    py::class_<IMultiPoint, IGeometryCollection, std::shared_ptr<IMultiPoint>>(
        m, "IMultiPoint", py::multiple_inheritance());
    py::class_<IMultiLineString, IGeometryCollection, std::shared_ptr<IMultiLineString>>(
        m, "IMultiLineString", py::multiple_inheritance());
    py::class_<IMultiPolygon, IGeometryCollection, std::shared_ptr<IMultiPolygon>>(
        m, "IMultiPolygon", py::multiple_inheritance());

    // The stand-in geometry, made from vertices given as points or (x, y) pairs.
    m.def("Point", [](double dX, double dY) -> std::shared_ptr<IPoint> {
        return standins::Point::Create(dX, dY);
    });
    m.def("LineString", &MakeLine, py::arg("points"));
    m.def(
        "Polygon",
        [](py::handle oExterior, py::handle oHoles) {
            py::list oRings;
            oRings.append(oExterior);
            for (py::handle oHole : oHoles)
                oRings.append(oHole);
            return MakePolygon(oRings);
        },
        py::arg("exterior"), py::arg("holes") = py::tuple());
    m.def("MultiPoint", [](py::handle oPoints) -> std::shared_ptr<IMultiPoint> {
        return std::make_shared<standins::MultiPoint>(Members<IPoint>(oPoints, &MakePoint));
    });
    m.def("MultiLineString", [](py::handle oLines) -> std::shared_ptr<IMultiLineString> {
        return std::make_shared<standins::MultiLineString>(Members<ILineString>(oLines, &MakeLine));
    });
    m.def(
        "MultiPolygon",
        [](py::handle oPolygons) -> std::shared_ptr<IMultiPolygon> {
            return std::make_shared<standins::MultiPolygon>(
                Members<IPolygon>(oPolygons, &MakePolygon));
        },
        "Polygons as polygon objects or as lists of rings, the exterior first.");
    m.def("GeometryCollection", [](py::handle oGeometries) -> py::object {
        return GeometryToPython(std::make_shared<standins::GeometryCollection>(
            Members<IGeometry>(oGeometries, &GeometryFromPython)));
    });
    m.def(
        "ParseWKT",
        [](const std::string& sText) { return GeometryToPython(standins::ParseWKT(sText)); },
        py::arg("text"), "The geometry that well-known text describes; tnw.Error 13 if none.");
}

}  // namespace tnw::python
