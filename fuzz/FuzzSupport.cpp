#include "FuzzSupport.h"

#include <unistd.h>

#include <fstream>
#include <iterator>

#include "RegisterStandIns.h"
#include "core/Component.h"
#include "core/GISLib.h"
#include "platform/Hooks.h"

namespace tnw::fuzz {

namespace {

class QuietSettings final : public platform::ISettings {
public:
    Variant GetSetting(const std::string&, const std::string&, const std::string&,
                       const Variant&) override {
        return Variant(std::int32_t{0});
    }
    Variant ReadValue(std::int32_t, const std::string&, const std::string&,
                      const Variant& vDefault) override {
        return vDefault;
    }
};

}  // namespace

void SetUpOnce() {
    static const bool bDone = [] {
        standins::RegisterStandIns();
        tnwObjectFactory::Register(kProgIdErrorHandler, nullptr);
        platform::SetMessageBoxHook(
            [](const std::string&, const std::string&, platform::MsgIcon) {});
        platform::SetSettings(std::make_shared<QuietSettings>());
        return true;
    }();
    (void)bDone;
}

std::string ScratchPath(const char* sEnding) {
    const char* sDir = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    return std::string(sDir) + "/tnwfuzz_" + std::to_string(getpid()) + sEnding;
}

std::string WriteInput(const std::uint8_t* pData, std::size_t nSize, const char* sExtension) {
    std::string sPath = ScratchPath(sExtension);
    std::ofstream out(sPath, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(pData), static_cast<std::streamsize>(nSize));
    return sPath;
}

std::string ReadScratch(const std::string& sPath) {
    std::ifstream in(sPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace tnw::fuzz
