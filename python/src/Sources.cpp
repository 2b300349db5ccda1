// Record sources: any Python iterable of (values, geometry) as a tnwRecordSource, decoders seen
// as record sources, walks over decoders, and the batch read of whole columns.
#include <pybind11/numpy.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <vector>

#include "Bindings.h"
#include "core/Error.h"
#include "ogc_sf/WKT.h"

namespace tnw::python {
namespace {

// Rows from Python: each a pair of values (a sequence by the columns' Position, or a mapping by
// key) and a geometry (any form GeometryFromPython takes). MoveFirst starts a new iteration of
// the rows, so a list can be walked again and a generator once.
class IterableRecordSource final : public tnwRecordSource {
public:
    IterableRecordSource(std::shared_ptr<tnwColumns> oColumns, py::object oRows,
                         std::int32_t eGeometryType, std::int32_t lRecordCount)
        : m_oColumns(std::move(oColumns)),
          m_oRows(std::move(oRows)),
          m_eGeometryType(eGeometryType),
          m_lRecordCount(lRecordCount) {
        if (!m_oColumns) throw py::value_error("a record source needs columns");
        if (m_lRecordCount < 0 && py::hasattr(m_oRows, "__len__"))
            m_lRecordCount = static_cast<std::int32_t>(py::len(m_oRows));
    }

    void MoveFirst() override {
        m_oIterator = py::iter(m_oRows);
        m_bEof = false;
        Advance();
    }
    void MoveNext() override {
        if (!m_bEof) Advance();
    }
    bool Eof() const override { return m_bEof; }
    // The count given, else the length of a sized iterable, else 0.
    std::int32_t RecordCount() const override { return std::max(m_lRecordCount, 0); }
    // The type given, else the kind of the first row's geometry of a sequence of rows.
    std::int32_t GeometryType() const override {
        if (m_eGeometryType != 0 || !py::isinstance<py::sequence>(m_oRows) || py::len(m_oRows) == 0)
            return m_eGeometryType;
        const auto oGeometry = GeometryFromPython(RowPair(m_oRows[py::int_(0)]).second);
        return oGeometry ? tnwDecoderRecordSource::GeometryTypeOf(oGeometry->GeometryType()) : 0;
    }
    std::shared_ptr<IGeometry> Geometry() const override { return m_oGeometry; }
    std::shared_ptr<tnwColumns> Columns() const override { return m_oColumns; }

private:
    static std::pair<py::object, py::object> RowPair(py::handle oRow) {
        if (PyTuple_Check(oRow.ptr()) && PyTuple_GET_SIZE(oRow.ptr()) == 2) {
            return {py::reinterpret_borrow<py::object>(PyTuple_GET_ITEM(oRow.ptr(), 0)),
                    py::reinterpret_borrow<py::object>(PyTuple_GET_ITEM(oRow.ptr(), 1))};
        }
        const auto oPair = oRow.cast<py::sequence>();
        if (py::len(oPair) != 2) throw py::value_error("a row is a pair (values, geometry)");
        return {oPair[0], oPair[1]};
    }

    void Advance() {
        PyObject* pRow = PyIter_Next(m_oIterator.ptr());
        if (!pRow) {
            if (PyErr_Occurred()) throw py::error_already_set();
            m_bEof = true;
            m_oGeometry = nullptr;
            return;
        }
        const auto oRow = py::reinterpret_steal<py::object>(pRow);
        const auto [oValues, oGeometry] = RowPair(oRow);
        SetValues(*m_oColumns, oValues);
        m_oGeometry = GeometryFromPython(oGeometry);
    }

    std::shared_ptr<tnwColumns> m_oColumns;
    py::object m_oRows;
    py::object m_oIterator;
    std::int32_t m_eGeometryType;
    std::int32_t m_lRecordCount;
    bool m_bEof = true;
    std::shared_ptr<IGeometry> m_oGeometry;
};

// One column's values gathered over a walk. Numbers go to a double array (NaN for an empty or
// unreadable value) and become whole numbers at the end when the column's type is and every
// value was there; booleans to a byte array; anything else to a list of Python values.
class ColumnReader {
public:
    ColumnReader(std::shared_ptr<tnwColumn> oColumn, bool bNumpy)
        : m_oColumn(std::move(oColumn)), m_bNumpy(bNumpy) {
        const std::int32_t lType = m_oColumn->Type();
        m_eKind = lType == vtBoolean                      ? Kind::Boolean
                  : lType == vtInt16 || lType == vtInt32  ? Kind::Whole
                  : lType == vtFloat || lType == vtDouble ? Kind::Real
                                                          : Kind::Other;
    }

