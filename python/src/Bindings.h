// Shared parts of the Python module: the conversion of tagged values, geometry in and out, and
// the bind functions of each area. A class is bound in the area's file; what the encoders and
// the decoders share (context managers, iteration, batch reads) is added by the templates at the
// end, so a further encoder or decoder is a few lines.
#pragma once

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <string>

#include "bridge/tnwDecoderRecordSource.h"
#include "core/GISLib.h"
#include "core/Variant.h"

namespace py = pybind11;

namespace tnw::python {

// A serial date as a datetime.datetime, and the serial of a datetime.date or datetime.datetime.
py::object DateToPython(SerialDate tDate);
bool DateFromPython(py::handle oValue, SerialDate& tDate);

// The most specific geometry interface of oGeometry (IPoint, IPolygon...), or None.
py::object GeometryToPython(const std::shared_ptr<IGeometry>& oGeometry);
// A geometry from None, a geometry object, well-known text or an (x, y) pair. Error 13 for
// anything else.
std::shared_ptr<IGeometry> GeometryFromPython(py::handle oValue);

// The values of a record as a tuple, in column order.
py::tuple ValuesTuple(const tnwColumns& oColumns);

void BindErrors(py::module_& m);
void BindGeometry(py::module_& m);
void BindColumns(py::module_& m);
void BindSources(py::module_& m);
void BindEncoders(py::module_& m);
void BindDecoders(py::module_& m);
void BindINI(py::module_& m);
void BindSummary(py::module_& m);

// Whatever a Python object with some of the callback's methods (SetBarCount, SetBarText,
// SetBarRange, SetBarValue, ClearBarText, ResetBar) or a plain callable (called as
// fn(bar, value) for SetBarValue) wants to hear of the progress. Missing methods are skipped.
std::shared_ptr<tnwGISCallback> MakeCallback(py::object oTarget);
// The Python object that MakeCallback wrapped; None for nothing.
py::object CallbackTarget(const std::shared_ptr<tnwGISCallback>& oCallback);

// Sets each column's value from a sequence (by the column's 1-based Position; empty past its
// end) or a mapping (by key; empty when missing).
void SetValues(const tnwColumns& oColumns, py::handle oValues);

// Whether numpy can be imported.
bool NumpyAvailable();

// Every column's values of the whole walk of oSource: numbers as numpy arrays (with bNumpy) or
// lists, the rest as lists; a dict by column key in column order.
py::dict ReadColumns(tnwRecordSource& oSource, bool bNumpy);

// The record source that walks a decoder, with geometry from the stand-ins' WKT reader.
template <class Decoder>
std::shared_ptr<tnwDecoderRecordSource> SourceOf(std::shared_ptr<Decoder> oDecoder);

// A walk over a record source: each step a record as a dict by column key, a tuple of values,
// or a pair (values tuple, geometry).
class RecordIterator {
public:
    enum class Form { Dict, Tuple, Pair };
    RecordIterator(std::shared_ptr<tnwRecordSource> oSource, Form eForm)
        : m_oSource(std::move(oSource)), m_eForm(eForm) {}
    py::object Next();

private:
    std::shared_ptr<tnwRecordSource> m_oSource;
    Form m_eForm;
    bool m_bStarted = false;
};

// What every decoder adds for Python: iteration (dicts), rows() (tuples), RecordSource(),
// read_columns() and a context manager that closes the file.
template <class Decoder, class... Options>
void AddDecoderProtocol(py::class_<Decoder, Options...>& c) {
    c.def("__iter__",
          [](std::shared_ptr<Decoder> o) {
              return RecordIterator(SourceOf(std::move(o)), RecordIterator::Form::Dict);
          })
        .def(
            "rows",
            [](std::shared_ptr<Decoder> o) {
                return RecordIterator(SourceOf(std::move(o)), RecordIterator::Form::Tuple);
            },
            "The records as tuples of values, in column order.")
        .def("RecordSource", &SourceOf<Decoder>, "The decoder seen as a tnwRecordSource.")
        .def(
            "read_columns",
            [](std::shared_ptr<Decoder> o, py::object oNumpy) {
                const bool bNumpy = oNumpy.is_none() ? NumpyAvailable() : oNumpy.cast<bool>();
                return ReadColumns(*SourceOf(std::move(o)), bNumpy);
            },
            py::arg("numpy") = py::none(),
            "Every record at once: a dict of column key to a list, or a numpy array for "
            "numbers.")
        .def("__enter__", [](py::object o) { return o; })
        .def("__exit__", [](Decoder& o, py::args) { o.CloseFile(); });
}

// What every encoder adds for Python: SetGeometry from any geometry form, write() for one
// record, and a context manager that calls CloseFiles.
template <class Encoder, class... Options>
void AddEncoderProtocol(py::class_<Encoder, Options...>& c) {
    c.def("SetGeometry",
          [](Encoder& o, py::handle oGeometry) { o.SetGeometry(GeometryFromPython(oGeometry)); })
        .def_property_readonly("Columns", &Encoder::Columns)
        .def_property_readonly("Filename", &Encoder::Filename)
        .def("ChangeColumns", &Encoder::ChangeColumns)
        .def(
            "write",
            [](Encoder& o, py::handle oValues, py::handle oGeometry) {
                const auto oColumns = o.Columns();
                if (!oColumns) throw py::value_error("the encoder has no columns");
                SetValues(*oColumns, oValues);
                o.SetGeometry(GeometryFromPython(oGeometry));
                return o.Update();
            },
            py::arg("values"), py::arg("geometry") = py::none(),
            "Sets the columns' values (a sequence by Position or a mapping by key), the "
            "geometry, and calls Update.")
        .def("__enter__", [](py::object o) { return o; })
        .def("__exit__", [](Encoder& o, py::args) { o.CloseFiles(); });
}

}  // namespace tnw::python

namespace pybind11::detail {

// A tagged value is None (empty or absent), bool, int, float, str or datetime.
template <>
struct type_caster<tnw::Variant> {
    PYBIND11_TYPE_CASTER(tnw::Variant, const_name("Value"));

    bool load(handle oSource, bool);
    static handle cast(const tnw::Variant& vValue, return_value_policy, handle);
};

}  // namespace pybind11::detail
