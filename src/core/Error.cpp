#include "core/Error.h"

#include <new>
#include <stdexcept>

namespace tnw {

std::string StandardDescription(std::int32_t lNumber) {
    switch (lNumber) {
        case errInvalidCall:
            return "Invalid procedure call or argument";
        case errOverflow:
            return "Overflow";
        case errOutOfMemory:
            return "Out of memory";
        case errSubscript:
            return "Subscript out of range";
        case errTypeMismatch:
            return "Type mismatch";
        case errBadFileNumber:
            return "Bad file name or number";
        case errFileNotFound:
            return "File not found";
        case errDiskFull:
            return "Disk full";
        case errInputPastEnd:
            return "Input past end of file";
        case errPathFileAccess:
            return "Path/File access error";
        case errObjectNotSet:
            return "Object variable or With block variable not set";
        case errCantCreateObject:
            return "ActiveX component can't create object";
        case errNoSuchMethod:
            return "Object doesn't support this property or method";
        case errKeyExists:
            return "This key is already associated with an element of this collection";
        default:
            return "Application-defined or object-defined error";
    }
}

void Raise(std::int32_t lNumber, std::string sSource) {
    throw Error(lNumber, std::move(sSource), StandardDescription(lNumber));
}

Error CurrentError(std::exception_ptr pException) {
    try {
        std::rethrow_exception(pException);
    } catch (const Error& e) {
        return e;
    } catch (const std::bad_alloc&) {
        return Error(errOutOfMemory, "tnwEncoders", StandardDescription(errOutOfMemory));
    } catch (const std::out_of_range& e) {
        return Error(errSubscript, "tnwEncoders", StandardDescription(errSubscript));
    } catch (const std::exception& e) {
        return Error(errInvalidCall, "tnwEncoders", e.what());
    } catch (...) {
        return Error(errInvalidCall, "tnwEncoders", "Unknown error");
    }
}

}  // namespace tnw