    void Read() {
        const Variant& vValue = m_oColumn->Value();
        switch (m_eKind) {
            case Kind::Boolean:
                m_aBytes.push_back(vValue.IsEmpty() ? 0 : vValue.ToBool());
                break;
            case Kind::Whole:
            case Kind::Real:
                m_aNumbers.push_back(Number(vValue));
                break;
            case Kind::Other:
                m_oList.append(py::cast(vValue));
                break;
        }
    }

    py::object Result() const {
        switch (m_eKind) {
            case Kind::Boolean:
                return m_bNumpy ? py::object(Array<bool>(m_aBytes))
                                : List(m_aBytes, [](unsigned char b) { return py::bool_(b != 0); });
            case Kind::Whole:
                if (m_bComplete) {
                    return m_bNumpy ? py::object(Array<std::int64_t>(m_aNumbers))
                                    : List(m_aNumbers, [](double d) {
                                          return py::int_(static_cast<std::int64_t>(d));
                                      });
                }
                [[fallthrough]];
            case Kind::Real:
                return m_bNumpy ? py::object(Array<double>(m_aNumbers))
                                : List(m_aNumbers, [](double d) {
                                      return std::isnan(d) ? py::object(py::none())
                                                           : py::object(py::float_(d));
                                  });
            case Kind::Other:
                break;
        }
        return m_oList;
    }

private:
    enum class Kind { Boolean, Whole, Real, Other };

    double Number(const Variant& vValue) {
        if (vValue.IsNumeric()) return vValue.ToDouble();
        m_bComplete = false;
        if (vValue.IsEmpty()) return std::numeric_limits<double>::quiet_NaN();
        try {
            return vValue.ToDouble();
        } catch (const Error&) {
            return std::numeric_limits<double>::quiet_NaN();
        }
    }

    template <class T, class Make>
    static py::list List(const std::deque<T>& aValues, Make&& fnMake) {
        py::list oList(aValues.size());
        std::size_t i = 0;
        for (const T& tValue : aValues)
            oList[i++] = fnMake(tValue);
        return oList;
    }

    template <class T, class Source>
    static py::array_t<T> Array(const std::deque<Source>& aValues) {
        py::array_t<T> oArray(static_cast<py::ssize_t>(aValues.size()));
        std::copy(aValues.begin(), aValues.end(), oArray.mutable_data());
        return oArray;
    }

