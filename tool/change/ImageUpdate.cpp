#include "tool/change/ImageUpdate.h"

#include <fmt/format.h>

#include "tool/Failure.h"
#include "tool/capture/CaptureEditor.h"
#include "tool/model/ObjectFiles.h"
#include "trace/dcm/ObjectFileSection.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

std::string ReadPayload(const Container& capture) {
    const Section* section = capture.Find(kCommonSectionName, kCommonSectionVersion);
    if (section == nullptr) {
        throw Failure(fmt::format("{}: there is no section {}, so no list of program images", capture.Path(),
                                  kCommonSectionName));
    }
    return capture.ReadPayload(*section, 0, section->PayloadLength());
}

ImageList MakeList(const std::string& path, const std::string& payload, ImageFinder& finder) {
    ImageList list{path, finder.Find(ObjectFiles::Parse(payload)), {}};
    if (!ParseObjectFileEntries(payload).complete) {
        list.doubts.emplace_back("the list of program images ends within one; the whole ones before it count");
    }
    if (!finder.IsComplete()) {
        list.doubts.emplace_back("the search was cut short; name a directory with fewer files");
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

ExitStatus ImageList::Status() const {
    if (unresolved == 0 && doubts.empty()) {
        return ExitStatus::Done;
    }
    return isWritten || unresolved == 0 ? ExitStatus::Doubtful : ExitStatus::Failed;
}

ImageList ListImages(const std::string& path, ImageFinder& finder) {
    ImageList list = MakeList(path, ReadPayload(Container(path)), finder);
    CountUnresolved(list, false);
    return list;
}

ImageList UpdateImages(const std::string& path, ImageFinder& finder, bool acceptChanged) {
    CaptureEditor editor(path);
    const std::string payload = ReadPayload(editor.Contents());
    ImageList list = MakeList(path, payload, finder);
    CountUnresolved(list, acceptChanged);
    std::string updated = Encode(list.answers, acceptChanged);
    if (!payload.starts_with(updated)) {  // What is behind the whole entries is no reason to write.
        editor.Replace({{kCommonSectionName, kCommonSectionVersion, std::move(updated)}});
        list.isWritten = true;
    }
    return list;
}

}  // namespace stmdcm
