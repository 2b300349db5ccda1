#include "Inputs.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace tnw::bench {
namespace {

namespace fs = std::filesystem;

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File OpenFile(const std::string& sPath, const char* sMode) {
    File f(std::fopen(sPath.c_str(), sMode));
    if (!f) throw std::runtime_error("cannot open " + sPath);
    return f;
}

std::string_view Trim(std::string_view s) {
    std::size_t nFirst = s.find_first_not_of(' ');
    if (nFirst == std::string_view::npos) return {};
    return s.substr(nFirst, s.find_last_not_of(' ') - nFirst + 1);
}

template <class T>
T Parse(std::string_view s, const char* sWhat) {
    T value{};
    auto [pEnd, ec] = std::from_chars(s.data(), s.data() + s.size(), value);
    if (ec != std::errc() || pEnd != s.data() + s.size()) {
        throw std::runtime_error(std::string(sWhat) + ": not a number: \"" + std::string(s) + "\"");
    }
    return value;
}

void PutLE(unsigned char* p, std::uint32_t v, int nBytes) {
    for (int i = 0; i < nBytes; ++i)
        p[i] = static_cast<unsigned char>(v >> (8 * i));
}

std::int64_t W3FileSize(std::int64_t n) {
    constexpr int nFields = sizeof kW1Fields / sizeof kW1Fields[0];
    return 32 + 32 * nFields + 1 + 62 * n + 1;
}

// Writes to a temporary name and renames at the end, so that a run that stops half-way
// leaves no input that looks finished.
class Output {
public:
    explicit Output(std::string sPath)
        : m_sPath(std::move(sPath)), m_f(OpenFile(m_sPath + ".tmp", "wb")) {}
    void Write(const void* p, std::size_t n) {
        if (std::fwrite(p, 1, n, m_f.get()) != n)
            throw std::runtime_error("cannot write " + m_sPath);
    }
    void Commit() {
        if (std::fclose(m_f.release()) != 0) throw std::runtime_error("cannot write " + m_sPath);
        fs::rename(m_sPath + ".tmp", m_sPath);
    }

private:
    std::string m_sPath;
    File m_f;
};

}  // namespace

Checksum ExpectedW1Table(std::int64_t n) {
    Checksum t;
    for (std::int64_t i = 0; i < n; ++i) {
        W1Record r = MakeW1Record(i);
        t.dSum += r.dElevation;
        t.dSum += r.dWidth;
        t.dSum += r.dDistance;
        t.dSum += r.dDuration;
        t.lSum += std::int64_t{r.lUTC} + r.lMappable + (r.bEngaged ? 1 : 0);
        t.lSum += static_cast<std::int64_t>(r.sCrop.size());
        ++t.lRecords;
    }
    return t;
}

Checksum ExpectedW2Table(std::int64_t n) {
    Checksum t;
    for (std::int64_t k = 0; k < n; ++k) {
        t.dSum += (double)(100000 + (k % 1000) * 125) / 1000.0;
        char sName[16];
        int nName = std::snprintf(sName, sizeof sName, "Block %05d", static_cast<int>(k));
        t.lSum += k % 50 + 1 + nName;
        ++t.lRecords;
    }
    return t;
}

