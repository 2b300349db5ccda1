// Buffered RAII files with a closed state. Every system call goes through FileSystemCalls so
// that tests can make writes, seeks or opens fail.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tnw::platform {

struct FileSystemCalls {
    std::function<int(const char* sPath, int iFlags, int iMode)> open;
    std::function<ssize_t(int iFd, void* pData, std::size_t nBytes)> read;
    std::function<ssize_t(int iFd, const void* pData, std::size_t nBytes)> write;
    std::function<off_t(int iFd, off_t lOffset, int iWhence)> lseek;
    std::function<int(int iFd)> close;
    std::function<int(const char* sPath)> unlink;
};
// The calls in use; tests replace members and put them back (see ScopedFileSystemCalls).
FileSystemCalls& Sys();
FileSystemCalls DefaultSystemCalls();

bool FileExists(const std::string& sPath);
std::int64_t FileLength(const std::string& sPath);  // -1 when the file can't be examined
// Deletes a file; error 75 when it exists and can't be deleted.
void DeleteFile(const std::string& sPath);

// Binary or text output, created anew (an existing file is replaced). Writes are buffered;
// Seek flushes. Failures raise errors 52 (closed), 61 (disk full) or 75 (access).
class OutputFile {
public:
    OutputFile() = default;
    ~OutputFile();  // closes, ignoring errors
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Open(const std::string& sPath);
    bool IsOpen() const { return m_iFd >= 0; }
    // The file number: a small positive number while open, 0 when closed.
    std::int32_t Number() const { return m_iFd >= 0 ? m_iFd + 1 : 0; }
    const std::string& Path() const { return m_sPath; }

    void Write(const void* pData, std::size_t nBytes);
    void Write(std::string_view sText) { Write(sText.data(), sText.size()); }
    void WriteByte(std::uint8_t byValue) {
        if (m_iFd >= 0 && m_nUsed < kBufferSize) {
            m_pBuffer[m_nUsed++] = static_cast<char>(byValue);
            ++m_lPosition;
        } else {
            Write(&byValue, 1);
        }
    }
    // Reserves nBytes of the buffer and gives their address, for writers that fill records in
    // place; nBytes must not exceed kBufferSize.
    char* Reserve(std::size_t nBytes);

    std::int64_t Tell() const { return m_lPosition; }
    void Seek(std::int64_t lPosition);
    void Flush();
    // Flushes and closes; error 75 also when the file was removed while open. The file ends
    // closed even when this raises.
    void Close();
    // Cuts the file back to lPosition, at or before Tell(), dropping what was written behind
    // it, and goes on writing there: a record that failed half-way leaves no bytes.
    void Truncate(std::int64_t lPosition);
    // Closes without flushing, ignoring errors.
    void Abandon() noexcept;

    static constexpr std::size_t kBufferSize = 1 << 16;

private:
    void RaiseIfClosed() const;

    int m_iFd = -1;
    std::string m_sPath;
    std::unique_ptr<char[]> m_pBuffer;
    std::size_t m_nUsed = 0;
    std::int64_t m_lPosition = 0;  // logical position, buffered bytes included
};

// How lines end for ReadLine.
enum class LineEnds {
    CarriageReturn,  // CR or CR LF ends a line; a lone LF is part of the text
    Any,             // CR, CR LF or a lone LF
};

// Buffered binary input with seek, and lines of text. Failures raise errors 52, 53, 62 or 75.
class InputFile {
public:
    InputFile() = default;
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    void Open(const std::string& sPath);  // error 53 when missing, 75 when it can't be opened
    bool IsOpen() const { return m_iFd >= 0; }
    std::int32_t Number() const { return m_iFd >= 0 ? m_iFd + 1 : 0; }
    void Close() noexcept;

    // Reads up to nBytes; gives how many came (fewer only at the end of the file).
    std::size_t Read(void* pData, std::size_t nBytes);
    // Reads exactly nBytes; error 62 when the file ends first.
    void ReadExact(void* pData, std::size_t nBytes);
    // Reads up to nBytes as Read does, but gives them where they lie instead of copying them
    // out: the view holds until the next call on the file.
    std::string_view ReadView(std::size_t nBytes);
    // Reads the next line into sLine (without its end); false at the end of the file.
    // nConsumed gets the bytes taken, the line end included. Characters past nMaxLength are
    // read and dropped, so that a line without an end costs no more memory than the limit.
    bool ReadLine(std::string& sLine, LineEnds eEnds, std::size_t& nConsumed,
                  std::size_t nMaxLength = std::string::npos);
    bool AtEnd();

    std::int64_t Tell() const { return m_lPosition; }
    void Seek(std::int64_t lPosition);

    static constexpr std::size_t kBufferSize = 1 << 16;

private:
    bool Fill();      // false when nothing more can be read
    bool ReadMore();  // reads behind the valid bytes of the buffer; false at the end of the file

    int m_iFd = -1;
    std::unique_ptr<char[]> m_pBuffer;
    std::string m_sLongView;   // ReadView's bytes when they are more than the buffer holds
    std::size_t m_nStart = 0;  // next unread byte in the buffer
    std::size_t m_nEnd = 0;    // end of the valid bytes in the buffer
    std::int64_t m_lPosition = 0;
};

}  // namespace tnw::platform
