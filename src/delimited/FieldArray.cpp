#include "delimited/FieldArray.h"

#include "core/Error.h"

namespace tnw {

std::int32_t FieldArray::UBound() const {
    if (!m_bSized) Raise(errSubscript);
    return static_cast<std::int32_t>(m_nCount) - 1;
}

const std::string& FieldArray::Item(std::int32_t lIndex) const {
    if (!m_bSized || lIndex < 0 || static_cast<std::size_t>(lIndex) >= m_nCount) {
        Raise(errSubscript);
    }
    return m_vFields[static_cast<std::size_t>(lIndex)];
}

void FieldArray::Resize(std::size_t nFields) {
    if (m_vFields.size() < nFields) m_vFields.resize(nFields);
    for (std::size_t i = 0; i < nFields; ++i)
        m_vFields[i].clear();
    m_nCount = nFields;
    m_bSized = true;
}

std::string& FieldArray::Append() {
    if (m_nCount == m_vFields.size()) m_vFields.emplace_back();
    std::string& sField = m_vFields[m_nCount++];
    sField.clear();
    m_bSized = true;
    return sField;
}

}  // namespace tnw
