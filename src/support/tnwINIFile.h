// An INI document in memory: a keyed list of sections, each a keyed list of key and value
// pairs, written out as text by Save. Sections and values come only from their owner's Create.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/KeyedList.h"
#include "core/Variant.h"

namespace tnw {

enum TNW_Encoders_OpenModes : std::int32_t {
    TNW_OpenMode_Create = 1,
    TNW_OpenMode_Open = 2,
    TNW_OpenMode_OpenCreate = 3,
};

namespace detail {

// The list of a document or a section. It may be missing (a document opened without one):
// then Count, Item and NewEnum raise error 91, Add and Remove give false.
template <class T>
class INIEntries {
public:
    std::int32_t Count() const { return List().Count(); }
    // A text finds by key (error 5 when absent), anything else by 1-based place (error 9).
    std::shared_ptr<T> Item(const Variant& vKey) const {
        if (const std::string* sKey = vKey.AsString()) {
            const std::shared_ptr<T>* oEntry = List().Find(*sKey);
            if (!oEntry) Raise(errInvalidCall);
            return *oEntry;
        }
        return List().At(vKey.ToLong());
    }
    std::vector<std::shared_ptr<T>> NewEnum() const {
        std::vector<std::shared_ptr<T>> aEntries;
        for (const auto& entry : List())
            aEntries.push_back(entry.second);
        return aEntries;
    }
    void Clear() { m_oList.emplace(); }
    void Drop() { m_oList.reset(); }
    bool Add(const std::shared_ptr<T>& oEntry) {
        return m_oList && m_oList->Add(oEntry->Key(), oEntry);
    }
    // False, and no error, for a key or place that isn't there.
    bool Remove(const Variant& vKey) {
        if (!m_oList) return false;
        if (const std::string* sKey = vKey.AsString()) return m_oList->Remove(*sKey);
        if (!vKey.IsNumeric() || !(std::fabs(vKey.ToDouble()) < 2e9)) return false;
        const std::int32_t lPlace = vKey.ToLong();
        if (lPlace < 1 || lPlace > m_oList->Count()) return false;
        return m_oList->Remove(m_oList->KeyAt(lPlace));
    }

private:
    const KeyedList<std::shared_ptr<T>>& List() const {
        if (!m_oList) Raise(errObjectNotSet);
        return *m_oList;
    }

    std::optional<KeyedList<std::shared_ptr<T>>> m_oList{std::in_place};
};

}  // namespace detail

class tnwINISection;

class tnwINIValue {
public:
    const std::string& Key() const { return sKey; }
    const std::string& value() const { return sValue; }
    void SetValue(std::string sValueIn) { sValue = std::move(sValueIn); }

private:
    friend class tnwINISection;
    explicit tnwINIValue(std::string sKeyIn) : sKey(std::move(sKeyIn)) {}

    std::string sValue;
    std::string sKey;
};

class tnwINISection {
public:
    const std::string& Key() const { return sKey; }
    std::shared_ptr<tnwINIValue> Item(const Variant& vKey) const { return oValues.Item(vKey); }
    std::vector<std::shared_ptr<tnwINIValue>> NewEnum() const { return oValues.NewEnum(); }
    std::int32_t Count() const { return oValues.Count(); }
    void Clear() { oValues.Clear(); }
    // A new value holding sValue; nothing, and no error, when the key is there already.
    std::shared_ptr<tnwINIValue> Create(const std::string& sKeyIn, const std::string& sValue);
    bool Remove(const Variant& vKey) { return oValues.Remove(vKey); }

private:
    friend class tnwINIFile;
    explicit tnwINISection(std::string sKeyIn) : sKey(std::move(sKeyIn)) {}

    std::string sKey;
    detail::INIEntries<tnwINIValue> oValues;
};

class tnwINIFile {
public:
    const std::string& Filename() const { return sFilename; }
    // Always 0, as is the result of OpenINI: a host learns of a failure by the error raised.
    TNW_Encoders_OpenModes ModeOpened() const { return eModeOpened; }

    // Stores the name and drops the list. A mode holding TNW_OpenMode_Open reads an existing
    // file and starts an empty list; one holding TNW_OpenMode_Create starts an empty list when
    // there is no file; TNW_OpenMode_Create alone starts one without touching the disk. Any
    // other case leaves no list until Clear. The file's sections are kept only with
    // LoadContent; a file that can't be read raises the platform's error.
    TNW_Encoders_OpenModes OpenINI(const std::string& sFilenameIn,
                                   TNW_Encoders_OpenModes eMode = TNW_Encoders_OpenModes{});
    // Writes the document to sFilenameOut, or to the stored name when that is empty, replacing
    // the file. Always false: a file that can't be written raises the platform's error.
    bool Save(const std::string& sFilenameOut = "");

    std::shared_ptr<tnwINISection> Item(const Variant& vKey) const { return oSections.Item(vKey); }
    std::vector<std::shared_ptr<tnwINISection>> NewEnum() const { return oSections.NewEnum(); }
    std::int32_t Count() const { return oSections.Count(); }
    void Clear() { oSections.Clear(); }
    // A new section; nothing, and no error, when the key is there already or there is no list.
    std::shared_ptr<tnwINISection> Create(const std::string& sKey);
    bool Remove(const Variant& vKey) { return oSections.Remove(vKey); }

    // Off by default: OpenINI reads an existing file through and keeps nothing of it, so the
    // document shows no sections and a Save replaces the file's content. On, the file's
    // sections and values fill the document (see docs/support.md for the reading rules).
    bool LoadContent() const { return bLoadContent; }
    void SetLoadContent(bool bLoad) { bLoadContent = bLoad; }

private:
    void ReadFile();

    std::string sFilename;
    TNW_Encoders_OpenModes eModeOpened{};
    detail::INIEntries<tnwINISection> oSections;
    bool bLoadContent = false;
};

}  // namespace tnw
