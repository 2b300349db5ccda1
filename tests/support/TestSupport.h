// Helpers shared by the tests: a temporary folder, captured message boxes, captured error
// reports with a chosen debug mode, and file reading.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/Component.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "platform/Hooks.h"

namespace tnw::test {

// A fresh folder, removed with everything in it at the end of the test.
class TempDir {
public:
    TempDir();
    ~TempDir();
    std::string Path(const std::string& sName) const { return (m_path / sName).string(); }
    const std::filesystem::path& Root() const { return m_path; }

private:
    std::filesystem::path m_path;
};

std::string ReadFile(const std::string& sPath);
void WriteFile(const std::string& sPath, const std::string& sBytes);

// The error number an operation raises; 0 when it raises none.
template <class Fn>
std::int32_t ErrorNumberOf(Fn&& fn) {
    try {
        fn();
    } catch (const Error& e) {
        return e.lNumber;
    }
    return 0;
}

// Runs a shell command; gives its exit status and what it printed (stdout and stderr).
struct CommandResult {
    int iStatus = -1;
    std::string sOutput;
};
CommandResult RunCommand(const std::string& sCommand);

// The strict shapefile checker on base paths (it runs on the system Python); extra options go
// before the paths.
CommandResult CheckShapeSets(const std::vector<std::string>& vBases,
                             const std::string& sOptions = "");
CommandResult CheckShapeSet(const std::string& sBase, const std::string& sOptions = "");

// A new column list from "tnwGIS.tnwColumns" (the stand-ins registered, as ScopedCapture
// does), and a column added as hosts add them: empty
// texts, kind 1.
std::shared_ptr<tnwColumns> NewColumns();
std::shared_ptr<tnwColumn> AddColumn(tnwColumns& oColumns, const std::string& sKey,
                                     std::int32_t lType, std::int16_t iSize,
                                     std::int16_t iPrecision = 0, bool bVisible = true,
                                     const std::string& sName = "");

struct CapturedBox {
    std::string sText;
    std::string sTitle;
    platform::MsgIcon eIcon;
};

struct CapturedReport {
    std::string sApplication, sVersion, sSource;
    std::int32_t lNumber;
    std::string sErrSource, sDescription, sMoreInfo;
};

// While alive: message boxes are recorded instead of shown, error reports reach a recording
// handler under "tnwLog.tnwHandler", settings come from an in-memory store (ConDebug per user
// as given, -99 meaning unset), and the application is "tnwtest" 1.2.3. The stand-ins are
// registered.
class ScopedCapture {
public:
    explicit ScopedCapture(std::int32_t lUserDebug = 0, std::int32_t lMachineDebug = 0);
    ~ScopedCapture();

    std::vector<CapturedBox> vBoxes;
    std::vector<CapturedReport> vReports;
    // Events in order: "report" or "box".
    std::vector<std::string> vEvents;
    // Settings of the in-memory store, changeable during a test.
    std::map<std::string, Variant> mUser;     // key "Tarnwick/Common/ConDebug"
    std::map<std::string, Variant> mMachine;  // key "Software\\Tarnwick\\Common/ConDebug"

private:
    platform::MessageBoxHook m_fnOldBox;
    std::shared_ptr<platform::ISettings> m_oOldSettings;
    platform::AppInfoHook m_fnOldApp;
    ComponentCreator m_fnOldHandler;
};

}  // namespace tnw::test
