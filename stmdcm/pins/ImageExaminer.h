#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "stmdcm/capture/FileStamp.h"
#include "stmdcm/pins/ImageIdentity.h"
#include "stmdcm/pins/SharedNotes.h"

namespace stmdcm {

/// Why something else than a file is none.
inline constexpr char kNoRegularFile[] = "this is no regular file, so no program image";

/// Asks files what they are: each once, however many pins it is held against, as long as it is not written. A file is
/// read in pieces of 128 KiB. Several threads may share one, and several processes after ShareAmongForked.
class ImageExaminer {
  public:
    /// Hears, of a file that is hashed, how many of its bytes are done; by the thread that asked.
    using OnHashed = std::function<void(const std::string& path, std::uint64_t done, std::uint64_t size)>;

    explicit ImageExaminer(OnHashed onHashed = nullptr) : m_onHashed(std::move(onHashed)) {}

    /// From now on those that are forked off with a copy of this ask each file once among them all, too. Throws
    /// Failure.
    void ShareAmongForked() { m_notes = std::make_unique<SharedNotes>(); }

    // Each throws Failure, which names the file, for one that can't be read, is no regular file, or is changed
    // meanwhile.

    ImageIdentity Identify(const std::string& path);
    /// Asks no more than it takes: the size, then the build-id, then the hash.
    PinMatch Compare(const std::string& path, const ImageIdentity& pin);

  private:
    class OpenFile;
    struct Answer {
        FileStamp stamp;
        std::mutex mutex;
        bool hasBuildId = false;
        ImageIdentity image;  ///< its hash is empty until it is asked for
    };

    std::shared_ptr<Answer> AnswerOf(const std::string& path);
    template <class IsKnown, class AskFile>
    void Ask(Answer& answer, IsKnown isKnown, AskFile askFile);
    void Hear(Answer& answer);
    static std::string NoteOf(const Answer& answer);
    static void Learn(const std::string& note, Answer& answer);
    void AskBuildId(const std::string& path, Answer& answer);
    void AskHash(const std::string& path, Answer& answer);

    OnHashed m_onHashed;
    std::mutex m_mutex;
    std::map<FileStamp, std::shared_ptr<Answer>> m_answers;
    std::unique_ptr<SharedNotes> m_notes;      ///< null: this process asks alone
    std::map<FileStamp, std::string> m_heard;  ///< what others found, as notes
};

}  // namespace stmdcm
