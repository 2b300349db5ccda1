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

// Checks that the closed set <sBase>.dbf (and with bShapes .shp and .shx) agrees with itself:
// file lengths, index entries, record numbers and counts. Aborts when it does not; gives the
// number of records.
std::uint32_t CheckClosedSet(const std::string& sBase, bool bShapes);

}  // namespace tnw::fuzz
