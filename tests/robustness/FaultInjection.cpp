#include "FaultInjection.h"

#include <errno.h>

#include <algorithm>
#include <filesystem>

namespace tnw::test {

struct ScopedSystemCalls::State {
    std::array<int, kAllSysCalls.size()> aCounts{};
    SysCall eFailCall = SysCall::Open;
    int nFailAt = 0;  // 0: nothing planned
    int iErrno = 0;
    bool bFired = false;
    std::int64_t nFree = -1;  // -1: no limit

    // Counts one call of eCall; true when it is to fail (errno is set then).
    bool Next(SysCall eCall) {
        const int n = ++aCounts[static_cast<std::size_t>(eCall)];
        if (nFailAt > 0 && eCall == eFailCall && n == nFailAt) {
            bFired = true;
            errno = iErrno;
            return true;
        }
        return false;
    }
};

const char* SysCallName(SysCall eCall) {
    switch (eCall) {
        case SysCall::Open:
            return "open";
        case SysCall::Read:
            return "read";
        case SysCall::Write:
            return "write";
        case SysCall::Lseek:
            return "lseek";
        case SysCall::Close:
            return "close";
        case SysCall::Unlink:
            return "unlink";
    }
    return "?";
}

ScopedSystemCalls::ScopedSystemCalls()
    : m_tSaved(platform::Sys()), m_pState(std::make_unique<State>()) {
    State* p = m_pState.get();
    const platform::FileSystemCalls tReal = m_tSaved;
    auto& calls = platform::Sys();
    calls.open = [p, tReal](const char* sPath, int iFlags, int iMode) {
        return p->Next(SysCall::Open) ? -1 : tReal.open(sPath, iFlags, iMode);
    };
    calls.read = [p, tReal](int iFd, void* pData, std::size_t nBytes) -> ssize_t {
        return p->Next(SysCall::Read) ? -1 : tReal.read(iFd, pData, nBytes);
    };
    calls.write = [p, tReal](int iFd, const void* pData, std::size_t nBytes) -> ssize_t {
        if (p->Next(SysCall::Write)) return -1;
        if (p->nFree < 0) return tReal.write(iFd, pData, nBytes);
        if (p->nFree == 0) {
            p->bFired = true;
            errno = ENOSPC;
            return -1;
        }
        const auto nTaken = static_cast<std::size_t>(std::min<std::int64_t>(p->nFree, nBytes));
        const ssize_t n = tReal.write(iFd, pData, nTaken);
        if (n > 0) p->nFree -= n;
        return n;
    };
    calls.lseek = [p, tReal](int iFd, off_t lOffset, int iWhence) -> off_t {
        return p->Next(SysCall::Lseek) ? -1 : tReal.lseek(iFd, lOffset, iWhence);
    };
    calls.close = [p, tReal](int iFd) {
        const bool bFail = p->Next(SysCall::Close);
        const int iResult = tReal.close(iFd);
        if (!bFail) return iResult;
        errno = p->iErrno;
        return -1;
    };
    calls.unlink = [p, tReal](const char* sPath) {
        return p->Next(SysCall::Unlink) ? -1 : tReal.unlink(sPath);
    };
}

ScopedSystemCalls::~ScopedSystemCalls() {
    platform::Sys() = m_tSaved;
}

void ScopedSystemCalls::FailAt(SysCall eCall, int nFailAt, int iErrno) {
    m_pState->eFailCall = eCall;
    m_pState->nFailAt = Count(eCall) + nFailAt;
    m_pState->iErrno = iErrno;
}

void ScopedSystemCalls::LimitDiskSpace(std::int64_t nFree) {
    m_pState->nFree = nFree;
}

int ScopedSystemCalls::Count(SysCall eCall) const {
    return m_pState->aCounts[static_cast<std::size_t>(eCall)];
}

bool ScopedSystemCalls::Fired() const {
    return m_pState->bFired;
}

int OpenDescriptorCount() {
    int n = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++n;
    return n;
}

}  // namespace tnw::test
