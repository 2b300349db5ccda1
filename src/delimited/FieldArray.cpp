#include "delimited/FieldArray.h"

#include "core/Error.h"

namespace tnw {

void FieldArray::RaiseSubscript() {
    Raise(errSubscript);
}

void FieldArray::Resize(std::size_t nFields) {
    if (m_vFields.size() < nFields) m_vFields.resize(nFields);
    for (std::size_t i = 0; i < nFields; ++i)
        m_vFields[i].clear();
    m_nCount = nFields;
    m_bSized = true;
}

void LineFields::RaiseSubscript() {
    Raise(errSubscript);
}

void LineFields::Resize(std::size_t nFields) {
    // Grown before any view is taken into them: a view into a text that moves would dangle.
    if (m_vTexts.size() < nFields) m_vTexts.resize(nFields);
    m_vFields.assign(nFields, std::string_view());
    m_bSized = true;
}

}  // namespace tnw
