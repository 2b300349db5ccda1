#include "gislib/FileUtility.h"

#include <sys/stat.h>

#include <ctime>

#include "core/Error.h"
#include "core/SerialDate.h"
#include "platform/File.h"

namespace tnw::standins {

namespace {

constexpr std::string_view kSeparators = "/\\";

std::string PlatformPath(std::string_view sPath) {
    std::string s(sPath);
    for (char& c : s)
        if (c == '\\') c = kPathSeparator;
    return s;
}

// The last name of the path: what follows its last separator.
std::string_view LastName(std::string_view sPath) {
    const std::size_t nSeparator = sPath.find_last_of(kSeparators);
    return nSeparator == std::string_view::npos ? sPath : sPath.substr(nSeparator + 1);
}

[[noreturn]] void RaiseNotFound(std::string_view sPath) {
    throw Error(errFileNotFound, "tnwGIS.tnwFileUtility",
                StandardDescription(errFileNotFound) + ": " + std::string(sPath));
}

}  // namespace

bool FileUtility::FileExists(std::string_view sPath) const {
    return platform::FileExists(PlatformPath(sPath));
}

std::int64_t FileUtility::FileLength(std::string_view sPath) const {
    const std::string sFile = PlatformPath(sPath);
    if (!platform::FileExists(sFile)) RaiseNotFound(sPath);
    return platform::FileLength(sFile);
}

SerialDate FileUtility::FileDate(std::string_view sPath) const {
    const std::string sFile = PlatformPath(sPath);
    struct stat st;
    if (::stat(sFile.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) RaiseNotFound(sPath);
    std::tm tLocal{};
    const std::time_t tSeconds = st.st_mtim.tv_sec;
    if (!::localtime_r(&tSeconds, &tLocal)) RaiseNotFound(sPath);
    return FromUnixSeconds(static_cast<double>(tSeconds) + static_cast<double>(tLocal.tm_gmtoff) +
                           static_cast<double>(st.st_mtim.tv_nsec) / 1e9);
}

std::string FileUtility::Extension(std::string_view sPath) const {
    const std::string_view sName = LastName(sPath);
    const std::size_t nDot = sName.rfind('.');
    return nDot == std::string_view::npos ? std::string() : std::string(sName.substr(nDot + 1));
}

std::string FileUtility::BaseName(std::string_view sPath) const {
    const std::string_view sName = LastName(sPath);
    return std::string(sName.substr(0, sName.rfind('.')));
}

std::string FileUtility::Folder(std::string_view sPath) const {
    std::size_t nEnd = sPath.find_last_of(kSeparators);
    if (nEnd == std::string_view::npos) return "";
    while (nEnd > 0 && kSeparators.find(sPath[nEnd - 1]) != std::string_view::npos)
        --nEnd;
    // The root keeps its separator: it is the one folder whose name is the separator itself.
    if (nEnd == 0) return std::string(1, kPathSeparator);
    return PlatformPath(sPath.substr(0, nEnd));
}

void FileUtility::SaveTextFile(std::string_view sText, std::string_view sPath) const {
    platform::OutputFile oFile;
    oFile.Open(PlatformPath(sPath));
    oFile.Write(sText);
    oFile.Close();
}

}  // namespace tnw::standins
