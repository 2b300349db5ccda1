#include "support/mLog.h"

#include <cstdio>

#include "core/Component.h"
#include "core/GISLib.h"
#include "core/Services.h"
#include "platform/Hooks.h"

namespace tnw::mLog {

namespace {

constexpr const char* kRegistryKey = "Software\\Tarnwick\\Common";
constexpr std::size_t kMoreInfoLimit = 750;

std::string NumberForBox(std::int32_t lNumber) {
    char aText[16];
    if (lNumber < 0) {
        std::snprintf(aText, sizeof aText, "%X", static_cast<std::uint32_t>(lNumber));
    } else {
        std::snprintf(aText, sizeof aText, "%d", lNumber);
    }
    return aText;
}

}  // namespace

std::int32_t DebugMode() {
    auto oSettings = platform::Settings();
    std::int32_t lMode =
        oSettings->GetSetting("Tarnwick", "Common", "ConDebug", Variant(std::int32_t{-99}))
            .ToLong();
    if (lMode == -99) {
        lMode = oSettings
                    ->ReadValue(platform::HKEY_LOCAL_MACHINE, kRegistryKey, "ConDebug",
                                Variant(std::int32_t{0}))
                    .ToLong();
    }
    return lMode;
}

void AddToErrorLog(const std::string& sSource, std::int32_t lNumber, const std::string& sErrSource,
                   const std::string& sDescription, const std::string& sMoreInfo,
                   std::int32_t lDisplay) {
    if (lDisplay < 0) lDisplay = DebugMode();

    const platform::AppInfo tApp = platform::ApplicationInfo();
    const std::string sLogger =
        platform::Settings()
            ->ReadValue(platform::HKEY_LOCAL_MACHINE, kRegistryKey, "ErrorLogger",
                        Variant(std::string(kProgIdErrorHandler)))
            .ToText();
    if (auto oComponent = tnwObjectFactory::CreateComponent(sLogger, "")) {
        auto oHandler = std::dynamic_pointer_cast<ItnwErrorHandler>(oComponent);
        if (!oHandler) Raise(errNoSuchMethod, "mLog.AddToErrorLog");
        const std::string sVersion = std::to_string(tApp.lMajor) + "." +
                                     std::to_string(tApp.lMinor) + "." +
                                     std::to_string(tApp.lRevision);
        oHandler->errorMessage(tApp.sName, sVersion, sSource, lNumber, sErrSource, sDescription,
                               sMoreInfo);
    }

    if (lDisplay == 0) return;
    std::string sText = "Error:  " + NumberForBox(lNumber) + "\r\n";
    sText += "Source: " + sSource + "::" + sErrSource + ".\r\n";
    sText += "Description: " + sDescription;
    if (!sMoreInfo.empty()) {
        sText += "\r\n\r\nMore Info: ";
        // The limit counts characters: find the byte where the 751st one starts.
        std::size_t nCut = 0;
        std::size_t nChars = 0;
        while (nCut < sMoreInfo.size() && nChars < kMoreInfoLimit) {
            ++nCut;
            while (nCut < sMoreInfo.size() &&
                   (static_cast<unsigned char>(sMoreInfo[nCut]) & 0xC0) == 0x80)
                ++nCut;
            ++nChars;
        }
        sText += sMoreInfo.substr(0, nCut);
        if (nCut < sMoreInfo.size()) sText += " ...more... ";
    }
    platform::ShowMessageBox(sText, "Debug Mode Error Handler (" + tApp.sName + ")",
                             platform::MsgIcon::Exclamation);
}

void ErrorLog(const std::string& sSource, const Error& oError, const std::string& sMoreInfo,
              bool bRaise) {
    AddToErrorLog(sSource, oError.lNumber, oError.sSource, oError.sDescription, sMoreInfo, -1);
    if (DebugMode() == 2) return;
    std::string sExtended = sSource;
    if (!oError.sSource.empty()) sExtended += "::" + oError.sSource;
    constexpr std::string_view kTerminate = ".Class_Terminate";
    const bool bTerminate =
        sExtended.size() >= kTerminate.size() &&
        sExtended.compare(sExtended.size() - kTerminate.size(), kTerminate.size(), kTerminate) == 0;
    if (bRaise && !bTerminate) throw Error(oError.lNumber, sExtended, oError.sDescription);
}

}  // namespace tnw::mLog