std::string PrepareW3Input(const std::string& sFolder, std::int64_t n) {
    std::string sPath = sFolder + "/w3-" + std::to_string(n) + ".dbf";
    std::error_code ec;
    if (fs::file_size(sPath, ec) == static_cast<std::uintmax_t>(W3FileSize(n)) && !ec) return sPath;

    fs::create_directories(sFolder);
    Output out(sPath);
    constexpr int nFields = sizeof kW1Fields / sizeof kW1Fields[0];
    unsigned char aHeader[32] = {0x03, 124, 1, 1};  // dBase III, last update 2024-01-01
    PutLE(aHeader + 4, static_cast<std::uint32_t>(n), 4);
    PutLE(aHeader + 8, 32 + 32 * nFields + 1, 2);
    PutLE(aHeader + 10, 62, 2);
    aHeader[29] = 0x57;  // language driver: ANSI
    out.Write(aHeader, sizeof aHeader);
    for (const FieldDef& t : kW1Fields) {
        unsigned char aField[32] = {};
        std::memcpy(aField, t.sName, std::strlen(t.sName));
        aField[11] = static_cast<unsigned char>(t.cType);
        aField[16] = static_cast<unsigned char>(t.nWidth);
        aField[17] = static_cast<unsigned char>(t.nDecimals);
        out.Write(aField, sizeof aField);
    }
    out.Write("\r", 1);

    std::vector<char> vBuffer;
    vBuffer.reserve(62 * 4096 + 64);
    char sRecord[64];
    for (std::int64_t i = 0; i < n; ++i) {
        W1Record r = MakeW1Record(i);
        int nLength = std::snprintf(
            sRecord, sizeof sRecord, " %*.*f%*.*f%*.*f%*.*f%*.*f%c%*.*f%-16s", 8, 1, r.dElevation,
            6, 2, r.dWidth, 8, 3, r.dDistance, 6, 2, r.dDuration, 12, 0, (double)r.lUTC,
            r.bEngaged ? 'T' : 'F', 4, 0, (double)r.lMappable, r.sCrop.data());
        if (nLength != 62) throw std::runtime_error("W3 record of the wrong length");
        vBuffer.insert(vBuffer.end(), sRecord, sRecord + nLength);
        if (vBuffer.size() >= 62 * 4096) {
            out.Write(vBuffer.data(), vBuffer.size());
            vBuffer.clear();
        }
    }
    vBuffer.push_back(0x1A);
    out.Write(vBuffer.data(), vBuffer.size());
    out.Commit();
    return sPath;
}

CsvInput PrepareW4Input(const std::string& sFolder, std::int64_t n) {
    CsvInput tInput{sFolder + "/w4-" + std::to_string(n) + ".csv", {}};
    std::string sSumPath = tInput.sPath + ".sum";

    // The checksum of a file made earlier, with the file's size, stands in the .sum file.
    if (std::ifstream fSum{sSumPath}) {
        long long lSize = -1, lRecords = 0, lSum = 0;
        double dSum = 0;
        std::string sLine;
        std::getline(fSum, sLine);
        std::error_code ec;
        if (std::sscanf(sLine.c_str(), "%lld %lld %la %lld", &lSize, &lRecords, &dSum, &lSum) ==
                4 &&
            fs::file_size(tInput.sPath, ec) == static_cast<std::uintmax_t>(lSize) && !ec &&
            lRecords == n) {
            tInput.tExpected = {lRecords, dSum, lSum};
            return tInput;
        }
    }

    fs::create_directories(sFolder);
    Output out(tInput.sPath);
    std::string sBuffer = "lon,lat,elevation,width,distance,duration,utc,mappable,speed,name\r\n";
    std::int64_t lSize = 0;
    Checksum& tSum = tInput.tExpected;
    char sLine[256];
    for (std::int64_t i = 0; i < n; ++i) {
        W1Record r = MakeW1Record(i);
        char sName[64];
        FormatW4Name(i, sName, sizeof sName);
        int nLength = std::snprintf(sLine, sizeof sLine,
                                    "%.6f,%.5f,%.1f,%.2f,%.3f,%.2f,%d,%d,%.2f,\"%s\"\r\n", r.dX,
                                    r.dY, r.dElevation, r.dWidth, r.dDistance, r.dDuration, r.lUTC,
                                    r.lMappable, (double)(300 + i % 900) / 100.0, sName);
        sBuffer.append(sLine, static_cast<std::size_t>(nLength));

        // The checksum of what was printed: nine plain fields, then the quoted name.
        std::string_view sRest(sLine, static_cast<std::size_t>(nLength) - 2);
        for (int iField = 0; iField < 9; ++iField) {
            std::size_t nComma = sRest.find(',');
            std::string_view sField = sRest.substr(0, nComma);
            if (iField == 6 || iField == 7) {
                tSum.lSum += Parse<std::int64_t>(sField, "W4 input");
            } else {
                tSum.dSum += Parse<double>(sField, "W4 input");
            }
            sRest.remove_prefix(nComma + 1);
        }
        tSum.lSum += static_cast<std::int64_t>(sRest.size()) - 2;
        ++tSum.lRecords;

        if (sBuffer.size() >= (1 << 20)) {
            out.Write(sBuffer.data(), sBuffer.size());
            lSize += static_cast<std::int64_t>(sBuffer.size());
            sBuffer.clear();
        }
    }
    out.Write(sBuffer.data(), sBuffer.size());
    lSize += static_cast<std::int64_t>(sBuffer.size());
    out.Commit();

    std::ofstream fSum(sSumPath);
    char sSum[128];
    std::snprintf(sSum, sizeof sSum, "%lld %lld %a %lld\n", static_cast<long long>(lSize),
                  static_cast<long long>(tSum.lRecords), tSum.dSum,
                  static_cast<long long>(tSum.lSum));
    fSum << sSum;
    if (!fSum) throw std::runtime_error("cannot write " + sSumPath);
    return tInput;
}

