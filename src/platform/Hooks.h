// Replaceable platform services: the modal message box, the settings store, and the running
// application's name and version. Each has a Linux default; hosts and tests swap them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/Variant.h"

namespace tnw::platform {

enum class MsgIcon { None, Exclamation, Information, Critical };

// Shows a modal box with an OK button; returns when the user has closed it.
using MessageBoxHook =
    std::function<void(const std::string& sText, const std::string& sTitle, MsgIcon eIcon)>;
void ShowMessageBox(const std::string& sText, const std::string& sTitle, MsgIcon eIcon);
// Replaces the box; gives the one before. The default writes "title: text" to stderr.
MessageBoxHook SetMessageBoxHook(MessageBoxHook fnHook);

// The settings store: per-user application settings (application, section, key) and the
// machine-wide registry (hive, key path, value name), both read only.
inline constexpr std::int32_t HKEY_LOCAL_MACHINE = static_cast<std::int32_t>(0x80000002u);

class ISettings {
public:
    virtual ~ISettings() = default;
    virtual Variant GetSetting(const std::string& sApplication, const std::string& sSection,
                               const std::string& sKey, const Variant& vDefault) = 0;
    virtual Variant ReadValue(std::int32_t lHive, const std::string& sKey,
                              const std::string& sValueName, const Variant& vDefault) = 0;
};
std::shared_ptr<ISettings> Settings();
// Replaces the store (nothing: the default files); gives the one before.
std::shared_ptr<ISettings> SetSettings(std::shared_ptr<ISettings> oSettings);

struct AppInfo {
    std::string sName;
    std::int32_t lMajor = 0;
    std::int32_t lMinor = 0;
    std::int32_t lRevision = 0;
};
AppInfo ApplicationInfo();
// Replaces the source of the application's name and version; gives the one before. The
// default is the running program's file name and the library's version.
using AppInfoHook = std::function<AppInfo()>;
AppInfoHook SetAppInfoHook(AppInfoHook fnHook);

}  // namespace tnw::platform
