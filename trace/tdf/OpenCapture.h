#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "source_utilities/PosixFile.h"
#include "trace/format/SectionScanner.h"

namespace Zu::Wep::Trace {

/// A capture that is opened once, and walked once, for all that a load reads of it (docs/tdf.md, "Searching"). Every
/// question sees the file that the path names at that moment. Errors are `vornError`.
class OpenCapture {
  public:
    /// Opens nothing yet. Borrows the path, which is read at every question, and the names. One walk serves all the
    /// `wanted` sections; any other that is asked for costs a walk of its own.
    explicit OpenCapture(const std::string& path, std::initializer_list<SectionKey> wanted = {});
    OpenCapture(const OpenCapture&) = delete;
    OpenCapture& operator=(const OpenCapture&) = delete;

    /// The answer of TDFHandler::ISTDF. The log tells why a file can't be opened or read.
    bool IsTDF();
    /// The stated payload size of the first section of that key. Looks at no extension. Throws what
    /// TDFHandler::GetSectionDataLengthInBytes does.
    std::uint32_t PayloadLength(const SectionKey& key);
    /// The payload of that section, as much of it as the file holds, whatever its length field says. Throws as
    /// PayloadLength does; also, with the texts of TDFHandler::LoadSectionData, for a payload that is stated to be
    /// empty and for one that can't be read.
    std::string Read(const SectionKey& key);

    /// To be told after every call into the host, which may have changed the file without any trace.
    void HostWasCalled() { m_hostWasCalled = true; }

  private:
    using Note = std::optional<SectionInfo>;

    void Refresh();
    void Open();
    void TakeIdentifier(std::optional<bool> hasIdentifier, const char* failure);
    void TellFailure(const char* what) const;
    bool IsUnchanged() const;
    void StartWalk();
    std::size_t IndexOf(const SectionKey& key);
    const SectionInfo& Require(const SectionKey& key);

    const std::string& m_path;
    ZU_WEP::PosixFile m_file;
    struct stat m_opened {};  ///< what the file was when it was opened
    bool m_hasIdentifier = false;
    bool m_hostWasCalled = false;
    std::vector<SectionKey> m_keys;
    std::vector<Note> m_notes;  ///< by key; nothing until the walk has met the section
    FileSectionSource m_source{m_file};
    std::optional<SectionScanner> m_scanner;  ///< stands behind the last section that was noted
};

}  // namespace Zu::Wep::Trace
