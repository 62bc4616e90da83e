#pragma once

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

#include "source_utilities/uMutex.h"

namespace ZU_WEP {

/// A stdio file with a lock of its own: any thread may call, each call is whole. With no open file a call does nothing
/// and returns false or 0. Files are opened close-on-exec and closed by the destructor.
class uFile {
  public:
    uFile() = default;
    /// Keeps path and mode for `Open()`; opens nothing. `mode` is kept as a pointer: pass a literal.
    uFile(const char* path, const char* mode);
    virtual ~uFile();
    uFile(const uFile&) = delete;
    uFile& operator=(const uFile&) = delete;

    /// Opens `path` in the `fopen` mode `mode` ("r" when null or empty), closing what was open, and keeps both.
    bool Open(const char* path, const char* mode);
    /// Opens again with the path and mode kept; false when either is missing.
    bool Open();
    /// True when there was a file to close. One whose closing failed still counts as open, though nothing can be done
    /// with it any more.
    bool Close();
    /// Empties an open file and opens it again in its mode.
    bool Erase();

    std::size_t Write(const void* data, std::size_t size);
    std::size_t Read(void* data, std::size_t size);
    bool WriteString(const char* text);
    /// Reads up to a line feed, which is kept, or `size` - 1 characters.
    bool ReadString(char* buffer, std::size_t size);
    int Printf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    bool Flush();
    /// Writes and flushes.
    bool WriteThrough(const void* data, std::size_t size);

    bool SeekToBegin();
    bool SeekToEnd();
    bool GetPosition(std::fpos_t* position);
    bool SetPosition(const std::fpos_t* position);
    /// Bytes from the present position to the end; the position stays.
    std::size_t GetSize();

    bool IsEof();
    /// True also when no file is open.
    bool IsError();
    bool ClearError();

    /// Both valid until the next `Open` with a path.
    const char* GetPath() const { return m_path.c_str(); }
    const char* GetOpenMode() const { return m_openMode; }
    bool IsOpen() const { return m_open; }
    /// Whether what is open is a regular file: writing one finds nobody gone at its other end.
    bool IsRegular() const { return m_isRegular; }

  private:
    /// What `operation` makes of the stream, under the lock; a zero of that type when there is none.
    template <typename Operation>
    auto WithStream(Operation operation) -> decltype(operation(nullptr));
    bool OpenStream(const char* mode);

    std::atomic<bool> m_open = false;
    std::atomic<bool> m_isRegular = false;
    std::string m_path;
    const char* m_openMode = nullptr;
    std::FILE* m_stream = nullptr;
    uMutex m_lock;
};

}  // namespace ZU_WEP
