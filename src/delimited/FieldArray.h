// The fields of one parsed line: as an array of strings with lower bound 0, and as views into
// the line for the reader's own use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
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

private:
    [[noreturn]] static void RaiseSubscript();

    std::vector<std::string> m_vFields;  // m_nCount in use, the rest kept for reuse
    std::size_t m_nCount = 0;
    bool m_bSized = false;
};

// The fields of the line at hand as views: into the line itself where a field is a piece of
// it, else into texts kept here. The views hold only while the line and this object stay as
// they are. Sizes and errors as in FieldArray.
class LineFields {
public:
    bool HasSize() const { return m_bSized; }
    std::int32_t UBound() const {
        if (!m_bSized) RaiseSubscript();
        return static_cast<std::int32_t>(m_vFields.size()) - 1;
    }
    std::string_view Item(std::int32_t lIndex) const {
        if (!m_bSized || lIndex < 0 || static_cast<std::size_t>(lIndex) >= m_vFields.size()) {
            RaiseSubscript();
        }
        return m_vFields[static_cast<std::size_t>(lIndex)];
    }

    // Back to no size.
    void Clear() {
        m_bSized = false;
        m_vFields.clear();
    }
    // nFields empty fields.
    void Resize(std::size_t nFields);
    // A new last field.
    void Append(std::string_view sField) {
        m_vFields.push_back(sField);
        m_bSized = true;
    }
    // Field nIndex, below the size.
    void Set(std::size_t nIndex, std::string_view sField) { m_vFields[nIndex] = sField; }
    // A text of field nIndex's own, for a field that is no piece of the line; below the size.
    std::string& Text(std::size_t nIndex) { return m_vTexts[nIndex]; }

private:
    [[noreturn]] static void RaiseSubscript();

    std::vector<std::string_view> m_vFields;
    std::vector<std::string> m_vTexts;  // at least as many as fields, kept for reuse
    bool m_bSized = false;
};

}  // namespace tnw
