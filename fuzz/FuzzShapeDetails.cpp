// The shape details reader on arbitrary bytes.
#include <cstdint>

#include "FuzzSupport.h"
#include "core/Error.h"
#include "decoders/tnwShapeDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    const std::string sPath = tnw::fuzz::WriteInput(pData, nSize, ".shp");
    tnw::tnwShapeDecoder oDecoder;
    std::int32_t eType = 0;
    std::string sType;
    bool bCartesian = false;
    double dLeft = 0, dRight = 0, dTop = 0, dBottom = 0;
    try {
        oDecoder.GetShapeDetails(sPath, eType, sType, bCartesian, dLeft, dRight, dTop, dBottom);
        (void)oDecoder.GetESRIShapeType("", sPath);
    } catch (const tnw::Error&) {
    }
    return 0;
}
