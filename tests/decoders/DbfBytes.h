// Hand-built dBase III tables for the reader's tests, assembled from the format itself: a
// 32-byte header, 32-byte descriptors, 0x0D, the records, 0x1A. Header numbers can be made to
// lie; records are given whole (flag byte and fields) or as field texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tnw::test {

struct DbfField {
    std::string sName;  // raw name bytes; cut or NUL-padded to 11
    char cType = 'C';
    std::uint8_t nWidth = 0;
    std::uint8_t nDecimals = 0;
};

class DbfTable {
public:
    explicit DbfTable(std::vector<DbfField> vFields) : m_vFields(std::move(vFields)) {}

    // A record from field texts, each padded with blanks or cut to its width.
    DbfTable& Row(std::vector<std::string> vTexts, char cFlag = ' ') {
        std::string sRecord(1, cFlag);
        for (std::size_t i = 0; i < m_vFields.size(); ++i) {
            std::string sText = i < vTexts.size() ? vTexts[i] : std::string();
            sText.resize(m_vFields[i].nWidth, ' ');
            sRecord += sText;
        }
        m_vRecords.push_back(sRecord);
        return *this;
    }
    std::optional<std::int32_t> lRecordCount;
    std::optional<std::int16_t> iHeaderLength;
    std::optional<std::int16_t> iRecordLength;

    std::string Bytes() const {
        std::int32_t nRecordLength = 1;
        for (const auto& f : m_vFields)
            nRecordLength += f.nWidth;
        std::string s;
        s += '\x03';
        s += std::string("\x5F\x03\x1F", 3);
        PutLE(s, lRecordCount.value_or(static_cast<std::int32_t>(m_vRecords.size())), 4);
        PutLE(s, iHeaderLength.value_or(static_cast<std::int16_t>(33 + 32 * m_vFields.size())), 2);
        PutLE(s, iRecordLength.value_or(static_cast<std::int16_t>(nRecordLength)), 2);
        s.append(20, '\0');
        for (const auto& f : m_vFields) {
            std::string sName = f.sName;
            sName.resize(11, '\0');
            s += sName;
            s += f.cType;
            s.append(4, '\0');
            s += static_cast<char>(f.nWidth);
            s += static_cast<char>(f.nDecimals);
            s.append(14, '\0');
        }
        s += '\x0D';
        for (const auto& r : m_vRecords)
            s += r;
        s += '\x1A';
        return s;
    }

private:
    static void PutLE(std::string& s, std::int64_t lValue, int nBytes) {
        const auto u = static_cast<std::uint64_t>(lValue);
        for (int i = 0; i < nBytes; ++i)
            s += static_cast<char>((u >> (8 * i)) & 0xFF);
    }

    std::vector<DbfField> m_vFields;
    std::vector<std::string> m_vRecords;
};

}  // namespace tnw::test
