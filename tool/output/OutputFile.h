#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "source_utilities/FileMetadata.h"
#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"
#include "stmdcm/capture/ByteSink.h"
#include "tool/output/InterruptGuard.h"

namespace stmdcm {

/// The file that a command writes, all or nothing: it takes its place, synced, at Commit; until then, and when the
/// program fails or is killed, whatever was there stays. Every failure is a Failure that names the file.
class OutputFile final : public ByteSink {
  public:
    /// Refuses a path at which something is, unless `force`; one of the inputs, whatever names it goes by; and what is
    /// not a regular file. A file that takes another's place has its owner, mode and so on (FileMetadata); a new one
    /// has the rights of `source`, which no file gets more than, or what the process gives to new files.
    OutputFile(std::string path, bool force, const std::vector<std::string>& inputs,
               const ZU_WEP::PosixFile* source = nullptr);
    ~OutputFile() override;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Throws Failure where `input` is the file that was there, as it does for those that are known at first.
    void RefuseInput(const std::string& input) const;

    const std::string& Path() const { return m_path; }
    /// Sentences: what of the file that was there is not kept, but for its content.
    const std::vector<std::string>& NotKept() const { return m_notKept; }

    /// At the end of what was written.
    void Write(std::string_view bytes) override;
    /// So many zero bytes at the end, which take no room on the disk where the file system can do that.
    void WriteZeros(std::uint64_t count) override;

    /// Makes what was written so far readable at ReadBackPath.
    void Flush();
    /// Under this name the unfinished file can be opened by this process.
    std::string ReadBackPath() const;
    /// Calls `read(ReadBackPath())`. A Failure of it names the file as the user does.
    template <class Read>
    auto ReadBack(Read read) const {
        try {
            return read(ReadBackPath());
        } catch (const Failure& failure) {
            throw Named(failure);
        }
    }

    void Commit();

  private:
    bool CheckTarget(bool force, const std::vector<std::string>& inputs);
    void MakeTemporary(mode_t mode);
    void KeepReadable();
    void TellLosses(const std::vector<ZU_WEP::FileMetadata::Loss>& losses);
    bool NameTemporary(const std::function<bool(const char* path)>& make);
    void ForgetTemporary();
    bool TakePlace();
    Failure Named(const Failure& failure) const;
    [[noreturn]] void Fail(const char* what) const;

    std::string m_path;
    std::filesystem::path m_target;         ///< behind symbolic links
    std::string m_temporary;                ///< empty while the new file has no name
    std::optional<InterruptGuard> m_guard;  ///< of the temporary file
    bool m_replaces = false;
    ZU_WEP::PosixFile m_file;
    std::optional<mode_t> m_mode;  ///< when it takes its place, where that is not what it has now
    std::vector<std::string> m_notKept;
    std::uint64_t m_written = 0;
};

}  // namespace stmdcm
