// The tagged value: empty, absent (an optional argument not given), or one of the type
// numbers 2 int16, 3 int32, 4 float, 5 double, 7 date, 8 string, 11 boolean.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace tnw {

enum VarType : std::int32_t {
    vtEmpty = 0,
    vtInt16 = 2,
    vtInt32 = 3,
    vtFloat = 4,
    vtDouble = 5,
    vtDate = 7,
    vtString = 8,
    vtAbsent = 10,  // an optional argument that was not given
    vtBoolean = 11,
};

// A date as a serial day number: whole days since 30 December 1899, the fraction the time.
struct SerialDate {
    double dSerial = 0.0;
    friend bool operator==(SerialDate, SerialDate) = default;
};

class Variant {
public:
    struct AbsentTag {
        friend bool operator==(AbsentTag, AbsentTag) = default;
    };

    Variant() = default;
    Variant(std::int16_t i) : m_v(i) {}
    Variant(std::int32_t l) : m_v(l) {}
    Variant(float f) : m_v(f) {}
    Variant(double d) : m_v(d) {}
    Variant(SerialDate t) : m_v(t) {}
    Variant(std::string s) : m_v(std::move(s)) {}
    Variant(const char* s) : m_v(std::string(s)) {}  // keeps text from binding to bool
    Variant(bool b) : m_v(b) {}

    static Variant Absent() {
        Variant v;
        v.m_v = AbsentTag{};
        return v;
    }

    VarType Type() const;
    bool IsEmpty() const { return m_v.index() == 0; }
    bool IsAbsent() const { return std::holds_alternative<AbsentTag>(m_v); }
    bool IsNumeric() const;  // int16, int32, float, double

    // Conversions with the usual run-time rules: error 13 where the value has no such reading.
    double ToDouble() const;      // empty 0, boolean -1/0, date its serial, text by a strict parse
    std::int32_t ToLong() const;  // rounded half to even; error 6 out of range
    bool ToBool() const;          // numbers: not 0; text "True"/"False" or a number
    SerialDate ToDate() const;    // numbers as serials, text as a date
    std::string ToText() const;   // the value as plain text: no leading blank, "True"/"False"
    bool EqualsTrue() const;      // the value equals True: boolean true or a number of -1

    // Direct access for callers that know the type.
    const std::string* AsString() const { return std::get_if<std::string>(&m_v); }
    template <class T>
    const T* As() const {
        return std::get_if<T>(&m_v);
    }

    friend bool operator==(const Variant&, const Variant&) = default;

private:
    std::variant<std::monostate, AbsentTag, std::int16_t, std::int32_t, float, double, SerialDate,
                 std::string, bool>
        m_v;
};

// Equality of two texts without regard to ASCII case.
bool FoldCaseEquals(std::string_view a, std::string_view b);

}  // namespace tnw
