// The fields of one parsed line, as an array of strings with lower bound 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tnw {

// An array of field texts that may never have been given a size. Such an array differs from
// one of no elements (what an empty line gives): asking it for a field or for its last index
// raises error 9, as asking past the end of a sized one does. The storage of the strings is
// kept when the array is filled again, so a reader that reuses one array allocates nothing
// per line once the longest line has been seen.
class FieldArray {
public:
    bool HasSize() const { return m_bSized; }
    // Index of the last field, -1 when there are none; error 9 when the array has no size.
    std::int32_t UBound() const {
        if (!m_bSized) RaiseSubscript();
        return static_cast<std::int32_t>(m_nCount) - 1;
    }
    // Field lIndex, counted from 0; error 9 outside the array or when it has no size.
    const std::string& Item(std::int32_t lIndex) const {
        if (!m_bSized || lIndex < 0 || static_cast<std::size_t>(lIndex) >= m_nCount) {
            RaiseSubscript();
        }
        return m_vFields[static_cast<std::size_t>(lIndex)];
    }

    // Back to no size.
    void Clear() {
        m_bSized = false;
        m_nCount = 0;
    }
    // nFields empty fields.
    void Resize(std::size_t nFields);
    // A new last field, empty, to be filled by the caller; sizes the array if need be.
    std::string& Append() {
        if (m_nCount == m_vFields.size()) m_vFields.emplace_back();
        std::string& sField = m_vFields[m_nCount++];
        sField.clear();
        m_bSized = true;
        return sField;
    }
    // Field nIndex for filling; nIndex must be below the size.
    std::string& At(std::size_t nIndex) { return m_vFields[nIndex]; }

private:
    [[noreturn]] static void RaiseSubscript();

    std::vector<std::string> m_vFields;  // m_nCount in use, the rest kept for reuse
    std::size_t m_nCount = 0;
    bool m_bSized = false;
};

}  // namespace tnw
