#include "stmdcm/images/ImageUpdate.h"

#include <fmt/format.h>

#include <map>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/Words.h"
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

/// What of a capture is about its images.
struct Recorded {
    std::string objectFiles;  ///< the payload
    PinList pins;

    explicit Recorded(const Container& capture) : objectFiles(ReadPayload(capture)), pins(PinList::Of(capture)) {}
    bool operator==(const Recorded& other) const {
        return objectFiles == other.objectFiles && pins.pins == other.pins.pins;
    }
};

ImageList MakeList(const std::string& path, const Recorded& recorded, ImageFinder& finder) {
    std::vector<ObjectFile> files;
    const bool isComplete = ParseObjectFiles(recorded.objectFiles, files);
    AttachPins(recorded.pins, files);
    ImageList list{path, finder.Find(files), isComplete, {}};
    if (!isComplete) {
        list.doubts.emplace_back("the list of program images ends within one; the whole ones before it count");
    }
    if (!recorded.pins.isComplete) {
        list.doubts.emplace_back("the pins end within one; the whole ones before it count");
    }
    for (const Section& section : recorded.pins.unknown) {
        list.doubts.push_back(fmt::format("{} at {} has version {}, not {}, and its pins count for nothing",
                                          kPinSectionName, section.offset, section.version, kPinSectionVersion));
    }
    for (const std::vector<std::string>& more : {NotLookedAt(list.answers), finder.Doubts()}) {
        list.doubts.insert(list.doubts.end(), more.begin(), more.end());
    }
    return list;
}

bool IsResolved(const ImageAnswer& answer, bool acceptChanged) {
    const bool isAccepted = acceptChanged && answer.found.IsThere() && answer.candidates.empty();
    return answer.unread.empty() && (answer.found.IsPresent() || isAccepted);
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

/// Asks the image that was found what it is.
void Identify(ImageAnswer& answer, ImageExaminer& examiner, std::vector<std::string>& doubts) {
    try {
        answer.found.pin = examiner.Identify(answer.found.path);
    } catch (const Failure& failure) {
        answer.unread = failure.Cause();
        const bool isTold = answer.found.pin && !answer.found.match;  // that it can't be held against it
        if (!isTold) {
            doubts.push_back(fmt::format("the program image {} of {} can't be pinned: {}", Shown(answer.found.path),
                                         Quoted(answer.recorded.name), failure.Cause()));
        }
        return;
    }
    answer.found.match = PinMatch::Same;
    if (answer.how == ImageAnswer::How::Recorded) {
        answer.recorded = answer.found;
    }
}

}  // namespace

std::vector<Pin> MakePins(ImageList& list, ImageExaminer& examiner, bool acceptChanged) {
    std::vector<Pin> pins;
    std::map<std::string, std::uint32_t> counts;
    for (ImageAnswer& answer : list.answers) {
        const std::string& name = answer.recorded.name;
        const std::uint32_t nth = counts[name]++;
        if (IsResolved(answer, acceptChanged)) {
            Identify(answer, examiner, list.doubts);
        }
        if (IsResolved(answer, acceptChanged)) {
            pins.push_back({name, nth, *answer.found.pin});
        } else if (answer.recorded.pin) {
            pins.push_back({name, nth, *answer.recorded.pin});
        }
    }
    return pins;
}

ImageList ListImages(const std::string& path, ImageFinder& finder) {
    ImageList list = MakeList(path, Recorded(Container(path)), finder);
    CountUnresolved(list, false);
    return list;
}

/// Searches and hashes before it holds the capture's lock, for that may take as long as it likes; again, where another
/// has changed what is recorded meanwhile.
ImageList UpdateImages(const std::string& path, ImageFinder& finder, bool acceptChanged, ChangeMode mode,
                       ImageParts parts) {
    for (Recorded recorded{Container(path)};;) {
        ImageList list = MakeList(path, recorded, finder);
        const std::vector<Pin> pins =
            parts.pins ? MakePins(list, finder.Examiner(), acceptChanged) : recorded.pins.pins;
        CaptureEditor editor(path, mode);
        if (Recorded now(editor.Contents()); now != recorded) {
            recorded = std::move(now);
            continue;
        }
        CountUnresolved(list, acceptChanged);
        std::vector<NewSection> sections;
        std::string updated = Encode(list.answers, acceptChanged);
        // What is behind the whole entries is no reason to write.
        if (parts.places && !recorded.objectFiles.starts_with(updated)) {
            sections.push_back({kCommonSectionName, kCommonSectionVersion, std::move(updated)});
        }
        if (parts.pins && !recorded.pins.Is(pins)) {
            sections.push_back({kPinSectionName, kPinSectionVersion, EncodePins(pins)});
        }
        list.hasChanges = !sections.empty();
        if (list.hasChanges) {
            list.isWritten = editor.Replace(sections);
        }
        return list;
    }
}

}  // namespace stmdcm
