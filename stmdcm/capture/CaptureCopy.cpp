#include "stmdcm/capture/CaptureCopy.h"

#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/ChangeNumber.h"
#include "stmdcm/capture/FileStamp.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// Whether a search would find the section if those in front of it were not there, and would find the new one then.
bool IsReplaced(const Container& capture, const Section& section, const std::vector<NewSection>& sections) {
    return std::any_of(sections.begin(), sections.end(), [&](const NewSection& each) {
        return section.version == each.version && capture.HasName(section, each.name);
    });
}

/// Header, name and payload.
std::string Encode(const Container& capture, const NewSection& section) {
    const std::uint64_t length = SectionHeader::kSize + section.name.size() + section.payload.size();
    if (length > kMaxSectionLength) {
        throw Failure(capture.Path(),
                      fmt::format("the new section {} would be over 128 MiB, which no reader passes", section.name));
    }
    return EncodeSectionStart(static_cast<std::uint32_t>(length), section.name, section.version) + section.payload;
}

}  // namespace

void CopyCapture(const Container& from, const std::vector<NewSection>& sections, ByteSink& to,
                 const OnCopied& onCopied) {
    from.RequireWhole();
    const FileStamp before = FileStamp::Of(from.File().File(), from.Path());
    std::string added;
    for (const NewSection& section : sections) {
        added += Encode(from, section);
    }
    if (added.size() > kMaxFileSize - from.Size()) {
        throw Failure(from.Path(), "the copy would grow past 4 GiB");
    }
    const ChangeMark mark{NextChangeNumber(from)};
    std::uint64_t done = 0;
    const auto copyTo = [&](std::uint64_t end) {
        CopyRange(from.File(), done, end - done, to, [&](std::uint64_t copied) { onCopied(done + copied); });
        done = end;
    };
    for (const Section& section : from.Sections()) {
        if (IsReplaced(from, section, sections)) {
            copyTo(section.offset + SectionHeader::kVersionOffset);
            const std::string version = EncodeSectionVersion(RetiredVersion(section, mark));
            to.Write(version);
            done += version.size();
        }
    }
    copyTo(from.Size());
    to.Write(added);
    if (FileStamp::Of(from.File().File(), from.Path()) != before) {
        throw Failure(from.Path(), "the file was changed while it was copied; please try again");
    }
}

}  // namespace stmdcm
