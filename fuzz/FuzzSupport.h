// Shared set-up of the fuzz targets: stand-ins registered, error reports and boxes dropped
// (they would pile up over millions of runs), fixed settings, and the input as a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tnw::fuzz {

void SetUpOnce();

// This process's scratch path with the given ending, in memory where the system offers it.
std::string ScratchPath(const char* sEnding);

// Writes the bytes to this process's scratch file with the given extension; gives its path.
std::string WriteInput(const std::uint8_t* pData, std::size_t nSize, const char* sExtension);

// The whole of a scratch file; empty when there is none.
std::string ReadScratch(const std::string& sPath);

}  // namespace tnw::fuzz
