#include "stmdcm/bundle/Bundle.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "stmdcm/Failure.h"
#include "stmdcm/bundle/HashingSink.h"
#include "stmdcm/capture/CaptureCopy.h"
#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

/// Of the path's last name as much as any file system takes, and no shell minds.
std::string PlainFileName(const std::string& path) {
    constexpr std::size_t kMost = 100;
    std::string name = std::filesystem::path(path).filename().string().substr(0, kMost);
    const auto isOdd = [](char c) {
        const bool isWord = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        return !isWord && std::string_view("._-+").find(c) == std::string_view::npos;
    };
    std::replace_if(name.begin(), name.end(), isOdd, '_');
    return name;
}

void NothingHears(std::uint64_t /*done*/) {}

/// Writes the files of one bundle; borrows all that it is given.
class Writer {
  public:
    Writer(Bundle& bundle, BundleFolder& folder) : m_bundle(bundle), m_folder(folder) {}

    void AddCapture(const Container& capture, const std::vector<NewSection>& sections) {
        BundledFile& file = m_bundle.manifest.capture;
        file.file = std::filesystem::path(capture.Path()).filename().string();
        m_folder.Add(file.file, capture.Path(), &capture.File().File(), [&](ByteSink& to) {
            HashingSink hashing(to);
            CopyCapture(capture, sections, hashing, NothingHears);
            file.size = hashing.Size();
            file.sha256 = hashing.TakeHash();
        });
    }

    /// Those that are alike get one file.
    void AddImage(const ImageAnswer& answer) {
        const ImageIdentity& image = *answer.found.pin;
        std::string& file = m_files[image.sha256];
        if (file.empty()) {
            file = fmt::format("{}/{}-{}", kImageFolder, m_files.size(), PlainFileName(answer.recorded.path));
            CopyImage(answer.found.path, image, file);
        }
        m_bundle.manifest.images.push_back(
            {{file, image.size, image.sha256}, answer.recorded.name, answer.recorded.path});
    }

    void AddText(const std::string& name, const std::string& text) {
        m_folder.Add(name, "", nullptr, [&](ByteSink& to) { to.Write(text); });
    }

  private:
    void CopyImage(const std::string& path, const ImageIdentity& image, const std::string& name) {
        const CaptureFile source(path, CaptureFile::Identifier::None);
        m_folder.Add(name, path, &source.File(), [&](ByteSink& to) {
            HashingSink hashing(to);
            CopyRange(source, 0, source.Size(), hashing, NothingHears);
            if (hashing.Size() != image.size || hashing.TakeHash() != image.sha256) {
                throw Failure(path, "the file was changed while it was copied; please try again");
            }
        });
    }

    Bundle& m_bundle;
    BundleFolder& m_folder;
    std::map<std::string, std::string> m_files;  ///< by hash
};

std::string WhyNotFound(const ImageAnswer& answer) {
    const ObjectFile& file = answer.recorded;
    const bool isUnknown = file.DiskState() == ObjectFile::State::Unknown;
    return !answer.unread.empty() ? answer.unread : isUnknown ? file.WhyUnknown() : file.DiskStateName();
}

/// Gives the sentences about those that are not, with `force`.
std::vector<std::string> RequireFound(const ImageList& images, bool force) {
    std::vector<std::string> missing;
    for (const ImageAnswer& answer : images.answers) {
        if (!answer.IsPresent()) {
            missing.push_back(fmt::format("the program image of {}, {}, is not in the bundle: {}",
                                          Quoted(answer.recorded.name), Shown(answer.recorded.path),
                                          WhyNotFound(answer)));
        }
    }
    if (!missing.empty() && !force) {
        throw Failure(images.path, fmt::format("{}; --map and --search find images, --force goes on without them",
                                               fmt::join(missing, "; ")));
    }
    return missing;
}

}  // namespace

Bundle WriteBundle(const std::string& capture, ImageFinder& finder, bool force, BundleFolder& folder) {
    if (KindOf(capture) != ConfigurationKind::Capture) {
        throw Failure(capture, "this is settings text; only captures have program images to bundle");
    }
    Bundle bundle{{}, ListImages(capture, finder)};
    RequireFound(bundle.images, force);  // before they are hashed, which takes its time
    const std::vector<Pin> pins = MakePins(bundle.images, finder.Examiner(), false);
    bundle.doubts = RequireFound(bundle.images, force);
    bundle.doubts.insert(bundle.doubts.end(), bundle.images.doubts.begin(), bundle.images.doubts.end());
    const Container container(capture);
    std::vector<NewSection> sections;
    if (!PinList::Of(container).Is(pins)) {
        sections.push_back({kPinSectionName, kPinSectionVersion, EncodePins(pins)});
    }
    Writer writer(bundle, folder);
    writer.AddCapture(container, sections);
    for (const ImageAnswer& answer : bundle.images.answers) {
        if (answer.IsPresent()) {
            writer.AddImage(answer);
        }
    }
    writer.AddText(kPageFile, BundlePage(bundle));
    writer.AddText(kManifestFile, bundle.manifest.Text());
    return bundle;
}

}  // namespace stmdcm
