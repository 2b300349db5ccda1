// A minimal hand-written program for each workload: it does only that one job, with no library
// around it. Writers fill a buffer and write it in large blocks, and patch the headers at the
// end; readers take the file in large blocks and parse the fixed layout in place. Its time is
// the yardstick that does not move with what a system call costs on the machine.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string>
#include <vector>

#include "Rival.h"

namespace tnw::bench {
namespace {

// ---- Output ---------------------------------------------------------------------------

class Output {
public:
    explicit Output(const std::string& sPath)
        : m_iFile(::open(sPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644)) {
        if (m_iFile < 0) throw std::runtime_error("cannot create " + sPath);
        m_vBuffer.reserve(kSize);
    }
    ~Output() {
        if (m_iFile >= 0) ::close(m_iFile);
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    char* Reserve(std::size_t n) {
        if (m_vBuffer.size() + n > kSize) Flush();
        const std::size_t nAt = m_vBuffer.size();
        m_vBuffer.resize(nAt + n);
        return m_vBuffer.data() + nAt;
    }
    void Put(const void* p, std::size_t n) { std::memcpy(Reserve(n), p, n); }
    // Writes bytes at an offset, for the headers patched at the end.
    void PutAt(std::int64_t lOffset, const void* p, std::size_t n) {
        Flush();
        if (::pwrite(m_iFile, p, n, lOffset) != static_cast<ssize_t>(n)) Fail();
    }
    void Flush() {
        const char* p = m_vBuffer.data();
        std::size_t n = m_vBuffer.size();
        while (n > 0) {
            const ssize_t nWritten = ::write(m_iFile, p, n);
            if (nWritten <= 0) Fail();
            p += nWritten;
            n -= static_cast<std::size_t>(nWritten);
        }
        m_vBuffer.clear();
    }

private:
    static constexpr std::size_t kSize = 1 << 20;
    [[noreturn]] static void Fail() { throw std::runtime_error("write failed"); }

    int m_iFile;
    std::vector<char> m_vBuffer;
};

void PutLE32(char* p, std::int32_t l) {
    std::memcpy(p, &l, 4);
}
void PutBE32(char* p, std::int32_t l) {
    const auto u = static_cast<std::uint32_t>(l);
    const char a[4] = {static_cast<char>(u >> 24), static_cast<char>(u >> 16),
                       static_cast<char>(u >> 8), static_cast<char>(u)};
    std::memcpy(p, a, 4);
}
void PutDouble(char* p, double d) {
    std::memcpy(p, &d, 8);
}

struct Box {
    double dXmin = 0, dYmin = 0, dXmax = 0, dYmax = 0;
    bool bEmpty = true;
    void Grow(double dX, double dY) {
        if (bEmpty) {
            *this = {dX, dY, dX, dY, false};
            return;
        }
        dXmin = std::min(dXmin, dX);
        dXmax = std::max(dXmax, dX);
        dYmin = std::min(dYmin, dY);
        dYmax = std::max(dYmax, dY);
    }
};

// The 100-byte main header of a .shp or .shx.
void PutMainHeader(char* p, std::int64_t lBytes, std::int32_t lShapeType, const Box& tBox) {
    std::memset(p, 0, 100);
    PutBE32(p, 9994);
    PutBE32(p + 24, static_cast<std::int32_t>(lBytes / 2));
    PutLE32(p + 28, 1000);
    PutLE32(p + 32, lShapeType);
    PutDouble(p + 36, tBox.dXmin);
    PutDouble(p + 44, tBox.dYmin);
    PutDouble(p + 52, tBox.dXmax);
    PutDouble(p + 60, tBox.dYmax);
}

// A .shp, its .shx and its .dbf, written record by record.
class ShapeSet {
public:
    template <std::size_t N>
    ShapeSet(const std::string& sBase, std::int32_t lShapeType, const FieldDef (&aFields)[N])
        : m_sBase(sBase),
          m_lShapeType(lShapeType),
          m_oShp(sBase + ".shp"),
          m_oShx(sBase + ".shx"),
          m_oDbf(sBase + ".dbf") {
        m_oShp.Reserve(100);
        m_oShx.Reserve(100);
        char* p = m_oDbf.Reserve(32 + 32 * N + 1);
        std::memset(p, 0, 32 + 32 * N + 1);
        p[0] = 3;
        const std::time_t tNow = std::time(nullptr);
        std::tm tToday{};
        localtime_r(&tNow, &tToday);
        p[1] = static_cast<char>(tToday.tm_year);
        p[2] = static_cast<char>(tToday.tm_mon + 1);
        p[3] = static_cast<char>(tToday.tm_mday);
        p[29] = 0x57;
        m_nRecordLength = 1;
        for (std::size_t n = 0; n < N; ++n) {
            char* pField = p + 32 + 32 * n;
            std::memcpy(pField, aFields[n].sName, std::strlen(aFields[n].sName));
            pField[11] = aFields[n].cType;
            pField[16] = static_cast<char>(aFields[n].nWidth);
            pField[17] = static_cast<char>(aFields[n].nDecimals);
            m_nRecordLength += static_cast<std::size_t>(aFields[n].nWidth);
        }
        p[32 + 32 * N] = 0x0D;
        m_nHeaderLength = 32 + 32 * N + 1;
        const auto iHeader = static_cast<std::int16_t>(m_nHeaderLength);
        const auto iRecord = static_cast<std::int16_t>(m_nRecordLength);
        std::memcpy(p + 8, &iHeader, 2);
        std::memcpy(p + 10, &iRecord, 2);
    }

