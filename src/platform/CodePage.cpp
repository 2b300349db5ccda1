#include "platform/CodePage.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace tnw::platform {

namespace {

// Windows-1252 bytes 0x80..0x9F; 0 where the code page has no character.
constexpr char32_t k1252High[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

CodePage StartingCodePage() {
    const char* s = std::getenv("TNW_CODEPAGE");
    if (s && (std::strcmp(s, "latin1") == 0 || std::strcmp(s, "28591") == 0))
        return CodePage::Latin1;
    return CodePage::Windows1252;
}

std::atomic<CodePage>& TheCodePage() {
    static std::atomic<CodePage> eCodePage{StartingCodePage()};
    return eCodePage;
}

char32_t CharOfByte(unsigned char c, CodePage eCodePage) {
    if (c < 0x80 || c >= 0xA0 || eCodePage == CodePage::Latin1) return c;
    char32_t u = k1252High[c - 0x80];
    return u ? u : c;  // undefined bytes pass through as their C1 control
}

int ByteOfChar(char32_t u, CodePage eCodePage) {
    if (u < 0x80) return static_cast<int>(u);
    if (eCodePage == CodePage::Latin1) return u < 0x100 ? static_cast<int>(u) : -1;
    if (u >= 0xA0 && u < 0x100) return static_cast<int>(u);
    for (int i = 0; i < 32; ++i)
        if (k1252High[i] == u) return 0x80 + i;
    if (u >= 0x80 && u < 0xA0) return static_cast<int>(u);
    return -1;
}

void AppendUtf8(std::string& sOut, char32_t u) {
    if (u < 0x80) {
        sOut.push_back(static_cast<char>(u));
    } else if (u < 0x800) {
        sOut.push_back(static_cast<char>(0xC0 | (u >> 6)));
        sOut.push_back(static_cast<char>(0x80 | (u & 0x3F)));
    } else {
        sOut.push_back(static_cast<char>(0xE0 | (u >> 12)));
        sOut.push_back(static_cast<char>(0x80 | ((u >> 6) & 0x3F)));
        sOut.push_back(static_cast<char>(0x80 | (u & 0x3F)));
    }
}

// Decodes one UTF-8 character at s[i], advancing i; a malformed sequence gives U+FFFD and
// takes one byte.
char32_t DecodeUtf8(std::string_view s, std::size_t& i) {
    const auto b0 = static_cast<unsigned char>(s[i]);
    if (b0 < 0x80) {
        ++i;
        return b0;
    }
    int nMore = b0 >= 0xF0 && b0 < 0xF8 ? 3 : b0 >= 0xE0 ? 2 : b0 >= 0xC0 ? 1 : -1;
    if (nMore < 0 || i + static_cast<std::size_t>(nMore) >= s.size()) {
        ++i;
        return 0xFFFD;
    }
    char32_t u = b0 & (0x3F >> nMore);
    for (int k = 1; k <= nMore; ++k) {
        const auto b = static_cast<unsigned char>(s[i + static_cast<std::size_t>(k)]);
        if ((b & 0xC0) != 0x80) {
            ++i;
            return 0xFFFD;
        }
        u = (u << 6) | (b & 0x3F);
    }
    i += static_cast<std::size_t>(nMore) + 1;
    return u;
}

bool IsAscii(std::string_view s) {
    for (char c : s)
        if (static_cast<unsigned char>(c) >= 0x80) return false;
    return true;
}

}  // namespace

CodePage NarrowCodePage() {
    return TheCodePage().load();
}

void SetNarrowCodePage(CodePage eCodePage) {
    TheCodePage().store(eCodePage);
}

void AppendNarrow(std::string& sOut, std::string_view sUtf8) {
    AppendNarrow(sOut, sUtf8, NarrowCodePage());
}

void AppendNarrow(std::string& sOut, std::string_view sUtf8, CodePage eCodePage) {
    if (eCodePage == CodePage::Utf8 || IsAscii(sUtf8)) {
        sOut.append(sUtf8);
        return;
    }
    for (std::size_t i = 0; i < sUtf8.size();) {
        int b = ByteOfChar(DecodeUtf8(sUtf8, i), eCodePage);
        sOut.push_back(b < 0 ? '?' : static_cast<char>(b));
    }
}

std::string ToNarrow(std::string_view sUtf8) {
    std::string s;
    AppendNarrow(s, sUtf8);
    return s;
}

void AppendFromNarrow(std::string& sOut, std::string_view sNarrow) {
    AppendFromNarrow(sOut, sNarrow, NarrowCodePage());
}

void AppendFromNarrow(std::string& sOut, std::string_view sNarrow, CodePage eCodePage) {
    if (IsAscii(sNarrow)) {
        sOut.append(sNarrow);
        return;
    }
    if (eCodePage != CodePage::Utf8) {
        for (char c : sNarrow)
            AppendUtf8(sOut, CharOfByte(static_cast<unsigned char>(c), eCodePage));
        return;
    }
    // Valid sequences pass whole; a stray byte is read as Windows-1252, so nothing is lost.
    for (std::size_t i = 0; i < sNarrow.size();) {
        const std::size_t nStart = i;
        if (DecodeUtf8(sNarrow, i) == 0xFFFD && i - nStart == 1 &&
            static_cast<unsigned char>(sNarrow[nStart]) >= 0x80) {
            AppendUtf8(sOut, CharOfByte(static_cast<unsigned char>(sNarrow[nStart]),
                                        CodePage::Windows1252));
        } else {
            sOut.append(sNarrow.substr(nStart, i - nStart));
        }
    }
}

std::string FromNarrow(std::string_view sNarrow) {
    return FromNarrow(sNarrow, NarrowCodePage());
}

std::string FromNarrow(std::string_view sNarrow, CodePage eCodePage) {
    std::string s;
    AppendFromNarrow(s, sNarrow, eCodePage);
    return s;
}

bool IsValidUtf8(std::string_view sBytes) {
    for (std::size_t i = 0; i < sBytes.size();) {
        const std::size_t nStart = i;
        if (DecodeUtf8(sBytes, i) == 0xFFFD && i - nStart == 1) return false;
    }
    return true;
}

std::string_view CharPrefix(std::string_view sText, std::size_t nChars, CodePage eCodePage) {
    if (eCodePage != CodePage::Utf8) return sText.substr(0, nChars);
    std::size_t i = 0;
    for (std::size_t n = 0; n < nChars && i < sText.size(); ++n)
        DecodeUtf8(sText, i);
    return sText.substr(0, i);
}

}  // namespace tnw::platform
