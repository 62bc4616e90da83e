#include "stmdcm/bundle/Unbundle.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureCopy.h"
#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"
#include "trace/format/ObjectFileSection.h"

namespace stmdcm {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

/// More is no manifest: a line has a few hundred bytes.
constexpr std::uint64_t kMaxManifestSize = std::uint64_t{16} << 20;

std::string Canonical(const std::string& directory) {
    std::error_code error;
    const fs::path path = fs::canonical(directory, error);
    if (error || !fs::is_directory(path)) {
        throw Failure(directory, fmt::format("there is no bundle: {}",
                                             error ? ZU_WEP::ErrnoText(error.value()) : "this is no directory"));
    }
    return path.string();
}

/// A link may lead anywhere.
void RequireKind(const std::string& path, fs::file_type kind, const char* what) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(path, error);
    if (status.type() == fs::file_type::not_found) {
        throw Failure(path, "this is missing, so the bundle is not whole");
    }
    if (error) {
        throw Failure(path, fmt::format("this can't be looked at: {}", ZU_WEP::ErrnoText(error.value())));
    }
    if (status.type() != kind) {
        throw Failure(path, fmt::format("this is {}, and no {} of a bundle",
                                        status.type() == fs::file_type::symlink ? "a link" : "something else", what));
    }
}

std::string ReadManifest(const std::string& path) {
    RequireKind(path, fs::file_type::regular, "file");
    const CaptureFile file(path, CaptureFile::Identifier::None);
    if (file.Size() == 0) {
        throw Failure(path, "this is no bundle of stmdcm: the file is empty");
    }
    if (file.Size() > kMaxManifestSize) {
        throw Failure(path, "this is no bundle of stmdcm: the file is too large");
    }
    return file.Read(0, file.Size());
}

}  // namespace

VerifiedBundle::VerifiedBundle(const std::string& directory, ImageExaminer& examiner)
    : m_directory(Canonical(directory)),
      m_manifest(BundleManifest::Parse(ReadManifest(PathOf(kManifestFile)), PathOf(kManifestFile))) {
    if (KindOfName(m_manifest.capture.file) != ConfigurationKind::Capture) {
        throw Failure(PathOf(kManifestFile), fmt::format("the name of its capture, {}, does not end in .tdf",
                                                         Quoted(m_manifest.capture.file)));
    }
    RequireFile(m_manifest.capture, examiner);
    if (!m_manifest.images.empty()) {
        RequireKind(PathOf(kImageFolder), fs::file_type::directory, "folder");
    }
    MapImages(examiner);
}

std::string VerifiedBundle::CapturePath() const { return PathOf(m_manifest.capture.file); }

/// Against the manifest.
void VerifiedBundle::RequireFile(const BundledFile& file, ImageExaminer& examiner) const {
    const std::string path = PathOf(file.file);
    RequireKind(path, fs::file_type::regular, "file");
    if (examiner.Compare(path, {file.size, file.sha256, ""}) != PinMatch::Same) {
        throw Failure(path, fmt::format("this is not the file that was bundled: {} tells another size or SHA-256",
                                        kManifestFile));
    }
}

void VerifiedBundle::MapImages(ImageExaminer& examiner) {
    m_images = stmdcm::Read(Container(CapturePath())).configuration.objectFiles;
    std::vector<bool> isMapped(m_images.size());
    for (const BundledImage& image : m_manifest.images) {
        std::size_t i = 0;
        while (i < m_images.size() &&
               (isMapped[i] || m_images[i].name != image.name || m_images[i].path != image.path)) {
            ++i;
        }
        if (i == m_images.size()) {
            throw Failure(CapturePath(), fmt::format("it has no program image {} at {}, which {} tells",
                                                     Quoted(image.name), Shown(image.path), kManifestFile));
        }
        isMapped[i] = true;
        Take(image, m_images[i], examiner);
    }
    for (std::size_t i = 0; i < m_images.size(); ++i) {
        if (!isMapped[i]) {
            m_doubts.push_back(fmt::format("the program image of {} is not in the bundle, and stays at {}",
                                           Quoted(m_images[i].name), Shown(m_images[i].path)));
        }
    }
}

void VerifiedBundle::Take(const BundledImage& image, ObjectFile& file, ImageExaminer& examiner) const {
    if (!file.pin) {
        throw Failure(CapturePath(), fmt::format("the program image of {} has no pin", Quoted(file.name)));
    }
    RequireFile(image, examiner);
    const std::string path = PathOf(image.file);
    if (examiner.Compare(path, *file.pin) != PinMatch::Same) {
        throw Failure(path, fmt::format("this is not the image of {} that was captured: its pin in the capture tells "
                                        "another size, build-id or SHA-256",
                                        Quoted(file.name)));
    }
    file.path = path;
    file.LookAtDisk();
    file.match = PinMatch::Same;
    file.recorded = file.modified.value_or(file.recorded);
}

void VerifiedBundle::WriteCapture(ByteSink& to) const {
    std::string payload;
    for (const ObjectFile& file : m_images) {
        AppendObjectFileEntry(payload, {file.name, file.path, file.recorded});
    }
    CopyCapture(Container(CapturePath()), {{kCommonSectionName, kCommonSectionVersion, payload}}, to,
                [](std::uint64_t) {});
}

}  // namespace stmdcm
