#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "source_utilities/ErrnoText.h"

namespace ZU_WEP {

/// Owns a file descriptor; close-on-exec. Every operation repeats what a signal interrupted, carries partial transfers
/// on to their end, and leaves `errno` set when it reports failure (false, or no value). Offsets and sizes are in
/// bytes.
class PosixFile {
  public:
    PosixFile() = default;
    PosixFile(PosixFile&& other) noexcept;
    PosixFile& operator=(PosixFile&& other) noexcept;
    ~PosixFile();

    /// Like open(2); ask IsOpen whether it worked.
    static PosixFile Open(const char* path, int flags, mode_t mode = 0666);
    /// The same without waiting for anybody, such as the other end of a pipe; neither does any operation then.
    static PosixFile OpenAtOnce(const char* path, int flags, mode_t mode = 0666);
    /// A file without a place, in memory (memfd_create(2)), for this process and those that are forked off.
    static PosixFile InMemory(const char* name);
    bool IsOpen() const { return m_descriptor >= 0; }
    int Descriptor() const { return m_descriptor; }
    /// Closes; false when the system reports that data could not be stored. The descriptor is gone either way.
    bool Close();

    /// Up to `size` bytes: fewer only at the end of the file.
    std::optional<std::size_t> Read(void* buffer, std::size_t size) const;
    std::optional<std::size_t> ReadAt(std::uint64_t offset, void* buffer, std::size_t size) const;
    enum class ReadEnd { EndOfFile, Limit, Failure };
    /// Everything from the descriptor's own position on, but no more than `limit` bytes; also what was read before a
    /// failure.
    ReadEnd ReadToEnd(std::string& bytes, std::size_t limit) const;
    /// All bytes, at the descriptor's own position. The file-size limit counts as for WriteAt.
    bool Write(std::string_view bytes) const;
    /// All pieces, one behind the other, in one gathered write where the system takes it whole.
    /// What would pass the process's file-size limit fails with EFBIG before it is begun, and raises no signal.
    /// `done`: how many bytes were written, also before a failure. Takes no memory.
    bool WriteAt(std::uint64_t offset, std::initializer_list<std::string_view> pieces,
                 std::uint64_t* done = nullptr) const;

    /// The size of a regular file, or the end position of anything else that has one.
    std::optional<std::uint64_t> Size() const;
    /// The first byte at or behind `offset` that takes room on the disk, the size when there is none: what lies before
    /// it is zeros. `offset` itself where the file can't tell. Moves the descriptor's own position.
    std::uint64_t NextData(std::uint64_t offset) const;
    bool Truncate(std::uint64_t size) const;
    /// Sets blocks aside for a coming write without changing the size. True also where the file system can't do that.
    /// The file-size limit counts as for WriteAt.
    bool Reserve(std::uint64_t offset, std::uint64_t size) const;
    /// True also for files that can't be synced, such as pipes.
    bool Sync() const;
    bool SyncData() const;

  private:
    explicit PosixFile(int descriptor) : m_descriptor(descriptor) {}
    void LeaveStandardStreams();

    int m_descriptor = -1;
};

}  // namespace ZU_WEP
