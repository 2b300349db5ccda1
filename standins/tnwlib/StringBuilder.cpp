#include "tnwlib/StringBuilder.h"

#include <algorithm>
#include <memory>

#include "core/Component.h"

namespace tnw::standins {

namespace {
// Blocks start small, so that a short text stays small, and double up to this size.
constexpr std::size_t kFirstBlock = 256;
constexpr std::size_t kLargestBlock = std::size_t{1} << 20;
}  // namespace

void StringBuilder::Append(std::string_view sText) {
    Add(m_sSeparator);
    Add(sText);
}

void StringBuilder::AppendLine(std::string_view sText) {
    Append(sText);
    Add("\r\n");
}

void StringBuilder::Add(std::string_view sText) {
    m_nLength += sText.size();
    while (!sText.empty()) {
        if (m_aBlocks.empty() || m_aBlocks.back().size() == m_aBlocks.back().capacity()) {
            const std::size_t nSize =
                m_aBlocks.empty() ? kFirstBlock
                                  : std::min(m_aBlocks.back().capacity() * 2, kLargestBlock);
            m_aBlocks.emplace_back().reserve(nSize);
        }
        std::string& sBlock = m_aBlocks.back();
        const std::size_t nTaken = std::min(sText.size(), sBlock.capacity() - sBlock.size());
        sBlock.append(sText.substr(0, nTaken));
        sText.remove_prefix(nTaken);
    }
}

std::string StringBuilder::Text() const {
    std::string sText;
    sText.reserve(m_nLength);
    for (const std::string& sBlock : m_aBlocks)
        sText += sBlock;
    return sText;
}

void RegisterStringBuilder() {
    tnwObjectFactory::Register(kProgIdStringBuilder,
                               [] { return std::make_shared<StringBuilder>(); });
}

}  // namespace tnw::standins
