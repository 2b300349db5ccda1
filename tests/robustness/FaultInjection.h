// Fault injection in the file layer: while alive, every system call of platform::Sys() is
// counted, and a chosen call can fail. The real calls come back at the end of the scope, also
// when a test stops half-way.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "decoders/tnwDBFDecoder.h"
#include "platform/File.h"

namespace tnw::test {

enum class SysCall { Open, Read, Write, Lseek, Close, Unlink };
inline constexpr std::array kAllSysCalls = {SysCall::Open,  SysCall::Read,  SysCall::Write,
                                            SysCall::Lseek, SysCall::Close, SysCall::Unlink};
const char* SysCallName(SysCall eCall);

class ScopedSystemCalls {
public:
    ScopedSystemCalls();
    ~ScopedSystemCalls();
    ScopedSystemCalls(const ScopedSystemCalls&) = delete;
    ScopedSystemCalls& operator=(const ScopedSystemCalls&) = delete;

    // Call number nFailAt of eCall (counted from 1, from now) fails with iErrno. A close that
    // fails has closed its descriptor all the same, as the system's does.
    void FailAt(SysCall eCall, int nFailAt, int iErrno);
    // A disk with nFree bytes left: a write takes what still fits, then writes fail with ENOSPC.
    void LimitDiskSpace(std::int64_t nFree);

    int Count(SysCall eCall) const;
    // Whether an injected failure has happened.
    bool Fired() const;

private:
    struct State;
    platform::FileSystemCalls m_tSaved;
    std::unique_ptr<State> m_pState;
};

// Descriptors this process has open; a fault path that leaks one shows here.
int OpenDescriptorCount();

// The numbers of one column of a table, record by record: what a set that claims to be whole
// really holds.
inline std::vector<std::int32_t> ReadNumbers(const std::string& sPath, const std::string& sKey) {
    std::vector<std::int32_t> vNumbers;
    tnwDBFDecoder oReader;
    oReader.SetFilename(sPath);
    const auto oColumn = oReader.Columns()->Item(sKey);
    for (bool bMore = oColumn && oReader.MoveFirst().EqualsTrue(); bMore;
         bMore = oReader.MoveNext())
        vNumbers.push_back(oColumn->Value().ToLong());
    return vNumbers;
}

}  // namespace tnw::test
