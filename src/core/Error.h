// The one error type of the library: a run-time error number, the source text and a description.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace tnw {

// Classic run-time error numbers used for platform failures.
enum ErrorNumber : std::int32_t {
    errInvalidCall = 5,
    errOverflow = 6,
    errOutOfMemory = 7,
    errSubscript = 9,
    errTypeMismatch = 13,
    errBadFileNumber = 52,
    errFileNotFound = 53,
    errDiskFull = 61,
    errInputPastEnd = 62,
    errPathFileAccess = 75,
    errBadFileFormat = 321,
    errObjectNotSet = 91,
    errCantCreateObject = 429,
    errNoSuchMethod = 438,
    errKeyExists = 457,
};

// The library's own numbers.
inline constexpr std::int32_t errNotLonLat = static_cast<std::int32_t>(0x80040001u);
inline constexpr std::int32_t errCantAccessSource = static_cast<std::int32_t>(0x80040005u);

class Error : public std::exception {
public:
    Error(std::int32_t lNumberIn, std::string sSourceIn, std::string sDescriptionIn)
        : lNumber(lNumberIn),
          sSource(std::move(sSourceIn)),
          sDescription(std::move(sDescriptionIn)) {}

    const char* what() const noexcept override { return sDescription.c_str(); }

    std::int32_t lNumber;
    std::string sSource;
    std::string sDescription;
};

// The standard description of a classic run-time error number ("Overflow", "File not found"...).
std::string StandardDescription(std::int32_t lNumber);

// Raises a classic run-time error with its standard description.
[[noreturn]] void Raise(std::int32_t lNumber, std::string sSource = "tnwEncoders");

// The exception in flight as an Error; other exceptions get the nearest classic number.
Error CurrentError(std::exception_ptr pException);

}  // namespace tnw
