#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "stmdcm/capture/FileStamp.h"
#include "stmdcm/pins/ImageIdentity.h"

namespace stmdcm {

/// Why something else than a file is none.
inline constexpr char kNoRegularFile[] = "this is no regular file, so no program image";

/// Asks files what they are: each once, however many pins it is held against, as long as it is not written. A file is
/// read in pieces of 128 KiB. Several threads may share one.
class ImageExaminer {
  public:
    /// Hears, of a file that is hashed, how many of its bytes are done; by the thread that asked.
    using OnHashed = std::function<void(const std::string& path, std::uint64_t done, std::uint64_t size)>;

    explicit ImageExaminer(OnHashed onHashed = nullptr) : m_onHashed(std::move(onHashed)) {}

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
    static void AskBuildId(const std::string& path, Answer& answer);
    void AskHash(const std::string& path, Answer& answer) const;

    OnHashed m_onHashed;
    std::mutex m_mutex;
    std::map<FileStamp, std::shared_ptr<Answer>> m_answers;
};

}  // namespace stmdcm
