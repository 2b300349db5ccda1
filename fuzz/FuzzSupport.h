// Shared set-up of the fuzz targets: stand-ins registered, error reports and boxes dropped
// (they would pile up over millions of runs), fixed settings, and the input as a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tnw::fuzz {

void SetUpOnce();

// Writes the bytes to this process's scratch file with the given extension; gives its path.
std::string WriteInput(const std::uint8_t* pData, std::size_t nSize, const char* sExtension);

}  // namespace tnw::fuzz
