#include "stmdcm/reading/ObjectFileCheck.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <map>
#include <set>
#include <string>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Words.h"
#include "trace/format/ObjectFileSection.h"

namespace stmdcm {

namespace {

/// Holds one entry against the disk, as a manager does that loads the capture.
void CheckOnDisk(const ObjectFile& entry, const Place& place, Findings& findings) {
    if (entry.path.empty()) {
        findings.Add(Kind("O-EMPTY-PATH"), place, fmt::format("{} has no path", Quoted(entry.name)),
                     "a reader checks neither it nor the files behind it");
        return;
    }
    const std::string file = fmt::format("{} of {}", InWords(Unit::None, entry.path), Quoted(entry.name));
    const auto opened = ZU_WEP::PosixFile::Open(entry.path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (!opened.IsOpen() || !entry.modified) {
        const int error = !opened.IsOpen() ? errno : entry.diskError == 0 ? ENOENT : entry.diskError;
        findings.Add(Kind("O-MISSING"), place, fmt::format("{} can't be opened: {}", file, ZU_WEP::ErrnoText(error)),
                     "the host is asked for it; without an answer the file loses its path");
    } else if (*entry.modified != entry.recorded) {
        findings.Add(Kind("O-CHANGED"), place,
                     fmt::format("{} is of {}, recorded was {}{}", file, InWords(Unit::UnixTime, *entry.modified),
                                 InWords(Unit::UnixTime, entry.recorded),
                                 entry.match == PinMatch::Same ? "; by its pin it is the image that was captured" : ""),
                     "the host is asked whether this is the file");
    }
    if (!entry.isRegular && !entry.pin) {
        findings.Add(Kind("O-NO-IMAGE"), place, fmt::format("{}: {}", file, kNoRegularFile),
                     "a reader looks at nothing but its time");
    }
}

/// Holds one against its pin, which no manager does.
void CheckPin(ObjectFile& entry, const Place& place, ImageExaminer& examiner, Findings& findings) {
    const std::string file = fmt::format("{} of {}", InWords(Unit::None, entry.path), Quoted(entry.name));
    try {
        entry.HoldAgainstPin(examiner);
    } catch (const Failure& failure) {
        findings.Add(Kind("O-NOT-COMPARED"), place, fmt::format("{} has a pin, but {}", file, failure.Cause()),
                     "a reader takes it for the image that was captured where it has the recorded time");
    }
    if (entry.match && *entry.match != PinMatch::Same) {
        findings.Add(Kind("O-NOT-CAPTURED"), place,
                     fmt::format("{}: this is not the image that was captured{}", file,
                                 *entry.match == PinMatch::SameBuildId ? ", though it has its build-id" : ""),
                     "a reader does not look at what is in it; a decoder shows what another program would have done");
    }
}

}  // namespace

bool ParseObjectFiles(std::string_view payload, std::vector<ObjectFile>& files) {
    return Zu::Wep::Trace::ReadObjectFileEntries(payload, [&](auto name, auto path, std::int64_t recorded) {
        files.push_back({std::string(name), std::string(path), recorded});
        files.back().LookAtDisk();
    });
}

void AttachPins(const PinList& pins, std::vector<ObjectFile>& files) {
    std::map<std::string, std::uint32_t> counts;
    for (ObjectFile& file : files) {
        const ImageIdentity* const pin = pins.Find(file.name, counts[file.name]++);
        file.pin = pin == nullptr ? std::nullopt : std::optional(*pin);
    }
}

std::vector<std::string> NotLookedAt(const std::vector<ObjectFile>& files) {
    std::vector<std::string> sentences;
    for (const ObjectFile& file : files) {
        if (file.DiskState() == ObjectFile::State::Unknown) {
            sentences.push_back(
                fmt::format("the program image {} of {}: {}", Shown(file.path), Quoted(file.name), file.WhyUnknown()));
        }
    }
    return sentences;
}

std::vector<ObjectFile> ReadObjectFiles(std::string_view payload, const Place& place, Findings& findings,
                                        const PinList& pins, ImageExaminer* examiner) {
    std::vector<ObjectFile> files;
    const bool isComplete = ParseObjectFiles(payload, files);
    AttachPins(pins, files);
    std::set<std::string> names;
    for (ObjectFile& file : files) {
        if (!names.insert(file.name).second) {
            findings.Add(Kind("O-DUPLICATE"), place, fmt::format("{} is recorded twice", Quoted(file.name)),
                         "both are kept, and asked for the name a reader gives the first");
        }
        if (examiner != nullptr) {
            CheckPin(file, place, *examiner, findings);
        }
        CheckOnDisk(file, place, findings);
    }
    if (!isComplete) {
        findings.Add(Kind("O-TRUNCATED"), place, fmt::format("the payload ends within entry {}", files.size() + 1),
                     fmt::format("dropped; of the entries in front of it {} kept", files.size()));
    }
    return files;
}

}  // namespace stmdcm