Checksum TableChecksum(const std::string& sPath) {
    File f = OpenFile(sPath, "rb");
    unsigned char aHeader[32];
    if (std::fread(aHeader, 1, 32, f.get()) != 32) throw std::runtime_error(sPath + ": no header");
    auto le = [&](int iOffset, int nBytes) {
        std::uint32_t v = 0;
        for (int i = nBytes - 1; i >= 0; --i)
            v = v << 8 | aHeader[iOffset + i];
        return v;
    };
    std::uint32_t nRecords = le(4, 4), nHeader = le(8, 2), nRecordLength = le(10, 2);
    if (nHeader < 33 || nRecordLength < 1) throw std::runtime_error(sPath + ": bad header");

    struct Field {
        char cType;
        std::size_t nOffset, nWidth;
        int nDecimals;
    };
    std::vector<Field> vFields;
    std::size_t nOffset = 1;
    for (std::uint32_t nPos = 32; nPos + 1 < nHeader; nPos += 32) {
        unsigned char aField[32];
        if (std::fread(aField, 1, 32, f.get()) != 32) throw std::runtime_error(sPath + ": short");
        vFields.push_back({static_cast<char>(aField[11]), nOffset, aField[16], aField[17]});
        nOffset += aField[16];
    }
    if (nOffset != nRecordLength) throw std::runtime_error(sPath + ": record length disagrees");

    Checksum t;
    std::vector<char> vRecords(std::size_t{nRecordLength} * 8192);
    if (std::fseek(f.get(), static_cast<long>(nHeader), SEEK_SET) != 0) {
        throw std::runtime_error(sPath + ": short");
    }
    for (std::uint32_t nDone = 0; nDone < nRecords;) {
        std::size_t nBatch = std::min<std::size_t>(nRecords - nDone, 8192);
        if (std::fread(vRecords.data(), nRecordLength, nBatch, f.get()) != nBatch) {
            throw std::runtime_error(sPath + ": fewer records than the header says");
        }
        for (std::size_t iRecord = 0; iRecord < nBatch; ++iRecord) {
            const char* pRecord = vRecords.data() + iRecord * nRecordLength;
            for (const Field& tField : vFields) {
                std::string_view sText = Trim({pRecord + tField.nOffset, tField.nWidth});
                switch (tField.cType) {
                    case 'N':
                        if (tField.nDecimals > 0) {
                            t.dSum += Parse<double>(sText, sPath.c_str());
                        } else {
                            t.lSum += Parse<std::int64_t>(sText, sPath.c_str());
                        }
                        break;
                    case 'L':
                        if (!sText.empty() && IsTrueLetter(sText[0])) ++t.lSum;
                        break;
                    default:
                        t.lSum += static_cast<std::int64_t>(sText.size());
                }
            }
            ++t.lRecords;
        }
        nDone += static_cast<std::uint32_t>(nBatch);
    }
    return t;
}

std::string CompareFiles(const std::string& sPathA, const std::string& sPathB) {
    File fA = OpenFile(sPathA, "rb");
    File fB = OpenFile(sPathB, "rb");
    std::vector<char> vA(1 << 20), vB(1 << 20);
    for (std::int64_t lOffset = 0;;) {
        std::size_t nA = std::fread(vA.data(), 1, vA.size(), fA.get());
        std::size_t nB = std::fread(vB.data(), 1, vB.size(), fB.get());
        std::size_t n = std::min(nA, nB);
        auto [pA, pB] = std::mismatch(vA.data(), vA.data() + n, vB.data());
        if (pA != vA.data() + n)
            return "differ at byte " + std::to_string(lOffset + (pA - vA.data()));
        if (nA != nB) return "differ in length at byte " + std::to_string(lOffset + n);
        if (nA == 0) return {};
        lOffset += static_cast<std::int64_t>(n);
    }
}

void WarmPageCache(const std::string& sPath) {
    File f = OpenFile(sPath, "rb");
    std::vector<char> v(1 << 20);
    while (std::fread(v.data(), 1, v.size(), f.get()) == v.size()) {
    }
}

}  // namespace tnw::bench
