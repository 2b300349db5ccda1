#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>

#include "log/ErrorReports.h"

namespace tnw::standins {

namespace {

struct ReportStore {
    std::mutex mutex;
    std::vector<ErrorReport> aReports;
};

ReportStore& Store() {
    static ReportStore store;
    return store;
}

void AppendField(std::string& sLine, const std::string& sText) {
    sLine += '\t';
    for (char c : sText)
        sLine += (c == '\t' || c == '\r' || c == '\n') ? ' ' : c;
}

std::string ReportNumberText(std::int32_t lNumber) {
    if (lNumber >= 0) return std::to_string(lNumber);
    char aBuffer[16];
    std::snprintf(aBuffer, sizeof aBuffer, "%08X", static_cast<std::uint32_t>(lNumber));
    return aBuffer;
}

std::string LogLine(const ErrorReport& tReport) {
    char aTime[32] = "";
    const std::time_t tNow = std::time(nullptr);
    std::tm tUtc{};
    if (::gmtime_r(&tNow, &tUtc)) std::strftime(aTime, sizeof aTime, "%Y-%m-%dT%H:%M:%SZ", &tUtc);
    std::string sLine = aTime;
    AppendField(sLine, tReport.sApplication + " " + tReport.sVersion);
    AppendField(sLine, tReport.sSource);
    AppendField(sLine, ReportNumberText(tReport.lNumber));
    AppendField(sLine, tReport.sErrSource);
    AppendField(sLine, tReport.sDescription);
    AppendField(sLine, tReport.sMoreInfo);
    sLine += '\n';
    return sLine;
}

// One write to a file opened for appending, so that lines of several processes don't mix.
void AppendToLogFile(const std::string& sLine) {
    const char* sPath = std::getenv("TNW_ERROR_LOG");
    if (!sPath || !*sPath) return;
    const int iFd = ::open(sPath, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (iFd < 0) return;
    [[maybe_unused]] const ssize_t nWritten = ::write(iFd, sLine.data(), sLine.size());
    ::close(iFd);
}

}  // namespace

void ErrorHandler::errorMessage(const std::string& sApplication, const std::string& sVersion,
                                const std::string& sSource, std::int32_t lNumber,
                                const std::string& sErrSource, const std::string& sDescription,
                                const std::string& sMoreInfo) {
    ErrorReport tReport{sApplication, sVersion,     sSource,  lNumber,
                        sErrSource,   sDescription, sMoreInfo};
    AppendToLogFile(LogLine(tReport));
    ReportStore& store = Store();
    std::lock_guard lock(store.mutex);
    store.aReports.push_back(std::move(tReport));
}

std::vector<ErrorReport> ErrorReports() {
    ReportStore& store = Store();
    std::lock_guard lock(store.mutex);
    return store.aReports;
}

void ClearErrorReports() {
    ReportStore& store = Store();
    std::lock_guard lock(store.mutex);
    store.aReports.clear();
}

}  // namespace tnw::standins
