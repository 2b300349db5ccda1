// The WKT parser on arbitrary text; whatever it accepts must write and read back the same.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "FuzzSupport.h"
#include "core/Error.h"
#include "core/Geometry.h"
#include "ogc_sf/WKT.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    std::string_view sText(reinterpret_cast<const char*>(pData), nSize);
    std::shared_ptr<tnw::IGeometry> oGeometry;
    try {
        oGeometry = tnw::standins::ParseWKT(sText);
    } catch (const tnw::Error&) {
        return 0;
    }
    if (!oGeometry) return 0;
    const std::string sWritten = oGeometry->WKT();
    const auto oAgain = tnw::standins::ParseWKT(sWritten);  // must not raise
    if (!oAgain || oAgain->WKT() != sWritten) std::abort();
    try {
        (void)oGeometry->Centroid();
    } catch (const tnw::Error&) {
    }
    return 0;
}
