#include "stmdcm/reading/ObjectFileCheck.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <set>
#include <string>

#include "source_utilities/PosixFile.h"
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
                     fmt::format("{} is of {}, recorded was {}", file, InWords(Unit::UnixTime, *entry.modified),
                                 InWords(Unit::UnixTime, entry.recorded)),
                     "the host is asked whether this is the file");
    }
}

}  // namespace

bool ParseObjectFiles(std::string_view payload, std::vector<ObjectFile>& files) {
    return Zu::Wep::Trace::ReadObjectFileEntries(payload, [&](auto name, auto path, std::int64_t recorded) {
        files.push_back({std::string(name), std::string(path), recorded});
        files.back().LookAtDisk();
    });
}

std::vector<std::string> NotLookedAt(const std::vector<ObjectFile>& files) {
    std::vector<std::string> sentences;
    for (const ObjectFile& file : files) {
        if (file.DiskState() == ObjectFile::State::Unknown) {
            sentences.push_back(fmt::format("the program image {} of {} can't be looked at: {}", Shown(file.path),
                                            Quoted(file.name), ZU_WEP::ErrnoText(file.diskError)));
        }
    }
    return sentences;
}

std::vector<ObjectFile> ReadObjectFiles(std::string_view payload, const Place& place, Findings& findings) {
    std::vector<ObjectFile> files;
    const bool isComplete = ParseObjectFiles(payload, files);
    std::set<std::string> names;
    for (const ObjectFile& file : files) {
        if (!names.insert(file.name).second) {
            findings.Add(Kind("O-DUPLICATE"), place, fmt::format("{} is recorded twice", Quoted(file.name)),
                         "both are kept, and asked for the name a reader gives the first");
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