    // Room for a record's content of nBytes in the .shp, after its header and .shx entry.
    char* Shape(std::size_t nBytes) {
        ++m_lRecords;
        char* pEntry = m_oShx.Reserve(8);
        PutBE32(pEntry, static_cast<std::int32_t>(m_lShpBytes / 2));
        PutBE32(pEntry + 4, static_cast<std::int32_t>(nBytes / 2));
        char* p = m_oShp.Reserve(8 + nBytes);
        PutBE32(p, static_cast<std::int32_t>(m_lRecords));
        PutBE32(p + 4, static_cast<std::int32_t>(nBytes / 2));
        m_lShpBytes += static_cast<std::int64_t>(8 + nBytes);
        return p + 8;
    }
    char* Record() {
        char* p = m_oDbf.Reserve(m_nRecordLength);
        *p = ' ';
        return p + 1;
    }
    Box& Extent() { return m_tBox; }

    void Close() {
        char aHeader[100];
        PutMainHeader(aHeader, m_lShpBytes, m_lShapeType, m_tBox);
        m_oShp.PutAt(0, aHeader, 100);
        PutMainHeader(aHeader, 100 + 8 * m_lRecords, m_lShapeType, m_tBox);
        m_oShx.PutAt(0, aHeader, 100);
        m_oDbf.Put("\x1A", 1);
        const auto lRecords = static_cast<std::int32_t>(m_lRecords);
        m_oDbf.PutAt(4, &lRecords, 4);
        for (const auto& [sExtension, sText] :
             {std::pair{".prj", kPrjText}, std::pair{".cpg", kCpgText}}) {
            Output oSidecar(m_sBase + sExtension);
            oSidecar.Put(sText.data(), sText.size());
            oSidecar.Flush();
        }
    }

private:
    std::string m_sBase;
    std::int32_t m_lShapeType;
    Output m_oShp, m_oShx, m_oDbf;
    std::size_t m_nHeaderLength = 0;
    std::size_t m_nRecordLength = 0;
    std::int64_t m_lShpBytes = 100;
    std::int64_t m_lRecords = 0;
    Box m_tBox;
};

// The workload's own definition of a numeric field: printf("%*.*f", width, decimals, value).
char* PutFixed(char* p, int nWidth, int nDecimals, double d) {
    char aText[32];
    std::snprintf(aText, sizeof aText, "%*.*f", nWidth, nDecimals, d);
    std::memcpy(p, aText, static_cast<std::size_t>(nWidth));
    return p + nWidth;
}

char* PutText(char* p, int nWidth, std::string_view s) {
    std::memcpy(p, s.data(), s.size());
    std::memset(p + s.size(), ' ', static_cast<std::size_t>(nWidth) - s.size());
    return p + nWidth;
}

WorkloadResult WritePoints(const WorkloadArgs& tArgs) {
    ShapeSet oSet(tArgs.sOutput, 1, kW1Fields);
    for (std::int64_t i = 0; i < tArgs.lRecords; ++i) {
        const W1Record t = MakeW1Record(i);
        char* p = oSet.Shape(20);
        PutLE32(p, 1);
        PutDouble(p + 4, t.dX);
        PutDouble(p + 12, t.dY);
        oSet.Extent().Grow(t.dX, t.dY);
        char* q = oSet.Record();
        q = PutFixed(q, 8, 1, t.dElevation);
        q = PutFixed(q, 6, 2, t.dWidth);
        q = PutFixed(q, 8, 3, t.dDistance);
        q = PutFixed(q, 6, 2, t.dDuration);
        q = PutFixed(q, 12, 0, t.lUTC);
        *q++ = t.bEngaged ? 'T' : 'F';
        q = PutFixed(q, 4, 0, t.lMappable);
        PutText(q, 16, t.sCrop);
    }
    oSet.Close();
    return {tArgs.lRecords, {}};
}

WorkloadResult WritePolygons(const WorkloadArgs& tArgs) {
    ShapeSet oSet(tArgs.sOutput, 5, kW2Fields);
    const W2Offsets tOffsets;
    W2Record t;
    constexpr std::size_t kContent = 44 + 8 + 16 * kW2Points;
    for (std::int64_t k = 0; k < tArgs.lRecords; ++k) {
        MakeW2Record(k, tOffsets, t);
        Box tBox;
        for (int j = 0; j < kW2Points; ++j)
            tBox.Grow(t.adX[j], t.adY[j]);
        char* p = oSet.Shape(kContent);
        PutLE32(p, 5);
        PutDouble(p + 4, tBox.dXmin);
        PutDouble(p + 12, tBox.dYmin);
        PutDouble(p + 20, tBox.dXmax);
        PutDouble(p + 28, tBox.dYmax);
        PutLE32(p + 36, 2);
        PutLE32(p + 40, kW2Points);
        PutLE32(p + 44, 0);
        PutLE32(p + 48, kW2ExteriorPoints);
        for (int j = 0; j < kW2Points; ++j) {
            PutDouble(p + 52 + 16 * j, t.adX[j]);
            PutDouble(p + 60 + 16 * j, t.adY[j]);
        }
        oSet.Extent().Grow(tBox.dXmin, tBox.dYmin);
        oSet.Extent().Grow(tBox.dXmax, tBox.dYmax);
        char* q = oSet.Record();
        q = PutFixed(q, 10, 3, t.dRate);
        q = PutFixed(q, 6, 0, t.lZone);
        PutText(q, 20, std::string_view(t.sName, static_cast<std::size_t>(t.nNameLength)));
    }
    oSet.Close();
    return {tArgs.lRecords, {}};
}

// ---- Input ----------------------------------------------------------------------------

// A file read in large blocks; Fill keeps the unread tail and appends the next block.
class Input {
public:
    explicit Input(const std::string& sPath) : m_iFile(::open(sPath.c_str(), O_RDONLY)) {
        if (m_iFile < 0) throw std::runtime_error("cannot open " + sPath);
        m_vBuffer.resize(kSize);
    }
    ~Input() { ::close(m_iFile); }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // Keeps the bytes from nKeep on and reads more after them; false at the end of the file.
    bool Fill(std::size_t nKeep) {
        const std::size_t nTail = m_nEnd - nKeep;
        std::memmove(m_vBuffer.data(), m_vBuffer.data() + nKeep, nTail);
        if (nTail + kBlock > m_vBuffer.size()) m_vBuffer.resize(nTail + kBlock);
        const ssize_t nRead = ::read(m_iFile, m_vBuffer.data() + nTail, kBlock);
        if (nRead < 0) throw std::runtime_error("read failed");
        m_nEnd = nTail + static_cast<std::size_t>(nRead);
        return nRead > 0;
    }
    const char* Data() const { return m_vBuffer.data(); }
    std::size_t Size() const { return m_nEnd; }

private:
    static constexpr std::size_t kBlock = 1 << 20;
    static constexpr std::size_t kSize = 2 * kBlock;
    int m_iFile;
    std::vector<char> m_vBuffer;
    std::size_t m_nEnd = 0;
};

std::string_view Trim(std::string_view s) {
    while (!s.empty() && s.front() == ' ')
        s.remove_prefix(1);
    while (!s.empty() && s.back() == ' ')
        s.remove_suffix(1);
    return s;
}

template <class T>
T Parse(std::string_view s) {
    s = Trim(s);
    T v{};
    if (std::from_chars(s.data(), s.data() + s.size(), v).ec != std::errc()) {
        throw std::runtime_error("not a number: " + std::string(s));
    }
    return v;
}

WorkloadResult ReadTable(const WorkloadArgs& tArgs) {
    Input oFile(tArgs.sInput);
    oFile.Fill(0);
    if (oFile.Size() < 32) throw std::runtime_error("no dBase header");
    std::int32_t lRecords = 0;
    std::uint16_t iHeader = 0, iRecord = 0;
    std::memcpy(&lRecords, oFile.Data() + 4, 4);
    std::memcpy(&iHeader, oFile.Data() + 8, 2);
    std::memcpy(&iRecord, oFile.Data() + 10, 2);
    // Where each of the eight fields starts in a record, from the descriptors.
    std::size_t anStart[9] = {1};
    for (int n = 0; n < 8; ++n) {
        anStart[n + 1] = anStart[n] + static_cast<unsigned char>(oFile.Data()[32 + 32 * n + 16]);
    }
    const auto Field = [&](const char* pRecord, int n) {
        return std::string_view(pRecord + anStart[n], anStart[n + 1] - anStart[n]);
    };
    Checksum tSum;
    std::size_t nAt = iHeader;
    for (std::int32_t l = 0; l < lRecords; ++l) {
        if (nAt + iRecord > oFile.Size()) {
            if (!oFile.Fill(nAt)) throw std::runtime_error("table ends early");
            nAt = 0;
        }
        const char* p = oFile.Data() + nAt;
        nAt += iRecord;
        for (int n = 0; n < 4; ++n)
            tSum.dSum += Parse<double>(Field(p, n));
        tSum.lSum += Parse<std::int64_t>(Field(p, 4));
        if (IsTrueLetter(Field(p, 5)[0])) ++tSum.lSum;
        tSum.lSum += Parse<std::int64_t>(Field(p, 6));
        tSum.lSum += static_cast<std::int64_t>(TrimmedLength(Field(p, 7)));
        ++tSum.lRecords;
    }
    return {tSum.lRecords, tSum.Text()};
}

// One W4 line without its line end: nine plain fields and a quoted name.
void AddCsvLine(std::string_view sLine, Checksum& tSum) {
    std::string_view asField[9];
    for (std::string_view& sField : asField) {
        const std::size_t nComma = sLine.find(',');
        if (nComma == std::string_view::npos) throw std::runtime_error("short line");
        sField = sLine.substr(0, nComma);
        sLine.remove_prefix(nComma + 1);
    }
    for (int n : {0, 1, 2, 3, 4, 5, 8})
        tSum.dSum += Parse<double>(asField[n]);
    tSum.lSum += Parse<std::int64_t>(asField[6]) + Parse<std::int64_t>(asField[7]);
    if (sLine.size() < 2 || sLine.front() != '"' || sLine.back() != '"') {
        throw std::runtime_error("name not quoted");
    }
    tSum.lSum += static_cast<std::int64_t>(sLine.size() - 2);
    ++tSum.lRecords;
}

WorkloadResult ReadCsv(const WorkloadArgs& tArgs) {
    Input oFile(tArgs.sInput);
    Checksum tSum;
    bool bHeader = true;
    std::size_t nAt = 0;
    for (bool bMore = oFile.Fill(0); bMore || nAt < oFile.Size();) {
        const char* pStart = oFile.Data() + nAt;
        const auto* pEnd = static_cast<const char*>(std::memchr(pStart, '\n', oFile.Size() - nAt));
        if (!pEnd) {
            if (!bMore) break;
            bMore = oFile.Fill(nAt);
            nAt = 0;
            continue;
        }
        std::string_view sLine(pStart, static_cast<std::size_t>(pEnd - pStart));
        if (!sLine.empty() && sLine.back() == '\r') sLine.remove_suffix(1);
        nAt += static_cast<std::size_t>(pEnd - pStart) + 1;
        if (bHeader) {
            bHeader = false;
        } else if (!sLine.empty()) {
            AddCsvLine(sLine, tSum);
        }
    }
    return {tSum.lRecords, tSum.Text()};
}

const Implementation kHandWritten = {"hand", {WritePoints, WritePolygons, ReadTable, ReadCsv}};

}  // namespace
}  // namespace tnw::bench

extern "C" const tnw::bench::Implementation* tnw_bench_implementation() {
    return &tnw::bench::kHandWritten;
}
