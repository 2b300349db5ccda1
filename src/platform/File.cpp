#include "platform/File.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "core/Error.h"

namespace tnw::platform {

namespace {

[[noreturn]] void RaiseErrno(int iErrno, const std::string& sPath) {
    std::int32_t lNumber = errPathFileAccess;
    if (iErrno == ENOENT) lNumber = errFileNotFound;
    if (iErrno == ENOSPC || iErrno == EDQUOT || iErrno == EFBIG) lNumber = errDiskFull;
    // A full disk and a file at the size limit set for the process read alike otherwise.
    const std::string sWhat = iErrno == EFBIG ? StandardDescription(lNumber) +
                                                    " (the file reached the size limit for files)"
                                              : StandardDescription(lNumber);
    throw Error(lNumber, "tnwEncoders", sWhat + (sPath.empty() ? "" : ": " + sPath));
}

}  // namespace

FileSystemCalls DefaultSystemCalls() {
    FileSystemCalls calls;
    calls.open = [](const char* sPath, int iFlags, int iMode) {
        return ::open(sPath, iFlags, iMode);
    };
    calls.read = [](int iFd, void* p, std::size_t n) { return ::read(iFd, p, n); };
    calls.write = [](int iFd, const void* p, std::size_t n) { return ::write(iFd, p, n); };
    calls.lseek = [](int iFd, off_t l, int iWhence) { return ::lseek(iFd, l, iWhence); };
    calls.close = [](int iFd) { return ::close(iFd); };
    calls.unlink = [](const char* sPath) { return ::unlink(sPath); };
    return calls;
}

FileSystemCalls& Sys() {
    static FileSystemCalls calls = DefaultSystemCalls();
    return calls;
}

bool FileExists(const std::string& sPath) {
    struct stat st;
    return ::stat(sPath.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

std::int64_t FileLength(const std::string& sPath) {
    struct stat st;
    if (::stat(sPath.c_str(), &st) != 0) return -1;
    return static_cast<std::int64_t>(st.st_size);
}

void DeleteFile(const std::string& sPath) {
    if (Sys().unlink(sPath.c_str()) != 0 && errno != ENOENT) RaiseErrno(errno, sPath);
}

// ---- OutputFile ----

OutputFile::~OutputFile() {
    try {
        Close();
    } catch (...) {
        // A destructor cannot report; the owner closes explicitly where failures matter.
    }
}

void OutputFile::Open(const std::string& sPath) {
    // A file still open keeps what it was given: its buffered bytes go out before it closes.
    if (m_iFd >= 0) {
        try {
            Flush();
        } catch (...) {
            Abandon();
            throw;
        }
        Abandon();
    }
    int iFd = Sys().open(sPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (iFd < 0) RaiseErrno(errno, sPath);
    m_iFd = iFd;
    m_sPath = sPath;
    if (!m_pBuffer) m_pBuffer = std::make_unique<char[]>(kBufferSize);
    m_nUsed = 0;
    m_lPosition = 0;
}

void OutputFile::RaiseIfClosed() const {
    if (m_iFd < 0) Raise(errBadFileNumber);
}

void OutputFile::Write(const void* pData, std::size_t nBytes) {
    RaiseIfClosed();
    const char* p = static_cast<const char*>(pData);
    if (m_nUsed + nBytes > kBufferSize) {
        Flush();
        if (nBytes >= kBufferSize) {
            // Large blocks go straight out.
            while (nBytes > 0) {
                ssize_t n = Sys().write(m_iFd, p, nBytes);
                if (n < 0 && errno == EINTR) continue;
                if (n <= 0) RaiseErrno(n < 0 ? errno : ENOSPC, m_sPath);
                p += n;
                nBytes -= static_cast<std::size_t>(n);
                m_lPosition += n;
            }
            return;
        }
    }
    std::memcpy(m_pBuffer.get() + m_nUsed, p, nBytes);
    m_nUsed += nBytes;
    m_lPosition += static_cast<std::int64_t>(nBytes);
}

char* OutputFile::Reserve(std::size_t nBytes) {
    RaiseIfClosed();
    if (nBytes > kBufferSize) Raise(errOverflow);
    if (m_nUsed + nBytes > kBufferSize) Flush();
    char* p = m_pBuffer.get() + m_nUsed;
    m_nUsed += nBytes;
    m_lPosition += static_cast<std::int64_t>(nBytes);
    return p;
}

void OutputFile::Flush() {
    RaiseIfClosed();
    std::size_t nDone = 0;
    while (nDone < m_nUsed) {
        ssize_t n = Sys().write(m_iFd, m_pBuffer.get() + nDone, m_nUsed - nDone);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            // Keep what did not go out, so that the position stays true.
            std::memmove(m_pBuffer.get(), m_pBuffer.get() + nDone, m_nUsed - nDone);
            m_nUsed -= nDone;
            RaiseErrno(n < 0 ? errno : ENOSPC, m_sPath);
        }
        nDone += static_cast<std::size_t>(n);
    }
    m_nUsed = 0;
}

void OutputFile::Seek(std::int64_t lPosition) {
    Flush();
    if (Sys().lseek(m_iFd, static_cast<off_t>(lPosition), SEEK_SET) < 0) RaiseErrno(errno, m_sPath);
    m_lPosition = lPosition;
}

void OutputFile::Close() {
    if (m_iFd < 0) return;
    int iFd = m_iFd;
    try {
        Flush();
    } catch (...) {
        Abandon();
        throw;
    }
    // A file whose name went away while it was written is lost once its descriptor closes.
    struct stat st;
    const bool bRemoved = ::fstat(iFd, &st) == 0 && st.st_nlink == 0;
    m_iFd = -1;
    if (Sys().close(iFd) != 0) RaiseErrno(errno, m_sPath);
    if (bRemoved) RaiseErrno(EIO, m_sPath);
}

void OutputFile::Truncate(std::int64_t lPosition) {
    RaiseIfClosed();
    const std::int64_t lOnDisk = m_lPosition - static_cast<std::int64_t>(m_nUsed);
    if (lPosition >= lOnDisk) {
        // Only buffered bytes go.
        m_nUsed = static_cast<std::size_t>(lPosition - lOnDisk);
        m_lPosition = lPosition;
        return;
    }
    m_nUsed = 0;
    if (::ftruncate(m_iFd, static_cast<off_t>(lPosition)) != 0) RaiseErrno(errno, m_sPath);
    if (Sys().lseek(m_iFd, static_cast<off_t>(lPosition), SEEK_SET) < 0) RaiseErrno(errno, m_sPath);
    m_lPosition = lPosition;
}

void OutputFile::Abandon() noexcept {
    if (m_iFd < 0) return;
    Sys().close(m_iFd);
    m_iFd = -1;
    m_nUsed = 0;
}

// ---- InputFile ----

InputFile::~InputFile() {
    Close();
}

void InputFile::Open(const std::string& sPath) {
    Close();
    int iFd = Sys().open(sPath.c_str(), O_RDONLY | O_CLOEXEC, 0);
    if (iFd < 0) RaiseErrno(errno, sPath);
    struct stat st;
    if (::fstat(iFd, &st) == 0 && S_ISDIR(st.st_mode)) {
        Sys().close(iFd);
        RaiseErrno(EISDIR, sPath);
    }
    m_iFd = iFd;
    if (!m_pBuffer) m_pBuffer = std::make_unique<char[]>(kBufferSize);
    m_nStart = m_nEnd = 0;
    m_lPosition = 0;
}

void InputFile::Close() noexcept {
    if (m_iFd < 0) return;
    Sys().close(m_iFd);
    m_iFd = -1;
    m_nStart = m_nEnd = 0;
}

bool InputFile::Fill() {
    if (m_iFd < 0) Raise(errBadFileNumber);
    if (m_nStart < m_nEnd) return true;
    m_nStart = m_nEnd = 0;
    return ReadMore();
}

bool InputFile::ReadMore() {
    for (;;) {
        ssize_t n = Sys().read(m_iFd, m_pBuffer.get() + m_nEnd, kBufferSize - m_nEnd);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) RaiseErrno(errno, "");
        m_nEnd += static_cast<std::size_t>(n);
        return n > 0;
    }
}

std::size_t InputFile::Read(void* pData, std::size_t nBytes) {
    char* p = static_cast<char*>(pData);
    std::size_t nDone = 0;
    while (nDone < nBytes && Fill()) {
        std::size_t n = std::min(nBytes - nDone, m_nEnd - m_nStart);
        std::memcpy(p + nDone, m_pBuffer.get() + m_nStart, n);
        m_nStart += n;
        // At once, so that a refill that fails leaves the position where the bytes ended.
        m_lPosition += static_cast<std::int64_t>(n);
        nDone += n;
    }
    return nDone;
}

std::string_view InputFile::ReadView(std::size_t nBytes) {
    if (nBytes > kBufferSize) {
        m_sLongView.resize(nBytes);
        return std::string_view(m_sLongView.data(), Read(m_sLongView.data(), nBytes));
    }
    if (m_nEnd - m_nStart < nBytes) {
        if (m_iFd < 0) Raise(errBadFileNumber);
        // What is left moves to the front of the buffer, and the rest is read in behind it.
        std::memmove(m_pBuffer.get(), m_pBuffer.get() + m_nStart, m_nEnd - m_nStart);
        m_nEnd -= m_nStart;
        m_nStart = 0;
        try {
            while (m_nEnd < nBytes && ReadMore()) {
            }
        } catch (...) {
            // As with Read: the bytes that came before the failure have been read.
            m_lPosition += static_cast<std::int64_t>(m_nEnd - m_nStart);
            m_nStart = m_nEnd;
            throw;
        }
    }
    const std::size_t n = std::min(nBytes, m_nEnd - m_nStart);
    const std::string_view sView(m_pBuffer.get() + m_nStart, n);
    m_nStart += n;
    m_lPosition += static_cast<std::int64_t>(n);
    return sView;
}

void InputFile::ReadExact(void* pData, std::size_t nBytes) {
    if (Read(pData, nBytes) != nBytes) Raise(errInputPastEnd);
}

bool InputFile::AtEnd() {
    return !Fill();
}

bool InputFile::ReadLine(std::string& sLine, LineEnds eEnds, std::size_t& nConsumed,
                         std::size_t nMaxLength) {
    const auto keep = [&](const char* pBegin, const char* pEnd) {
        const std::size_t nRoom = nMaxLength - std::min(nMaxLength, sLine.size());
        sLine.append(pBegin, std::min(nRoom, static_cast<std::size_t>(pEnd - pBegin)));
    };
    nConsumed = 0;
    // At the end the caller's line stays as it was: it is the last line read.
    if (!Fill()) return false;
    sLine.clear();
    for (;;) {
        const char* pBegin = m_pBuffer.get() + m_nStart;
        const char* pEnd = m_pBuffer.get() + m_nEnd;
        const char* pStop = pBegin;
        if (eEnds == LineEnds::CarriageReturn) {
            pStop = static_cast<const char*>(
                std::memchr(pBegin, '\r', static_cast<std::size_t>(pEnd - pBegin)));
        } else {
            while (pStop < pEnd && *pStop != '\r' && *pStop != '\n')
                ++pStop;
            if (pStop == pEnd) pStop = nullptr;
        }
        if (!pStop) {
            keep(pBegin, pEnd);
            nConsumed += static_cast<std::size_t>(pEnd - pBegin);
            m_lPosition += pEnd - pBegin;
            m_nStart = m_nEnd;
            if (!Fill()) return true;  // the last line has no end
            continue;
        }
        keep(pBegin, pStop);
        std::size_t nTaken = static_cast<std::size_t>(pStop - pBegin) + 1;
        const bool bCarriageReturn = *pStop == '\r';
        m_nStart += nTaken;
        m_lPosition += static_cast<std::int64_t>(nTaken);
        nConsumed += nTaken;
        // A line feed right after a carriage return belongs to the same line end.
        if (bCarriageReturn && Fill() && m_pBuffer[m_nStart] == '\n') {
            ++m_nStart;
            ++m_lPosition;
            ++nConsumed;
        }
        return true;
    }
}

void InputFile::Seek(std::int64_t lPosition) {
    if (m_iFd < 0) Raise(errBadFileNumber);
    if (lPosition < 0) Raise(errBadFileNumber);
    // Within the buffer, move in it; else drop it.
    std::int64_t lBufferStart = m_lPosition - static_cast<std::int64_t>(m_nStart);
    if (lPosition >= lBufferStart &&
        lPosition <= lBufferStart + static_cast<std::int64_t>(m_nEnd)) {
        m_nStart = static_cast<std::size_t>(lPosition - lBufferStart);
        m_lPosition = lPosition;
        return;
    }
    if (Sys().lseek(m_iFd, static_cast<off_t>(lPosition), SEEK_SET) < 0) RaiseErrno(errno, "");
    m_nStart = m_nEnd = 0;
    m_lPosition = lPosition;
}

}  // namespace tnw::platform
