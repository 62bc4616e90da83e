#include "stmdcm/images/ImageFinder.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>

#include "stmdcm/Failure.h"
#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

std::string FileName(const ObjectFile& file) { return std::filesystem::path(file.path).filename().string(); }

ObjectFile At(ObjectFile file, std::string path) {
    file.path = std::move(path);
    file.LookAtDisk();
    return file;
}

/// A file that is there, though changed, only gives way to one with the recorded time.
void Choose(const std::vector<std::string>& paths, ImageAnswer& answer) {
    std::vector<ObjectFile> files;
    std::transform(paths.begin(), paths.end(), std::back_inserter(files),
                   [&](const std::string& path) { return At(answer.recorded, path); });
    std::vector<ObjectFile> exact;
    std::copy_if(files.begin(), files.end(), std::back_inserter(exact),
                 [](const ObjectFile& file) { return file.DiskState() == ObjectFile::State::Present; });
    const bool isMissing = answer.found.DiskState() == ObjectFile::State::Missing;
    const std::vector<ObjectFile>& choice = exact.empty() && isMissing ? files : exact;
    if (choice.size() == 1) {
        answer.found = choice.front();
        answer.how = ImageAnswer::How::Searched;
    } else {
        std::transform(choice.begin(), choice.end(), std::back_inserter(answer.candidates),
                       [](const ObjectFile& file) { return file.path; });
    }
}

/// An image that is searched by its pin; borrows the answer.
class PinnedImage {
  public:
    explicit PinnedImage(ImageAnswer& answer) : m_answer(answer) {}

    void HoldAgainst(const std::string& path, ImageExaminer& examiner) {
        const PinMatch match = examiner.Compare(path, *m_answer.recorded.pin);
        if (match == PinMatch::Same && (m_same.empty() || path < m_same)) {
            m_same = path;
        } else if (match == PinMatch::SameBuildId && path != m_answer.found.path) {
            m_answer.candidates.push_back(path);
        }
    }

    void Choose(std::vector<std::string>& doubts) {
        if (!m_same.empty()) {
            m_answer.found = At(m_answer.recorded, m_same);
            m_answer.found.match = PinMatch::Same;
            m_answer.how = ImageAnswer::How::Searched;
        }
        std::sort(m_answer.candidates.begin(), m_answer.candidates.end());
        for (const std::string& candidate : m_answer.candidates) {
            doubts.push_back(
                fmt::format("{} has the build-id of the image of {}, but another content, so it is not taken",
                            Shown(candidate), Quoted(m_answer.recorded.name)));
        }
        if (!m_same.empty()) {
            m_answer.candidates.clear();
        }
    }

  private:
    ImageAnswer& m_answer;
    std::string m_same;
};

/// Gives sentences: what was not searched.
std::vector<std::string> LookFor(std::vector<PinnedImage>& images, const FileSearch& search, ImageExaminer& examiner) {
    return images.empty() ? search.Doubts() : search.Each([&](const std::string& path) {
        for (PinnedImage& image : images) {
            image.HoldAgainst(path, examiner);
        }
    });
}

}  // namespace

const char* ImageAnswer::HowName() const {
    constexpr const char* kNames[] = {"recorded", "map", "search"};
    return kNames[static_cast<std::size_t>(how)];
}

ImageAnswer ImageFinder::Map(ObjectFile file) {
    HoldAgainstPin(file);
    const auto path = MapPath(m_mappings, file.path);
    if (!path) {
        return {file, file, {}, {}};
    }
    ImageAnswer answer{file, At(file, *path), ImageAnswer::How::Mapped, {}};
    HoldAgainstPin(answer.found);
    return answer;
}

void ImageFinder::HoldAgainstPin(ObjectFile& file) {
    if (!file.IsThere()) {
        return;
    }
    try {
        file.HoldAgainstPin(m_examiner);
    } catch (const Failure& failure) {
        m_doubts.push_back(fmt::format("{} can't be held against its pin: {}", Shown(failure.File()), failure.Cause()));
    }
}

std::vector<ImageAnswer> ImageFinder::Find(const std::vector<ObjectFile>& files) {
    m_doubts.clear();
    std::vector<ImageAnswer> answers;
    std::transform(files.begin(), files.end(), std::back_inserter(answers),
                   [&](const ObjectFile& file) { return Map(file); });
    if (!m_search) {
        m_search.emplace(m_directories);
    }
    std::vector<PinnedImage> pinned;
    for (ImageAnswer& answer : answers) {
        if (!answer.IsPresent() && answer.recorded.pin) {
            pinned.emplace_back(answer);
        } else if (!answer.IsPresent()) {
            Choose(m_search->Found(FileName(answer.recorded)), answer);
        }
    }
    const std::vector<std::string> unsearched = LookFor(pinned, *m_search, m_examiner);
    for (PinnedImage& image : pinned) {
        image.Choose(m_doubts);
    }
    if (!std::all_of(answers.begin(), answers.end(), std::mem_fn(&ImageAnswer::IsPresent))) {
        m_doubts.insert(m_doubts.end(), unsearched.begin(), unsearched.end());
    }
    return answers;
}

}  // namespace stmdcm
