#include "platform/Hooks.h"

#include <errno.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <mutex>
#include <utility>

namespace tnw::platform {

namespace {

std::mutex g_mutex;

void DefaultMessageBox(const std::string& sText, const std::string& sTitle, MsgIcon) {
    std::cerr << sTitle << ": " << sText << std::endl;
}

MessageBoxHook& TheMessageBox() {
    static MessageBoxHook fnHook = DefaultMessageBox;
    return fnHook;
}

// Looks up sKey in [sSection] of an INI-style file; nothing when the file or entry is absent.
bool ReadIniValue(const std::string& sPath, const std::string& sSection, const std::string& sKey,
                  std::string& sValue) {
    std::ifstream in(sPath);
    if (!in) return false;
    std::string sLine;
    bool bInSection = false;
    auto trim = [](std::string s) {
        const char* ws = " \t\r\n";
        s.erase(0, s.find_first_not_of(ws));
        s.erase(s.find_last_not_of(ws) + 1);
        return s;
    };
    while (std::getline(in, sLine)) {
        sLine = trim(sLine);
        if (sLine.empty() || sLine[0] == ';' || sLine[0] == '#') continue;
        if (sLine.front() == '[' && sLine.back() == ']') {
            bInSection = trim(sLine.substr(1, sLine.size() - 2)) == sSection;
            continue;
        }
        auto nEq = sLine.find('=');
        if (bInSection && nEq != std::string::npos && trim(sLine.substr(0, nEq)) == sKey) {
            sValue = trim(sLine.substr(nEq + 1));
            return true;
        }
    }
    return false;
}

// A setting's text becomes a whole number when it is one, else stays text.
Variant SettingValue(const std::string& sText) {
    char* pEnd = nullptr;
    errno = 0;
    long l = std::strtol(sText.c_str(), &pEnd, 10);
    if (!sText.empty() && *pEnd == '\0' && errno == 0 && l >= INT32_MIN && l <= INT32_MAX)
        return Variant(static_cast<std::int32_t>(l));
    return Variant(sText);
}

std::string EnvOr(const char* sName, const std::string& sDefault) {
    const char* s = std::getenv(sName);
    return s && *s ? std::string(s) : sDefault;
}

// Per-user settings in $TNW_USER_SETTINGS or ~/.config/tarnwick/settings.ini, section
// "<application>/<section>"; machine-wide values in $TNW_MACHINE_SETTINGS or
// /etc/tarnwick/settings.ini, section named by the key path. TNW_CONDEBUG and TNW_ERRORLOGGER
// override the per-user ConDebug and the machine's ErrorLogger.
class FileSettings final : public ISettings {
public:
    Variant GetSetting(const std::string& sApplication, const std::string& sSection,
                       const std::string& sKey, const Variant& vDefault) override {
        if (sKey == "ConDebug") {
            if (const char* s = std::getenv("TNW_CONDEBUG"); s && *s) return SettingValue(s);
        }
        std::string sHome = EnvOr("XDG_CONFIG_HOME", EnvOr("HOME", ".") + "/.config");
        std::string sPath = EnvOr("TNW_USER_SETTINGS", sHome + "/tarnwick/settings.ini");
        std::string sValue;
        if (!ReadIniValue(sPath, sApplication + "/" + sSection, sKey, sValue)) return vDefault;
        return SettingValue(sValue);
    }

    Variant ReadValue(std::int32_t, const std::string& sKey, const std::string& sValueName,
                      const Variant& vDefault) override {
        if (sValueName == "ErrorLogger") {
            if (const char* s = std::getenv("TNW_ERRORLOGGER"); s && *s) return Variant(s);
        }
        std::string sPath = EnvOr("TNW_MACHINE_SETTINGS", "/etc/tarnwick/settings.ini");
        std::string sValue;
        if (!ReadIniValue(sPath, sKey, sValueName, sValue)) return vDefault;
        return SettingValue(sValue);
    }
};

std::shared_ptr<ISettings>& TheSettings() {
    static std::shared_ptr<ISettings> oSettings = std::make_shared<FileSettings>();
    return oSettings;
}

AppInfo DefaultAppInfo() {
    return AppInfo{program_invocation_short_name ? program_invocation_short_name : "tnw", 1, 0, 0};
}

AppInfoHook& TheAppInfo() {
    static AppInfoHook fnHook = DefaultAppInfo;
    return fnHook;
}

}  // namespace

void ShowMessageBox(const std::string& sText, const std::string& sTitle, MsgIcon eIcon) {
    MessageBoxHook fnHook;
    {
        std::lock_guard lock(g_mutex);
        fnHook = TheMessageBox();
    }
    if (fnHook) fnHook(sText, sTitle, eIcon);
}

MessageBoxHook SetMessageBoxHook(MessageBoxHook fnHook) {
    std::lock_guard lock(g_mutex);
    return std::exchange(TheMessageBox(), fnHook ? std::move(fnHook) : DefaultMessageBox);
}

std::shared_ptr<ISettings> Settings() {
    std::lock_guard lock(g_mutex);
    return TheSettings();
}

std::shared_ptr<ISettings> SetSettings(std::shared_ptr<ISettings> oSettings) {
    std::lock_guard lock(g_mutex);
    if (!oSettings) oSettings = std::make_shared<FileSettings>();
    return std::exchange(TheSettings(), std::move(oSettings));
}

AppInfo ApplicationInfo() {
    AppInfoHook fnHook;
    {
        std::lock_guard lock(g_mutex);
        fnHook = TheAppInfo();
    }
    return fnHook();
}

AppInfoHook SetAppInfoHook(AppInfoHook fnHook) {
    std::lock_guard lock(g_mutex);
    return std::exchange(TheAppInfo(), fnHook ? std::move(fnHook) : DefaultAppInfo);
}

}  // namespace tnw::platform
