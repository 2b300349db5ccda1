// Tagged values, dates and record values between Python and the library, and the progress
// callback that calls into Python.
#include <climits>
#include <cmath>
#include <cstdint>

#include "Bindings.h"

namespace tnw::python {
namespace {

// Objects of the datetime module, made once and kept for the life of the process (never
// destroyed, so that nothing runs after the interpreter has gone).
struct DateTypes {
    py::object oDate = py::module_::import("datetime").attr("date");
    py::object oDateTime = py::module_::import("datetime").attr("datetime");
    py::object oTimeDelta = py::module_::import("datetime").attr("timedelta");
    py::object oDayZero = oDateTime(1899, 12, 30);
};

const DateTypes& Dates() {
    static const DateTypes* pTypes = new DateTypes();
    return *pTypes;
}

constexpr double kMicrosecondsPerDay = 86400e6;

}  // namespace

// Day 0 is 30 December 1899. Before it the whole days count back and the fraction is still
// the time of day: -1.25 is 29 December 1899, 06:00.
py::object DateToPython(SerialDate tDate) {
    const DateTypes& t = Dates();
    const double dDays = std::trunc(tDate.dSerial);
    const double dMicroseconds = std::round(std::fabs(tDate.dSerial - dDays) * kMicrosecondsPerDay);
    try {
        return t.oDayZero +
               t.oTimeDelta(py::arg("days") = dDays, py::arg("microseconds") = dMicroseconds);
    } catch (py::error_already_set&) {
        return py::float_(tDate.dSerial);  // outside the years datetime can hold
    }
}

bool DateFromPython(py::handle oValue, SerialDate& tDate) {
    const DateTypes& t = Dates();
    if (!py::isinstance(oValue, t.oDate)) return false;
    const py::object oDateTime =
        py::isinstance(oValue, t.oDateTime)
            ? oValue.attr("replace")(py::arg("tzinfo") = py::none())
            : t.oDateTime(oValue.attr("year"), oValue.attr("month"), oValue.attr("day"));
    const py::object oDelta = oDateTime - t.oDayZero;
    const double dDays = oDelta.attr("days").cast<double>();
    const double dFraction =
        (oDelta.attr("seconds").cast<double>() * 1e6 + oDelta.attr("microseconds").cast<double>()) /
        kMicrosecondsPerDay;
    tDate.dSerial = dDays < 0 ? dDays - dFraction : dDays + dFraction;
    return true;
}

void SetValues(const tnwColumns& oColumns, py::handle oValues) {
    if (py::isinstance<py::dict>(oValues) || py::hasattr(oValues, "keys")) {
        const py::object oGet = oValues.attr("get");
        for (const auto& oColumn : oColumns.Items())
            oColumn->SetValue(oGet(oColumn->Key()).cast<Variant>());
        return;
    }
    const py::object oFast = py::reinterpret_steal<py::object>(
        PySequence_Fast(oValues.ptr(), "the values must be a sequence or a mapping"));
    if (!oFast) throw py::error_already_set();
    const Py_ssize_t nValues = PySequence_Fast_GET_SIZE(oFast.ptr());
    PyObject** aItems = PySequence_Fast_ITEMS(oFast.ptr());
    for (const auto& oColumn : oColumns.Items()) {
        const std::int32_t lPosition = oColumn->Position();
        if (lPosition >= 1 && lPosition <= nValues)
            oColumn->SetValue(py::handle(aItems[lPosition - 1]).cast<Variant>());
        else
            oColumn->SetValue(Variant());
    }
}

py::tuple ValuesTuple(const tnwColumns& oColumns) {
    const auto& aItems = oColumns.Items();
    py::tuple oValues(aItems.size());
    for (std::size_t i = 0; i < aItems.size(); ++i)
        oValues[i] = py::cast(aItems[i]->Value());
    return oValues;
}

bool NumpyAvailable() {
    static const bool bAvailable = [] {
        try {
            py::module_::import("numpy");
            return true;
        } catch (py::error_already_set&) {
            return false;
        }
    }();
    return bAvailable;
}

namespace {

class PythonCallback final : public tnwGISCallback {
public:
    explicit PythonCallback(py::object oTarget) : m_oTarget(std::move(oTarget)) {}

