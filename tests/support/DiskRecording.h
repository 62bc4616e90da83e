#pragma once

// What a loss of power leaves of a file: its writes and syncs are recorded, and what a disk may have of them is made
// anew.

#include <sys/syscall.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/support/KillAtSyscall.h"

namespace stmdcm_test {

/// The work's changes of one file: the work must write no other one with pwritev.
class DiskRecording {
  public:
    explicit DiskRecording(const Work& work) {
        m_exitStatus = WatchSyscalls(work, [this](pid_t child, const __ptrace_syscall_info& info) {
            if (info.entry.nr == SYS_pwritev) {
                m_steps.push_back({info.entry.args[3], Gathered(child, info.entry.args[1], info.entry.args[2])});
            } else if (info.entry.nr == SYS_fdatasync || info.entry.nr == SYS_fsync) {
                m_synced.push_back(m_steps.size());
            }
        });
    }
    int ExitStatus() const { return m_exitStatus; }
    std::size_t Writes() const { return m_steps.size(); }

    /// The file when the power goes after so many writes: whole up to the last sync, and any sectors of the rest.
    std::string After(std::size_t writes, const std::string& before, std::mt19937& random) const {
        std::string file = before;
        std::size_t synced = 0;
        for (const std::size_t count : m_synced) {
            synced = count <= writes ? count : synced;
        }
        for (std::size_t i = 0; i < writes; ++i) {
            const Step& step = m_steps[i];
            for (std::uint64_t at = step.offset, end = step.offset + step.bytes.size(); at < end;) {
                const std::uint64_t next = std::min(end, (at / Sector + 1) * Sector);
                if (i < synced || random() % 2 == 0) {
                    file.resize(std::max<std::size_t>(file.size(), next));
                    file.replace(at, next - at, step.bytes, at - step.offset, next - at);
                }
                at = next;
            }
            if (i < synced || random() % 2 == 0) {  // the new size is of a sector of its own
                file.resize(std::max<std::size_t>(file.size(), step.offset + step.bytes.size()));
            }
        }
        return file;
    }

  private:
    static constexpr std::uint64_t Sector = 512;
    struct Step {
        std::uint64_t offset;
        std::string bytes;
    };

    static std::string Gathered(pid_t child, std::uint64_t pieces, std::uint64_t count) {
        std::vector<iovec> from(count);
        const iovec list{from.data(), count * sizeof(iovec)}, listThere{reinterpret_cast<void*>(pieces), list.iov_len};
        ::process_vm_readv(child, &list, 1, &listThere, 1, 0);
        std::size_t size = 0;
        for (const iovec& piece : from) {
            size += piece.iov_len;
        }
        std::string bytes(size, '\0');
        const iovec to{bytes.data(), size};
        ::process_vm_readv(child, &to, 1, from.data(), count, 0);
        return bytes;
    }

    std::vector<Step> m_steps;
    std::vector<std::size_t> m_synced;  ///< how many steps were done at each sync
    int m_exitStatus = -1;
};

}  // namespace stmdcm_test
