// The delimited reader's GPL dialect on an arbitrary log with an arbitrary companion table. The
// first two bytes (little-endian) give the companion's length, which follows them; the rest is
// the log. A length of 0 means no companion at all.
#include <cstdint>
#include <cstdio>
#include <string>

#include "FuzzSupport.h"
#include "core/Error.h"
#include "delimited/tnwASCIIDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    if (nSize < 2) return 0;
    std::size_t nCompanion = pData[0] | std::size_t{pData[1]} << 8;
    if (nCompanion > nSize - 2) nCompanion = nSize - 2;
    const std::string sCompanion = tnw::fuzz::ScratchPath(".gpd");
    std::remove(sCompanion.c_str());
    if (nCompanion > 0) tnw::fuzz::WriteInput(pData + 2, nCompanion, ".gpd");
    const std::string sLog =
        tnw::fuzz::WriteInput(pData + 2 + nCompanion, nSize - 2 - nCompanion, ".gpl");

    tnw::tnwASCIIDecoder oDecoder;
    try {
        oDecoder.SetFilename(sLog);
    } catch (const tnw::Error&) {
        return 0;
    }
    (void)oDecoder.GPDSchema();
    // Twice, so that the companion starts over with the log.
    for (int iPass = 0; iPass < 2; ++iPass) {
        (void)oDecoder.MoveFirst();
        for (int i = 0; i < 5000 && !oDecoder.Eof(); ++i) {
            (void)oDecoder.GPDString();
            (void)oDecoder.GPLCommand();
            (void)oDecoder.Latitude();
            (void)oDecoder.WKT();
            (void)oDecoder.MoveNext();
        }
    }
    return 0;
}
