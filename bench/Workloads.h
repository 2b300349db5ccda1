// The four benchmark workloads: the records every implementation writes (W1 points, W2
// polygons) and the checksum every reader computes (W3 dBase, W4 CSV). The values follow
// the shared workload definitions bit for bit: plain double arithmetic in the order written,
// no fused multiply-add (the benchmark is built with -ffp-contract=off).
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace tnw::bench {

enum class Workload { W1, W2, W3, W4 };

// The record counts of a run of size n: W1, W3 and W4 take n records, W2 n / 10.
inline std::int64_t RecordCount(Workload eWorkload, std::int64_t n) {
    return eWorkload == Workload::W2 ? n / 10 : n;
}

// ---- W1 points -----------------------------------------------------------------------

struct W1Record {
    double dX, dY;
    double dElevation, dWidth, dDistance, dDuration;
    std::int32_t lUTC;
    bool bEngaged;
    std::int32_t lMappable;
    std::string_view sCrop;
};

inline constexpr std::string_view kCrops[3] = {"CORN", "SOYBEANS", "WINTER WHEAT"};

inline W1Record MakeW1Record(std::int64_t i) {
    W1Record t;
    t.dX = -96.0 + (double)i * 1e-6;
    t.dY = 40.0 + (double)(i % 1000) * 1e-5;
    t.dElevation = (double)(2500 + i % 5000) / 10.0;
    t.dWidth = (double)(900 + i % 300) / 100.0;
    t.dDistance = (double)(1000 + (i * 7) % 4000) / 1000.0;
    t.dDuration = (double)(100 + i % 50) / 100.0;
    t.lUTC = static_cast<std::int32_t>(1700000000 + i);
    t.bEngaged = i % 10 != 0;
    t.lMappable = static_cast<std::int32_t>(i % 100);
    t.sCrop = kCrops[(i / 1000) % 3];
    return t;
}

// dBase fields of W1 in file order: name, type letter, width, decimals.
struct FieldDef {
    const char* sName;
    char cType;
    int nWidth;
    int nDecimals;
};
inline constexpr FieldDef kW1Fields[] = {
    {"Elevation", 'N', 8, 1}, {"Width", 'N', 6, 2}, {"Distance", 'N', 8, 3},
    {"Duration", 'N', 6, 2},  {"UTC", 'N', 12, 0},  {"Engaged", 'L', 1, 0},
    {"Mappable", 'N', 4, 0},  {"Crop", 'C', 16, 0},
};

// ---- W2 polygons ---------------------------------------------------------------------

inline constexpr int kW2ExteriorPoints = 64;  // 63 distinct and the closing point
inline constexpr int kW2HolePoints = 16;      // 15 distinct and the closing point
inline constexpr int kW2Points = kW2ExteriorPoints + kW2HolePoints;

// The offsets of each vertex from the centre. They do not depend on the record, so they are
// worked out once; cx + 0.004 * cos(a) is the same sum whether the product is fresh or kept.
struct W2Offsets {
    double adX[kW2Points];
    double adY[kW2Points];

    W2Offsets() {
        for (int j = 0; j < kW2ExteriorPoints - 1; ++j) {
            double a = -2.0 * M_PI * (double)j / 63.0;
            adX[j] = 0.004 * cos(a);
            adY[j] = 0.004 * sin(a);
        }
        for (int j = 0; j < kW2HolePoints - 1; ++j) {
            double a = 2.0 * M_PI * (double)j / 15.0;
            adX[kW2ExteriorPoints + j] = 0.002 * cos(a);
            adY[kW2ExteriorPoints + j] = 0.002 * sin(a);
        }
    }
};

// One polygon record: 80 vertices, part 0 the exterior ring, part 1 the hole from vertex 64.
struct W2Record {
    double adX[kW2Points];
    double adY[kW2Points];
    double dRate;
    std::int32_t lZone;
    char sName[16];  // "Block %05d"
    int nNameLength;
};

inline void MakeW2Record(std::int64_t k, const W2Offsets& tOffsets, W2Record& t) {
    double cx = -96.0 + (double)(k % 1000) * 0.01;
    double cy = 40.0 + (double)(k / 1000) * 0.01;
    for (int j = 0; j < kW2ExteriorPoints - 1; ++j) {
        t.adX[j] = cx + tOffsets.adX[j];
        t.adY[j] = cy + tOffsets.adY[j];
    }
    t.adX[kW2ExteriorPoints - 1] = t.adX[0];
    t.adY[kW2ExteriorPoints - 1] = t.adY[0];
    for (int j = kW2ExteriorPoints; j < kW2Points - 1; ++j) {
        t.adX[j] = cx + tOffsets.adX[j];
        t.adY[j] = cy + tOffsets.adY[j];
    }
    t.adX[kW2Points - 1] = t.adX[kW2ExteriorPoints];
    t.adY[kW2Points - 1] = t.adY[kW2ExteriorPoints];
    t.dRate = (double)(100000 + (k % 1000) * 125) / 1000.0;
    t.lZone = static_cast<std::int32_t>(k % 50 + 1);
    t.nNameLength = std::snprintf(t.sName, sizeof t.sName, "Block %05d", static_cast<int>(k));
}

inline constexpr FieldDef kW2Fields[] = {
    {"Rate", 'N', 10, 3},
    {"Zone", 'N', 6, 0},
    {"Name", 'C', 20, 0},
};

// ---- Shared by the writers -----------------------------------------------------------

inline constexpr std::string_view kPrjText =
    "GEOGCS[\"GCS_WGS_1984\",DATUM[\"D_WGS_1984\",SPHEROID[\"WGS_1984\",6378137.0,"
    "298.257223563]],PRIMEM[\"Greenwich\",0.0],UNIT[\"Degree\",0.0174532925199433]]";
inline constexpr std::string_view kCpgText = "UTF-8\n";

// ---- W3 and W4 checksum --------------------------------------------------------------

struct Checksum {
    std::int64_t lRecords = 0;
    double dSum = 0.0;
    std::int64_t lSum = 0;

    std::string Text() const {
        char s[128];
        std::snprintf(s, sizeof s, "records=%lld dsum=%.17g isum=%lld",
                      static_cast<long long>(lRecords), dSum, static_cast<long long>(lSum));
        return s;
    }
};

// Length of a field text without blanks at either end.
inline std::size_t TrimmedLength(std::string_view s) {
    std::size_t nFirst = s.find_first_not_of(' ');
    if (nFirst == std::string_view::npos) return 0;
    return s.find_last_not_of(' ') - nFirst + 1;
}

inline bool IsTrueLetter(char c) {
    return c == 'T' || c == 't' || c == 'Y' || c == 'y';
}

// The W4 name column of record i, without its quotes.
inline int FormatW4Name(std::int64_t i, char* s, std::size_t nSize) {
    return std::snprintf(s, nSize, "Field %d, Pass %d", static_cast<int>((i / 1000) % 100),
                         static_cast<int>(i % 7));
}

// ---- What an implementation gives back -----------------------------------------------

struct WorkloadArgs {
    Workload eWorkload;
    std::int64_t lRecords;  // records to write (W1, W2); read workloads take the file's count
    std::string sOutput;    // W1, W2: base path of the set to write, without extension
    std::string sInput;     // W3: the .dbf; W4: the .csv
};

struct WorkloadResult {
    std::int64_t lRecords = 0;  // records written or read
    std::string sChecksum;      // W3, W4: Checksum::Text()
};

}  // namespace tnw::bench
