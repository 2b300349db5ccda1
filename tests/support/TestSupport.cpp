#include "support/TestSupport.h"

#include <sys/wait.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

#include "RegisterStandIns.h"
#include "core/GISLib.h"
#include "core/Services.h"

namespace tnw::test {

TempDir::TempDir() {
    static std::atomic<int> nCounter{0};
    std::random_device rd;
    m_path = std::filesystem::temp_directory_path() /
             ("tnwtest_" + std::to_string(rd()) + "_" + std::to_string(nCounter++));
    std::filesystem::create_directories(m_path);
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
}

std::string ReadFile(const std::string& sPath) {
    std::ifstream in(sPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFile(const std::string& sPath, const std::string& sBytes) {
    std::ofstream out(sPath, std::ios::binary | std::ios::trunc);
    out << sBytes;
}

CommandResult RunCommand(const std::string& sCommand) {
    CommandResult tResult;
    FILE* pPipe = ::popen((sCommand + " 2>&1").c_str(), "r");
    if (!pPipe) return tResult;
    char aBuffer[4096];
    std::size_t n;
    while ((n = std::fread(aBuffer, 1, sizeof aBuffer, pPipe)) > 0)
        tResult.sOutput.append(aBuffer, n);
    const int iStatus = ::pclose(pPipe);
    tResult.iStatus = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
    return tResult;
}

CommandResult CheckShapeSets(const std::vector<std::string>& vBases, const std::string& sOptions) {
    std::string sCommand = TNW_CHECK_SHAPESET " --quiet " + sOptions;
    for (const std::string& sBase : vBases)
        sCommand += " '" + sBase + "'";
    return RunCommand(sCommand);
}

CommandResult CheckShapeSet(const std::string& sBase, const std::string& sOptions) {
    return CheckShapeSets({sBase}, sOptions);
}

std::shared_ptr<tnwColumns> NewColumns() {
    return CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
}

std::shared_ptr<tnwColumn> AddColumn(tnwColumns& oColumns, const std::string& sKey,
                                     std::int32_t lType, std::int16_t iSize,
                                     std::int16_t iPrecision, bool bVisible,
                                     const std::string& sName) {
    return oColumns.Add(sKey, sName, "", lType, iSize, iPrecision, 0, 1, 0, "", bVisible, true);
}

namespace {

class MemorySettings final : public platform::ISettings {
public:
    explicit MemorySettings(ScopedCapture& oOwner) : m_oOwner(oOwner) {}
    Variant GetSetting(const std::string& sApplication, const std::string& sSection,
                       const std::string& sKey, const Variant& vDefault) override {
        auto it = m_oOwner.mUser.find(sApplication + "/" + sSection + "/" + sKey);
        return it == m_oOwner.mUser.end() ? vDefault : it->second;
    }
    Variant ReadValue(std::int32_t, const std::string& sKey, const std::string& sValueName,
                      const Variant& vDefault) override {
        auto it = m_oOwner.mMachine.find(sKey + "/" + sValueName);
        return it == m_oOwner.mMachine.end() ? vDefault : it->second;
    }

private:
    ScopedCapture& m_oOwner;
};

class RecordingHandler final : public ItnwErrorHandler {
public:
    explicit RecordingHandler(ScopedCapture& oOwner) : m_oOwner(oOwner) {}
    void errorMessage(const std::string& sApplication, const std::string& sVersion,
                      const std::string& sSource, std::int32_t lNumber,
                      const std::string& sErrSource, const std::string& sDescription,
                      const std::string& sMoreInfo) override {
        m_oOwner.vReports.push_back(
            {sApplication, sVersion, sSource, lNumber, sErrSource, sDescription, sMoreInfo});
        m_oOwner.vEvents.push_back("report");
    }

private:
    ScopedCapture& m_oOwner;
};

}  // namespace

ScopedCapture::ScopedCapture(std::int32_t lUserDebug, std::int32_t lMachineDebug) {
    standins::RegisterStandIns();
    mUser["Tarnwick/Common/ConDebug"] = Variant(lUserDebug);
    mMachine["Software\\Tarnwick\\Common/ConDebug"] = Variant(lMachineDebug);
    m_fnOldBox = platform::SetMessageBoxHook(
        [this](const std::string& sText, const std::string& sTitle, platform::MsgIcon eIcon) {
            vBoxes.push_back({sText, sTitle, eIcon});
            vEvents.push_back("box");
        });
    m_oOldSettings = platform::SetSettings(std::make_shared<MemorySettings>(*this));
    m_fnOldApp = platform::SetAppInfoHook([] { return platform::AppInfo{"tnwtest", 1, 2, 3}; });
    m_fnOldHandler = tnwObjectFactory::Register(
        kProgIdErrorHandler, [this] { return std::make_shared<RecordingHandler>(*this); });
}

ScopedCapture::~ScopedCapture() {
    platform::SetMessageBoxHook(m_fnOldBox);
    platform::SetSettings(m_oOldSettings);
    platform::SetAppInfoHook(m_fnOldApp);
    tnwObjectFactory::Register(kProgIdErrorHandler, m_fnOldHandler);
}

}  // namespace tnw::test
