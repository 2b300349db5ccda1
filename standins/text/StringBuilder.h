// The text builder: one growing string, so appending takes amortised constant time.
#pragma once

#include <string>
#include <string_view>

#include "core/Services.h"

namespace tnw::standins {

class StringBuilder final : public tnwStringBuilder {
public:
    void Append(std::string_view sText) override;
    void AppendLine(std::string_view sText) override;
    void SetSeparator(std::string_view sSeparator) override { m_sSeparator = sSeparator; }
    const std::string& Text() const override { return m_sText; }

private:
    std::string m_sText;
    std::string m_sSeparator;
};

}  // namespace tnw::standins
