#include "stmdcm/pins/ImageExaminer.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"
#include "stmdcm/pins/BuildId.h"
#include "stmdcm/pins/Sha256.h"

namespace stmdcm {

namespace {

[[noreturn]] void Fail(const std::string& path) {
    const int error = errno;
    throw Failure(path, fmt::format("the file can't be read: {}", ZU_WEP::ErrnoText(error)));
}

constexpr std::size_t kPieceSize = std::size_t{128} << 10;

std::int64_t Nanoseconds(const timespec& time) {
    constexpr std::int64_t kInASecond = 1'000'000'000;
    // A time that no calendar holds wraps, which still tells it from others.
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.tv_sec) * kInASecond +
                                     static_cast<std::uint64_t>(time.tv_nsec));
}

}  // namespace

/// The file with that stamp, or none.
class ImageExaminer::OpenFile {
  public:
    OpenFile(const std::string& path, const Answer& answer)
        : m_path(path),
          m_file(ZU_WEP::PosixFile::Open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY)),
          m_size(answer.image.size),
          m_stamp(answer.stamp) {
        if (!m_file.IsOpen()) {
            Fail(path);
        }
    }

    int Descriptor() const { return m_file.Descriptor(); }

    std::string Hash(const OnHashed& onHashed) const {
        ::posix_fadvise(Descriptor(), 0, 0, POSIX_FADV_SEQUENTIAL);
        Sha256 hash;
        const auto piece = std::make_unique<std::array<char, kPieceSize>>();
        for (std::uint64_t done = 0; done < m_size;) {
            const auto count = m_file.ReadAt(done, piece->data(), piece->size());
            if (!count) {
                Fail(m_path);
            }
            hash.Add({piece->data(), *count});
            done += *count;
            if (*count < piece->size()) {
                break;
            }
            if (onHashed) {
                onHashed(m_path, done, m_size);
            }
        }
        RequireUnchanged();
        return hash.Take();
    }

    void RequireUnchanged() const {
        struct stat info {};
        if (::fstat(Descriptor(), &info) != 0) {
            Fail(m_path);
        }
        if (StampOf(info) != m_stamp) {
            throw Failure(m_path, "the file was changed while it was read; please try again");
        }
    }

  private:
    const std::string& m_path;
    ZU_WEP::PosixFile m_file;
    std::uint64_t m_size;
    const Stamp& m_stamp;
};

ImageExaminer::Stamp ImageExaminer::StampOf(const struct stat& info) {
    return {info.st_dev, info.st_ino, static_cast<std::uint64_t>(info.st_size), Nanoseconds(info.st_mtim),
            Nanoseconds(info.st_ctim)};
}

std::shared_ptr<ImageExaminer::Answer> ImageExaminer::AnswerOf(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        Fail(path);
    }
    if (!S_ISREG(info.st_mode)) {
        throw Failure(path, "this is no regular file, so no program image");
    }
    const std::lock_guard lock(m_mutex);
    auto& answer = m_answers[StampOf(info)];
    if (!answer) {
        answer = std::make_shared<Answer>();
        answer->stamp = StampOf(info);
        answer->image.size = static_cast<std::uint64_t>(info.st_size);
    }
    return answer;
}

void ImageExaminer::AskBuildId(const std::string& path, Answer& answer) {
    if (!answer.hasBuildId) {
        const OpenFile file(path, answer);
        std::string buildId = ReadBuildId(file.Descriptor());
        file.RequireUnchanged();
        answer.image.buildId = std::move(buildId);
        answer.hasBuildId = true;
    }
}

void ImageExaminer::AskHash(const std::string& path, Answer& answer) const {
    if (answer.image.sha256.empty()) {
        answer.image.sha256 = OpenFile(path, answer).Hash(m_onHashed);
    }
}

ImageIdentity ImageExaminer::Identify(const std::string& path) {
    const std::shared_ptr<Answer> answer = AnswerOf(path);
    const std::lock_guard lock(answer->mutex);
    AskBuildId(path, *answer);
    AskHash(path, *answer);
    return answer->image;
}

PinMatch ImageExaminer::Compare(const std::string& path, const ImageIdentity& pin) {
    const std::shared_ptr<Answer> answer = AnswerOf(path);
    const std::lock_guard lock(answer->mutex);
    const bool hasId = !pin.buildId.empty();
    if (hasId) {
        AskBuildId(path, *answer);
    }
    const bool isSameId = hasId && answer->image.buildId == pin.buildId;
    if (answer->image.size == pin.size && isSameId == hasId) {
        AskHash(path, *answer);
        if (answer->image.sha256 == pin.sha256) {
            return PinMatch::Same;
        }
    }
    return isSameId ? PinMatch::SameBuildId : PinMatch::Other;
}

}  // namespace stmdcm
