#include "stmdcm/images/ImageFinder.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>

#include "stmdcm/images/FileSearch.h"

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

}  // namespace

const char* ImageAnswer::HowName() const {
    constexpr const char* kNames[] = {"recorded", "map", "search"};
    return kNames[static_cast<std::size_t>(how)];
}

ImageAnswer ImageFinder::Map(const ObjectFile& file) const {
    const auto path = MapPath(m_mappings, file.path);
    return path ? ImageAnswer{file, At(file, *path), ImageAnswer::How::Mapped, {}} : ImageAnswer{file, file, {}, {}};
}

std::vector<ImageAnswer> ImageFinder::Find(const std::vector<ObjectFile>& files) {
    std::vector<ImageAnswer> answers;
    std::set<std::string> wanted;
    for (const ObjectFile& file : files) {
        answers.push_back(Map(file));
        if (!answers.back().IsPresent() && !FileName(file).empty()) {
            wanted.insert(FileName(file));
        }
    }
    const FileSearch search(m_directories, wanted);
    for (ImageAnswer& answer : answers) {
        if (!answer.IsPresent()) {
            Choose(search.Found(FileName(answer.recorded)), answer);
        }
    }
    const bool isFound = std::all_of(answers.begin(), answers.end(), std::mem_fn(&ImageAnswer::IsPresent));
    m_doubts = isFound ? std::vector<std::string>() : search.Doubts();
    return answers;
}

}  // namespace stmdcm
