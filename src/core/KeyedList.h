// A list that keeps insertion order, finds an entry by key or by 1-based place, compares keys
// without regard to case and refuses a key it already has.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/Error.h"

namespace tnw {

// ASCII case folding: keys are UTF-8, and only A-Z fold, as in a binary-safe key compare.
std::string FoldCase(std::string_view s);

template <class T>
class KeyedList {
public:
    // False, and nothing added, when the key is there already.
    bool Add(std::string_view sKey, T value) {
        auto [it, bInserted] = m_index.try_emplace(FoldCase(sKey), m_items.size());
        if (!bInserted) return false;
        m_items.emplace_back(std::string(sKey), std::move(value));
        return true;
    }

    std::int32_t Count() const { return static_cast<std::int32_t>(m_items.size()); }
    bool Contains(std::string_view sKey) const { return m_index.count(FoldCase(sKey)) != 0; }

    // Nothing when the key is absent.
    const T* Find(std::string_view sKey) const {
        auto it = m_index.find(FoldCase(sKey));
        return it == m_index.end() ? nullptr : &m_items[it->second].second;
    }
    T* Find(std::string_view sKey) {
        auto it = m_index.find(FoldCase(sKey));
        return it == m_index.end() ? nullptr : &m_items[it->second].second;
    }

    // 1-based place; error 9 outside 1..Count.
    const T& At(std::int32_t lPlace) const {
        if (lPlace < 1 || lPlace > Count()) Raise(errSubscript, "KeyedList");
        return m_items[static_cast<std::size_t>(lPlace - 1)].second;
    }
    const std::string& KeyAt(std::int32_t lPlace) const {
        if (lPlace < 1 || lPlace > Count()) Raise(errSubscript, "KeyedList");
        return m_items[static_cast<std::size_t>(lPlace - 1)].first;
    }

    // Removes the entry of that key; false when there is none.
    bool Remove(std::string_view sKey) {
        auto it = m_index.find(FoldCase(sKey));
        if (it == m_index.end()) return false;
        std::size_t nPlace = it->second;
        m_index.erase(it);
        m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(nPlace));
        for (auto& entry : m_index)
            if (entry.second > nPlace) --entry.second;
        return true;
    }

    void Clear() {
        m_items.clear();
        m_index.clear();
    }

    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

private:
    std::vector<std::pair<std::string, T>> m_items;
    std::unordered_map<std::string, std::size_t> m_index;
};

}  // namespace tnw
