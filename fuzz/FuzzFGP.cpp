// The FGP reader on arbitrary bytes: a main file with both side tables, walked with and
// without sites, every property read at every record, then opened again. The input is
// <fdt length LE16><fsn length LE16><set-up byte><fdt bytes><fsn bytes><main file bytes>;
// lengths past the end are cut to what is there.
#include <cstdint>
#include <fstream>
#include <string>

#include "FuzzSupport.h"
#include "core/Error.h"
#include "decoders/tnwFGPDecoder.h"

namespace {

void WriteFile(const std::string& sPath, const std::uint8_t* pData, std::size_t nSize) {
    std::ofstream out(sPath, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(pData), static_cast<std::streamsize>(nSize));
}

// A text field of samples is a type mismatch that passes to the caller, as documented.
double Tolerated(double (tnw::tnwFGPDecoder::*fnValue)() const, const tnw::tnwFGPDecoder& o) {
    try {
        return (o.*fnValue)();
    } catch (const tnw::Error&) {
        return 0.0;
    }
}

void Walk(tnw::tnwFGPDecoder& oDecoder) {
    (void)oDecoder.MoveFirst();
    for (int i = 0; i < 100000 && !oDecoder.Eof(); ++i) {
        (void)oDecoder.WKT();
        (void)oDecoder.UTCTime();
        (void)oDecoder.PercentComplete();
        (void)oDecoder.FDTString();
        (void)(oDecoder.Longitude() + oDecoder.Latitude() + oDecoder.Altitude() +
               oDecoder.Heading() + oDecoder.AttributeID() + oDecoder.RegionID());
        for (auto fnValue :
             {&tnw::tnwFGPDecoder::Rate_Act, &tnw::tnwFGPDecoder::Rate_Rx,
              &tnw::tnwFGPDecoder::Swath, &tnw::tnwFGPDecoder::P_PARAM,
              &tnw::tnwFGPDecoder::V_PARAM, &tnw::tnwFGPDecoder::NDVI, &tnw::tnwFGPDecoder::VI_2ND})
            (void)Tolerated(fnValue, oDecoder);
        if (!oDecoder.MoveNext()) break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    if (nSize < 5) return 0;
    std::size_t nFDT = pData[0] | static_cast<std::size_t>(pData[1]) << 8;
    std::size_t nFSN = pData[2] | static_cast<std::size_t>(pData[3]) << 8;
    const std::uint8_t bySetUp = pData[4];
    std::size_t nAt = 5;
    nFDT = std::min(nFDT, nSize - nAt);
    const std::string sMain = tnw::fuzz::ScratchPath(".fgp");
    const std::string sBase = sMain.substr(0, sMain.size() - 4);
    WriteFile(sBase + ".fdt", pData + nAt, nFDT);
    nAt += nFDT;
    nFSN = std::min(nFSN, nSize - nAt);
    WriteFile(sBase + ".fsn", pData + nAt, nFSN);
    nAt += nFSN;
    WriteFile(sMain, pData + nAt, nSize - nAt);

    tnw::tnwFGPDecoder oDecoder;
    oDecoder.SetAsSites((bySetUp & 1) == 0);
    oDecoder.SetEmptyMissingRows((bySetUp & 2) != 0);
    oDecoder.SetFilename(sMain);
    (void)oDecoder.FDTSchema();
    Walk(oDecoder);
    oDecoder.SetAsSites(!oDecoder.AsSites());
    Walk(oDecoder);
    if (bySetUp & 4) oDecoder.CloseFile();
    oDecoder.SetFilename(sMain);
    Walk(oDecoder);
    return 0;
}
