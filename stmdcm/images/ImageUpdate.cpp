#include "stmdcm/images/ImageUpdate.h"

#include <fmt/format.h>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "trace/format/ObjectFileSection.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

std::string ReadPayload(const Container& capture) {
    const Section* section = capture.Find(kCommonSectionName, kCommonSectionVersion);
    if (section == nullptr) {
        throw Failure(capture.Path(),
                      fmt::format("there is no section {}, so no list of program images", kCommonSectionName));
    }
    return capture.ReadPayload(*section);
}

/// Of the images that were not found.
std::vector<std::string> NotLookedAt(const std::vector<ImageAnswer>& answers) {
    std::vector<ObjectFile> places;
    for (const ImageAnswer& answer : answers) {
        if (!answer.IsPresent()) {
            places.push_back(answer.recorded);
        }
        if (!answer.IsPresent() && answer.how != ImageAnswer::How::Recorded) {
            places.push_back(answer.found);
        }
    }
    return NotLookedAt(places);
}

ImageList MakeList(const std::string& path, const std::string& payload, ImageFinder& finder) {
    std::vector<ObjectFile> files;
    const bool isComplete = ParseObjectFiles(payload, files);
    ImageList list{path, finder.Find(files), {}};
    if (!isComplete) {
        list.doubts.emplace_back("the list of program images ends within one; the whole ones before it count");
    }
    for (const std::vector<std::string>& more : {NotLookedAt(list.answers), finder.Doubts()}) {
        list.doubts.insert(list.doubts.end(), more.begin(), more.end());
    }
    return list;
}

bool IsResolved(const ImageAnswer& answer, bool acceptChanged) {
    return answer.IsPresent() ||
           (acceptChanged && answer.found.DiskState() == ObjectFile::State::Changed && answer.candidates.empty());
}

std::string Encode(const std::vector<ImageAnswer>& answers, bool acceptChanged) {
    std::string payload;
    for (const ImageAnswer& answer : answers) {
        const bool isResolved = IsResolved(answer, acceptChanged);
        const ObjectFile& file = isResolved ? answer.found : answer.recorded;
        AppendObjectFileEntry(
            payload, {file.name, file.path, isResolved ? file.modified.value_or(file.recorded) : file.recorded});
    }
    return payload;
}

void CountUnresolved(ImageList& list, bool acceptChanged) {
    for (const ImageAnswer& answer : list.answers) {
        list.unresolved += IsResolved(answer, acceptChanged) ? 0U : 1U;
    }
}

}  // namespace

ImageList ListImages(const std::string& path, ImageFinder& finder) {
    ImageList list = MakeList(path, ReadPayload(Container(path)), finder);
    CountUnresolved(list, false);
    return list;
}

/// Searches before it holds the capture's lock, for a search may take as long as it likes; again, where another has
/// changed the list meanwhile.
ImageList UpdateImages(const std::string& path, ImageFinder& finder, bool acceptChanged, ChangeMode mode) {
    for (std::string payload = ReadPayload(Container(path));;) {
        ImageList list = MakeList(path, payload, finder);
        CaptureEditor editor(path, mode);
        if (std::string now = ReadPayload(editor.Contents()); now != payload) {
            payload = std::move(now);
            continue;
        }
        CountUnresolved(list, acceptChanged);
        std::string updated = Encode(list.answers, acceptChanged);
        list.hasChanges = !payload.starts_with(updated);  // What is behind the whole entries is no reason to write.
        if (list.hasChanges) {
            list.isWritten = editor.Replace({{kCommonSectionName, kCommonSectionVersion, std::move(updated)}});
        }
        return list;
    }
}

}  // namespace stmdcm
