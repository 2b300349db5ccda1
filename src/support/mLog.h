// The one error path: a failure goes to the outside error handler and, in debug mode, to a
// message box.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "core/Error.h"

namespace tnw::mLog {

// Reports oError under sSource (the "<class>.<operation>" text of the failed operation).
// With bRaise, raises it again as its Part says unless the debug mode is 2.
void ErrorLog(const std::string& sSource, const Error& oError, const std::string& sMoreInfo = "",
              bool bRaise = false);

// The worker: lDisplay below 0 takes the debug mode, 0 shows no box, anything else a box.
void AddToErrorLog(const std::string& sSource, std::int32_t lNumber, const std::string& sErrSource,
                   const std::string& sDescription, const std::string& sMoreInfo,
                   std::int32_t lDisplay);

// The debug mode: ConDebug per user, or per machine when the user's is -99.
std::int32_t DebugMode();

}  // namespace tnw::mLog

namespace tnw {

// Runs an operation with a handler: on any failure the error goes to ErrorLog under sSource
// and Guard gives false; else true. The error path's own failures pass to the caller.
template <class Body>
bool Guard(std::string_view sSource, Body&& body) {
    std::exception_ptr pFailure;
    try {
        std::forward<Body>(body)();
        return true;
    } catch (...) {
        pFailure = std::current_exception();
    }
    mLog::ErrorLog(std::string(sSource), CurrentError(pFailure));
    return false;
}

}  // namespace tnw
