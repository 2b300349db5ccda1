// The inputs of the read workloads and what the written sets must hold: made and checked by
// the benchmark's own plain code, independent of every implementation under test.
#pragma once

#include <cstdint>
#include <string>

#include "Workloads.h"

namespace tnw::bench {

// What the .dbf of a W1 set holds, and so what every W3 reader must find: the values as the
// workload defines them, summed as TableChecksum sums a table.
Checksum ExpectedW1Table(std::int64_t n);
// What the .dbf of a W2 set holds: Rate into dsum; Zone and the length of Name into isum.
Checksum ExpectedW2Table(std::int64_t n);

// The W1 table as a plain dBase III file (logicals T/F, numbers printed "%*.*f"), the one file
// all W3 readers read. Kept in sFolder and made again only when missing or of the wrong size.
std::string PrepareW3Input(const std::string& sFolder, std::int64_t n);

// The W4 CSV file and its checksum, worked out from the texts as they were printed.
struct CsvInput {
    std::string sPath;
    Checksum tExpected;
};
CsvInput PrepareW4Input(const std::string& sFolder, std::int64_t n);

// Sums a dBase table field by field: numeric fields with decimals into dsum, in field order;
// numeric fields without decimals as integers into isum; a logical adds 1 for T/t/Y/y; a
// character field adds its length without blanks at either end. For a W1 table this is the
// W3 checksum. Throws std::runtime_error when the file is no table or a number can't be read.
Checksum TableChecksum(const std::string& sPath);

// Empty when the two files hold the same bytes, else where they first differ.
std::string CompareFiles(const std::string& sPathA, const std::string& sPathB);

// Reads a whole file once, so that timed reads come from a warm page cache.
void WarmPageCache(const std::string& sPath);

}  // namespace tnw::bench
