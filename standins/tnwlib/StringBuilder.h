// The stand-in text builder. The text is kept in blocks that are never moved once filled, so
// a long text costs about its own length while it grows, and twice that only while Text hands
// out the whole of it in one piece.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/StringBuilder.h"

namespace tnw::standins {

class StringBuilder final : public tnwStringBuilder {
public:
    void Append(std::string_view sText) override;
    void AppendLine(std::string_view sText) override;
    void SetSeparator(std::string_view sSeparator) override { m_sSeparator = sSeparator; }
    std::string Text() const override;

private:
    void Add(std::string_view sText);

    std::string m_sSeparator;
    std::vector<std::string> m_aBlocks;
    std::size_t m_nLength = 0;
};

// Makes the builder creatable as "tnwlib.tnwStringBuilder".
void RegisterStringBuilder();

}  // namespace tnw::standins
