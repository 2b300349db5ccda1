#include "FuzzSupport.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "RegisterStandIns.h"
#include "core/Component.h"
#include "core/GISLib.h"
#include "platform/Hooks.h"

namespace tnw::fuzz {

namespace {

std::uint32_t Little32(const std::string& s, std::size_t n) {
    const auto* p = reinterpret_cast<const unsigned char*>(s.data() + n);
    return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 |
           std::uint32_t{p[3]} << 24;
}

std::uint32_t Big32(const std::string& s, std::size_t n) {
    const auto* p = reinterpret_cast<const unsigned char*>(s.data() + n);
    return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 |
           std::uint32_t{p[3]};
}

void Require(bool bHolds) {
    if (!bHolds) std::abort();
}

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

std::uint32_t CheckClosedSet(const std::string& sBase, bool bShapes) {
    const std::string sDbf = ReadScratch(sBase + ".dbf");
    Require(sDbf.size() >= 33);
    const std::uint32_t nRecords = Little32(sDbf, 4);
    const std::size_t nHeader = Little32(sDbf, 8) & 0xFFFF;
    const std::size_t nRecord = Little32(sDbf, 10) & 0xFFFF;
    Require(sDbf.size() == nHeader + nRecords * nRecord + (nRecords > 0 ? 1 : 0));
    Require(sDbf.back() == 0x1A);
    if (!bShapes) return nRecords;
    const std::string sShp = ReadScratch(sBase + ".shp");
    const std::string sShx = ReadScratch(sBase + ".shx");
    Require(sShp.size() >= 100 && sShx.size() == 100 + 8 * std::size_t{nRecords});
    Require(Big32(sShp, 24) * 2 == sShp.size() && Big32(sShx, 24) * 2 == sShx.size());
    std::size_t nAt = 100;
    for (std::uint32_t i = 0; i < nRecords; ++i) {
        const std::uint32_t nOffset = Big32(sShx, 100 + 8 * i);
        const std::uint32_t nWords = Big32(sShx, 104 + 8 * i);
        Require(nOffset * 2 == nAt && nAt + 8 <= sShp.size());
        Require(Big32(sShp, nAt) == i + 1 && Big32(sShp, nAt + 4) == nWords);
        nAt += 8 + 2 * std::size_t{nWords};
    }
    Require(nAt == sShp.size());
    return nRecords;
}

}  // namespace tnw::fuzz
