#include "core/Variant.h"

#include <charconv>
#include <cmath>

#include "core/Error.h"
#include "core/NumberText.h"
#include "core/SerialDate.h"

namespace tnw {

namespace {

// A strict reading of text as a number: optional blanks around one decimal number, "." as
// decimal mark. Nothing else converts.
bool ParseStrict(std::string_view s, double& dValue) {
    while (!s.empty() && s.front() == ' ')
        s.remove_prefix(1);
    while (!s.empty() && s.back() == ' ')
        s.remove_suffix(1);
    if (s.empty()) return false;
    // One sign, then digits or a decimal mark: no "inf", "nan" or "+-5".
    const bool bNegative = s.front() == '-';
    if (s.front() == '+' || s.front() == '-') s.remove_prefix(1);
    if (s.empty() || !((s.front() >= '0' && s.front() <= '9') || s.front() == '.')) return false;
    auto res = std::from_chars(s.data(), s.data() + s.size(), dValue);
    if (bNegative) dValue = -dValue;
    return res.ec == std::errc() && res.ptr == s.data() + s.size();
}

}  // namespace

VarType Variant::Type() const {
    static constexpr VarType aTypes[] = {vtEmpty,  vtAbsent, vtInt16,  vtInt32,  vtFloat,
                                         vtDouble, vtDate,   vtString, vtBoolean};
    return aTypes[m_v.index()];
}

bool Variant::IsNumeric() const {
    VarType t = Type();
    return t == vtInt16 || t == vtInt32 || t == vtFloat || t == vtDouble;
}

double Variant::ToDouble() const {
    switch (Type()) {
        case vtEmpty:
            return 0.0;
        case vtInt16:
            return *As<std::int16_t>();
        case vtInt32:
            return *As<std::int32_t>();
        case vtFloat:
            return *As<float>();
        case vtDouble:
            return *As<double>();
        case vtDate:
            return As<SerialDate>()->dSerial;
        case vtBoolean:
            return *As<bool>() ? -1.0 : 0.0;
        case vtString: {
            double d = 0.0;
            if (!ParseStrict(*AsString(), d)) Raise(errTypeMismatch);
            return d;
        }
        default:
            Raise(errTypeMismatch);
    }
}

std::int32_t Variant::ToLong() const {
    if (const auto* l = As<std::int32_t>()) return *l;
    return RoundToLong(ToDouble());
}

bool Variant::ToBool() const {
    if (const auto* b = As<bool>()) return *b;
    if (const auto* s = AsString()) {
        if (FoldCaseEquals(*s, "true")) return true;
        if (FoldCaseEquals(*s, "false")) return false;
    }
    return ToDouble() != 0.0;
}

SerialDate Variant::ToDate() const {
    if (const auto* t = As<SerialDate>()) return *t;
    if (const auto* s = AsString()) {
        if (auto t = ParseDateText(*s)) return *t;
        Raise(errTypeMismatch);
    }
    return SerialDate{ToDouble()};
}

std::string Variant::ToText() const {
    switch (Type()) {
        case vtEmpty:
            return {};
        case vtString:
            return *AsString();
        case vtBoolean:
            return *As<bool>() ? "True" : "False";
        case vtDate:
            return DateText(*As<SerialDate>());
        case vtAbsent:
            Raise(errTypeMismatch);
        default: {
            std::string s = NumberText(*this);
            // Plain text: no blank in front, and a zero before a leading decimal mark.
            if (s.front() == ' ') s.erase(0, 1);
            if (s.front() == '.') s.insert(0, 1, '0');
            if (s.size() > 1 && s[0] == '-' && s[1] == '.') s.insert(1, 1, '0');
            return s;
        }
    }
}

bool Variant::EqualsTrue() const {
    if (const auto* b = As<bool>()) return *b;
    return IsNumeric() && ToDouble() == -1.0;
}

bool FoldCaseEquals(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        char ca = a[i], cb = b[i];
        if (ca >= 'A' && ca <= 'Z') ca = static_cast<char>(ca - 'A' + 'a');
        if (cb >= 'A' && cb <= 'Z') cb = static_cast<char>(cb - 'A' + 'a');
        if (ca != cb) return false;
    }
    return true;
}

}  // namespace tnw
