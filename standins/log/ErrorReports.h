// The stand-in error handler, made from "tnwLog.tnwHandler". Every report is kept in a
// process-wide list that a host can read and clear; when the environment variable
// TNW_ERROR_LOG names a file, each report is also appended to it as one line:
//   <UTC time>\t<application> <version>\t<source>\t<number>\t<error source>\t<description>\t<more
//   info>
// with the time as "yyyy-mm-ddThh:mm:ssZ", the number as the error box shows it (negative
// numbers in 8-digit upper-case hexadecimal), and tabs, CR and LF inside texts as blanks.
// A log file that can't be written is passed over silently.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Services.h"

namespace tnw::standins {

struct ErrorReport {
    std::string sApplication;
    std::string sVersion;
    std::string sSource;
    std::int32_t lNumber = 0;
    std::string sErrSource;
    std::string sDescription;
    std::string sMoreInfo;
};

class ErrorHandler final : public ItnwErrorHandler {
public:
    void errorMessage(const std::string& sApplication, const std::string& sVersion,
                      const std::string& sSource, std::int32_t lNumber,
                      const std::string& sErrSource, const std::string& sDescription,
                      const std::string& sMoreInfo) override;
};

// The reports so far, oldest first. Safe to call from any thread.
std::vector<ErrorReport> ErrorReports();
void ClearErrorReports();

}  // namespace tnw::standins
