#include "core/KeyedList.h"

namespace tnw {

std::string FoldCase(std::string_view s) {
    std::string sFolded(s);
    for (char& c : sFolded)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return sFolded;
}

}  // namespace tnw
