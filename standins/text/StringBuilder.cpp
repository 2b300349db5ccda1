#include "text/StringBuilder.h"

namespace tnw::standins {

void StringBuilder::Append(std::string_view sText) {
    m_sText += m_sSeparator;
    m_sText += sText;
}

void StringBuilder::AppendLine(std::string_view sText) {
    Append(sText);
    m_sText += "\r\n";
}

}  // namespace tnw::standins
