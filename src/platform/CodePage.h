// The narrow code page: text in files and dBase fields is one byte per character. The API's
// strings are UTF-8; these convert between the two.
#pragma once

#include <string>
#include <string_view>

namespace tnw::platform {

enum class CodePage {
    Windows1252,  // the default
    Latin1,       // ISO-8859-1
    Utf8,         // text kept as UTF-8; a byte that starts no valid sequence reads as in 1252
};

// The code page in use; the TNW_CODEPAGE environment variable ("1252", "latin1") sets the
// starting value.
CodePage NarrowCodePage();
void SetNarrowCodePage(CodePage eCodePage);

// UTF-8 to narrow bytes; characters the code page lacks become "?".
std::string ToNarrow(std::string_view sUtf8);
void AppendNarrow(std::string& sOut, std::string_view sUtf8);
void AppendNarrow(std::string& sOut, std::string_view sUtf8, CodePage eCodePage);
// Narrow bytes to UTF-8.
std::string FromNarrow(std::string_view sNarrow);
std::string FromNarrow(std::string_view sNarrow, CodePage eCodePage);
void AppendFromNarrow(std::string& sOut, std::string_view sNarrow);
void AppendFromNarrow(std::string& sOut, std::string_view sNarrow, CodePage eCodePage);

// True when the bytes are valid UTF-8.
bool IsValidUtf8(std::string_view sBytes);
// The first nChars characters of a text in that code page: bytes, or whole UTF-8 sequences.
std::string_view CharPrefix(std::string_view sText, std::size_t nChars, CodePage eCodePage);

}  // namespace tnw::platform
