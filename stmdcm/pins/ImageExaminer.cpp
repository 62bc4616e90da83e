#include "stmdcm/pins/ImageExaminer.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>

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

FileStamp StampOf(const std::string& note) {
    FileStamp stamp;
    std::memcpy(&stamp, note.data(), sizeof stamp);
    return stamp;
}

constexpr std::size_t kPieceSize = std::size_t{128} << 10;

}  // namespace

/// The file with that stamp, or none.
class ImageExaminer::OpenFile {
  public:
    OpenFile(const std::string& path, const Answer& answer)
        : m_path(path),
          m_file(ZU_WEP::PosixFile::Open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY)),
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
        for (std::uint64_t done = 0; done < m_stamp.size;) {
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
                onHashed(m_path, done, m_stamp.size);
            }
        }
        RequireUnchanged();
        return hash.Take();
    }

    void RequireUnchanged() const {
        if (FileStamp::Of(m_file, m_path) != m_stamp) {
            throw Failure(m_path, "the file was changed while it was read; please try again");
        }
    }

  private:
    const std::string& m_path;
    ZU_WEP::PosixFile m_file;
    const FileStamp& m_stamp;
};

std::shared_ptr<ImageExaminer::Answer> ImageExaminer::AnswerOf(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        Fail(path);
    }
    if (!S_ISREG(info.st_mode)) {
        throw Failure(path, kNoRegularFile);
    }
    const std::lock_guard lock(m_mutex);
    auto& answer = m_answers[FileStamp(info)];
    if (!answer) {
        answer = std::make_shared<Answer>();
        answer->stamp = FileStamp(info);
        answer->image.size = static_cast<std::uint64_t>(info.st_size);
    }
    return answer;
}

// A note is the stamp, whether the build-id and the hash are known, and these.

std::string ImageExaminer::NoteOf(const Answer& answer) {
    std::string note(reinterpret_cast<const char*>(&answer.stamp), sizeof answer.stamp);
    note += answer.hasBuildId ? '\1' : '\0';
    note += answer.image.sha256.empty() ? '\0' : '\1';
    return note + answer.image.sha256 + answer.image.buildId;
}

void ImageExaminer::Learn(const std::string& note, Answer& answer) {
    const std::size_t known = sizeof(FileStamp) + 2;
    const std::size_t hashSize = note[known - 1] != '\0' ? kSha256Size : 0;
    if (note[known - 2] != '\0') {
        answer.hasBuildId = true;
        answer.image.buildId = note.substr(known + hashSize);
    }
    if (hashSize > 0) {
        answer.image.sha256 = note.substr(known, hashSize);
    }
}

/// One process at a time; the next one knows it then.
template <class IsKnown, class AskFile>
void ImageExaminer::Ask(Answer& answer, IsKnown isKnown, AskFile askFile) {
    if (isKnown()) {
        return;
    }
    if (!m_notes) {
        return askFile();
    }
    const SharedNotes::Turn turn(*m_notes, answer.stamp.inode);
    Hear(answer);
    if (!isKnown()) {
        askFile();
        const std::lock_guard lock(m_mutex);
        m_notes->Leave(NoteOf(answer));
    }
}

/// What others have found out.
void ImageExaminer::Hear(Answer& answer) {
    const std::lock_guard lock(m_mutex);
    for (std::string& note : m_notes->Take()) {
        m_heard.insert_or_assign(StampOf(note), std::move(note));
    }
    if (const auto heard = m_heard.extract(answer.stamp)) {
        Learn(heard.mapped(), answer);
    }
}

void ImageExaminer::AskBuildId(const std::string& path, Answer& answer) {
    Ask(
        answer, [&] { return answer.hasBuildId; },
        [&] {
            const OpenFile file(path, answer);
            std::string buildId = ReadBuildId(file.Descriptor());
            file.RequireUnchanged();
            answer.image.buildId = std::move(buildId);
            answer.hasBuildId = true;
        });
}

void ImageExaminer::AskHash(const std::string& path, Answer& answer) {
    Ask(
        answer, [&] { return !answer.image.sha256.empty(); },
        [&] { answer.image.sha256 = OpenFile(path, answer).Hash(m_onHashed); });
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