    std::shared_ptr<tnwColumn> m_oColumn;
    bool m_bNumpy;
    Kind m_eKind;
    bool m_bComplete = true;
    // In blocks rather than one growing array: a large array copied and faulted in again at
    // every doubling cost more than the reading itself.
    std::deque<double> m_aNumbers;
    std::deque<unsigned char> m_aBytes;
    py::list m_oList;
};

std::shared_ptr<IGeometry> ParseWKT(std::string_view sText) {
    return standins::ParseWKT(sText);
}

// A dBase reader assigns a logical field only when it is true, leaving the value of the record
// before on a false one; in Python a record's values are that record's, so the walks set every
// logical column to false before each move.
void ClearLogicals(const tnwColumns& oColumns) {
    for (const auto& oColumn : oColumns.Items()) {
        if (oColumn->Type() == vtBoolean) oColumn->SetValue(false);
    }
}

}  // namespace

template <class Decoder>
std::shared_ptr<tnwDecoderRecordSource> SourceOf(std::shared_ptr<Decoder> oDecoder) {
    return std::make_shared<tnwDecoderRecordSource>(std::move(oDecoder), &ParseWKT);
}
template std::shared_ptr<tnwDecoderRecordSource> SourceOf(std::shared_ptr<tnwASCIIDecoder>);
template std::shared_ptr<tnwDecoderRecordSource> SourceOf(std::shared_ptr<tnwDBFDecoder>);
template std::shared_ptr<tnwDecoderRecordSource> SourceOf(std::shared_ptr<tnwFGPDecoder>);

py::object RecordIterator::Next() {
    ClearLogicals(*m_oSource->Columns());
    if (!m_bStarted) {
        m_bStarted = true;
        m_oSource->MoveFirst();
    } else {
        m_oSource->MoveNext();
    }
    if (m_oSource->Eof()) throw py::stop_iteration();
    const auto oColumns = m_oSource->Columns();
    if (m_eForm == Form::Tuple) return ValuesTuple(*oColumns);
    if (m_eForm == Form::Pair)
        return py::make_tuple(ValuesTuple(*oColumns), GeometryToPython(m_oSource->Geometry()));
    py::dict oRecord;
    for (const auto& oColumn : oColumns->Items())
        oRecord[py::str(oColumn->Key())] = py::cast(oColumn->Value());
    return oRecord;
}

py::dict ReadColumns(tnwRecordSource& oSource, bool bNumpy) {
    const auto oColumns = oSource.Columns();
    std::vector<ColumnReader> aReaders;
    for (const auto& oColumn : oColumns->Items())
        aReaders.emplace_back(oColumn, bNumpy);
    ClearLogicals(*oColumns);
    for (oSource.MoveFirst(); !oSource.Eof(); oSource.MoveNext()) {
        for (ColumnReader& oReader : aReaders)
            oReader.Read();
        ClearLogicals(*oColumns);
    }
    py::dict oResult;
    for (std::size_t i = 0; i < aReaders.size(); ++i)
        oResult[py::str(oColumns->Items()[i]->Key())] = aReaders[i].Result();
    return oResult;
}

void BindSources(py::module_& m) {
    py::class_<tnwRecordSource, std::shared_ptr<tnwRecordSource>>(m, "tnwRecordSource")
        .def(py::init([](std::shared_ptr<tnwColumns> oColumns, py::object oRows,
                         std::int32_t eGeometryType,
                         std::int32_t lRecordCount) -> std::shared_ptr<tnwRecordSource> {
                 return std::make_shared<IterableRecordSource>(
                     std::move(oColumns), std::move(oRows), eGeometryType, lRecordCount);
             }),
             py::arg("columns"), py::arg("rows"), py::arg("geometry_type") = 0,
             py::arg("record_count") = -1,
             "Rows of (values, geometry) from any iterable. The values are a sequence (by the "
             "columns' Position) or a mapping (by key); the geometry a geometry object, "
             "well-known text, an (x, y) pair or None.")
        .def("MoveFirst", &tnwRecordSource::MoveFirst)
        .def("MoveNext", &tnwRecordSource::MoveNext)
        .def_property_readonly("Eof", &tnwRecordSource::Eof)
        .def_property_readonly("EOF", &tnwRecordSource::Eof)
        .def_property_readonly("RecordCount", &tnwRecordSource::RecordCount)
        .def_property_readonly("GeometryType", &tnwRecordSource::GeometryType)
        .def_property_readonly(
            "Geometry", [](const tnwRecordSource& o) { return GeometryToPython(o.Geometry()); })
        .def_property_readonly("Columns", &tnwRecordSource::Columns)
        .def(
            "__iter__",
            [](std::shared_ptr<tnwRecordSource> o) {
                return RecordIterator(std::move(o), RecordIterator::Form::Pair);
            },
            "The records as pairs (values tuple, geometry): the form the constructor takes.")
        .def(
            "read_columns",
            [](tnwRecordSource& o, py::object oNumpy) {
                return ReadColumns(o, oNumpy.is_none() ? NumpyAvailable() : oNumpy.cast<bool>());
            },
            py::arg("numpy") = py::none());

    py::class_<tnwDecoderRecordSource, tnwRecordSource, std::shared_ptr<tnwDecoderRecordSource>>(
        m, "tnwDecoderRecordSource", py::multiple_inheritance())
        .def(py::init(&SourceOf<tnwASCIIDecoder>), py::arg("decoder"))
        .def(py::init(&SourceOf<tnwDBFDecoder>), py::arg("decoder"))
        .def(py::init(&SourceOf<tnwFGPDecoder>), py::arg("decoder"))
        .def_property("GeometryType", &tnwDecoderRecordSource::GeometryType,
                      &tnwDecoderRecordSource::SetGeometryType)
        .def_property(
            "Callback",
            [](const tnwDecoderRecordSource& o) { return CallbackTarget(o.Callback()); },
            [](tnwDecoderRecordSource& o, py::object oTarget) {
                o.SetCallback(MakeCallback(std::move(oTarget)));
            })
        .def_property_readonly("RecordsRead", &tnwDecoderRecordSource::RecordsRead)
        .def_property_readonly("RowsSkipped", &tnwDecoderRecordSource::RowsSkipped);

    py::class_<RecordIterator>(m, "RecordIterator")
        .def("__iter__", [](py::object o) { return o; })
        .def("__next__", &RecordIterator::Next);
}

}  // namespace tnw::python
