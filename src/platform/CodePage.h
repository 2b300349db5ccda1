// The narrow code page: text in files and dBase fields is one byte per character. The API's
// strings are UTF-8; these convert between the two.
#pragma once

#include <string>
#include <string_view>

namespace tnw::platform {

enum class CodePage {
    Windows1252,  // the default
    Latin1,       // ISO-8859-1
};

// The code page in use; the TNW_CODEPAGE environment variable ("1252", "latin1") sets the
// starting value.
CodePage NarrowCodePage();
void SetNarrowCodePage(CodePage eCodePage);

// UTF-8 to narrow bytes; characters the code page lacks become "?".
std::string ToNarrow(std::string_view sUtf8);
void AppendNarrow(std::string& sOut, std::string_view sUtf8);
// Narrow bytes to UTF-8.
std::string FromNarrow(std::string_view sNarrow);
void AppendFromNarrow(std::string& sOut, std::string_view sNarrow);

}  // namespace tnw::platform