    void SetBarCount(std::int32_t lBars) override { Call("SetBarCount", lBars); }
    void SetBarText(std::int32_t lBar, const std::string& sText) override {
        Call("SetBarText", lBar, sText);
    }
    void SetBarRange(std::int32_t lBar, double dMin, double dMax) override {
        Call("SetBarRange", lBar, dMin, dMax);
    }
    void SetBarValue(std::int32_t lBar, double dValue) override {
        if (!Call("SetBarValue", lBar, dValue) && PyCallable_Check(m_oTarget.ptr()))
            m_oTarget(lBar, dValue);
    }
    void ClearBarText(std::int32_t lBar) override { Call("ClearBarText", lBar); }
    void ResetBar(std::int32_t lBar) override { Call("ResetBar", lBar); }

    const py::object& Target() const { return m_oTarget; }

private:
    template <class... Args>
    bool Call(const char* sName, Args&&... aArgs) {
        if (!py::hasattr(m_oTarget, sName)) return false;
        m_oTarget.attr(sName)(std::forward<Args>(aArgs)...);
        return true;
    }

    py::object m_oTarget;
};

}  // namespace

std::shared_ptr<tnwGISCallback> MakeCallback(py::object oTarget) {
    if (oTarget.is_none()) return nullptr;
    return std::make_shared<PythonCallback>(std::move(oTarget));
}

py::object CallbackTarget(const std::shared_ptr<tnwGISCallback>& oCallback) {
    const auto oPython = std::dynamic_pointer_cast<PythonCallback>(oCallback);
    return oPython ? oPython->Target() : py::none();
}

}  // namespace tnw::python

namespace pybind11::detail {

bool type_caster<tnw::Variant>::load(handle oSource, bool) {
    PyObject* p = oSource.ptr();
    if (oSource.is_none()) {
        value = tnw::Variant();
    } else if (PyBool_Check(p)) {
        value = tnw::Variant(p == Py_True);
    } else if (PyFloat_Check(p)) {
        value = tnw::Variant(PyFloat_AS_DOUBLE(p));
    } else if (PyUnicode_Check(p)) {
        Py_ssize_t nSize = 0;
        const char* s = PyUnicode_AsUTF8AndSize(p, &nSize);
        if (!s) throw error_already_set();
        value = tnw::Variant(std::string(s, static_cast<std::size_t>(nSize)));
    } else if (PyIndex_Check(p) && !hasattr(oSource, "dtype")) {
        const object oIndex = reinterpret_steal<object>(PyNumber_Index(p));
        if (!oIndex) throw error_already_set();
        int iOverflow = 0;
        const long long l = PyLong_AsLongLongAndOverflow(oIndex.ptr(), &iOverflow);
        // Whole numbers beyond 32 bits become doubles, as the library's numbers do.
        if (iOverflow == 0 && l >= INT32_MIN && l <= INT32_MAX)
            value = tnw::Variant(static_cast<std::int32_t>(l));
        else
            value = tnw::Variant(oIndex.cast<double>());
    } else if (tnw::SerialDate tDate; tnw::python::DateFromPython(oSource, tDate)) {
        value = tnw::Variant(tDate);
    } else if (hasattr(oSource, "dtype")) {
        // A numpy scalar: by its kind.
        const std::string sKind = oSource.attr("dtype").attr("kind").cast<std::string>();
        if (sKind == "b") {
            value = tnw::Variant(PyObject_IsTrue(p) == 1);
        } else if (sKind == "i" || sKind == "u") {
            return load(reinterpret_steal<object>(PyNumber_Index(p)), true);
        } else if (sKind == "f") {
            value = tnw::Variant(oSource.cast<double>());
        } else {
            return false;
        }
    } else {
        return false;
    }
    return true;
}

handle type_caster<tnw::Variant>::cast(const tnw::Variant& vValue, return_value_policy, handle) {
    switch (vValue.Type()) {
        case tnw::vtInt16:
            return PyLong_FromLong(*vValue.As<std::int16_t>());
        case tnw::vtInt32:
            return PyLong_FromLong(*vValue.As<std::int32_t>());
        case tnw::vtFloat:
            return PyFloat_FromDouble(*vValue.As<float>());
        case tnw::vtDouble:
            return PyFloat_FromDouble(*vValue.As<double>());
        case tnw::vtDate:
            return tnw::python::DateToPython(*vValue.As<tnw::SerialDate>()).release();
        case tnw::vtString: {
            const std::string& s = *vValue.AsString();
            return PyUnicode_DecodeUTF8(s.data(), static_cast<Py_ssize_t>(s.size()), "replace");
        }
        case tnw::vtBoolean:
            return handle(*vValue.As<bool>() ? Py_True : Py_False).inc_ref();
        default:
            return none().release();  // empty or absent
    }
}

}  // namespace pybind11::detail
