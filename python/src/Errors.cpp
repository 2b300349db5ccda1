// Failures. An operation with a handler reports to the error handler and gives its failure
// result, as in C++; the reports are readable here. An error that reaches the caller is raised
// as tnw.Error with the number, source and description.
#include "Bindings.h"
#include "core/Error.h"
#include "log/ErrorReports.h"

namespace tnw::python {

void BindErrors(py::module_& m) {
    static py::exception<Error> oError(m, "Error");
    py::register_exception_translator([](std::exception_ptr pException) {
        try {
            if (pException) std::rethrow_exception(pException);
        } catch (const Error& e) {
            const py::object oInstance = py::handle(oError.ptr())(e.sDescription);
            oInstance.attr("number") = e.lNumber;
            oInstance.attr("source") = e.sSource;
            oInstance.attr("description") = e.sDescription;
            PyErr_SetObject(oError.ptr(), oInstance.ptr());
        }
    });

    using standins::ErrorReport;
    py::class_<ErrorReport>(m, "ErrorReport")
        .def_readonly("application", &ErrorReport::sApplication)
        .def_readonly("version", &ErrorReport::sVersion)
        .def_readonly("source", &ErrorReport::sSource)
        .def_readonly("number", &ErrorReport::lNumber)
        .def_readonly("error_source", &ErrorReport::sErrSource)
        .def_readonly("description", &ErrorReport::sDescription)
        .def_readonly("more_info", &ErrorReport::sMoreInfo)
        .def("__repr__", [](const ErrorReport& t) {
            return "<ErrorReport " + t.sSource + ": " + std::to_string(t.lNumber) + " " +
                   t.sDescription + ">";
        });
    m.def("error_reports", &standins::ErrorReports,
          "The reports the error handler has received, oldest first.");
    m.def("clear_error_reports", &standins::ClearErrorReports);
}

}  // namespace tnw::python
