#include "tool/check/ObjectFileCheck.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <set>
#include <string>

#include "source_utilities/PosixFile.h"
#include "tool/model/Words.h"
#include "trace/dcm/ObjectFileSection.h"

namespace stmdcm {

using Zu::Wep::Trace::ObjectFileEntry;

namespace {

/// Holds one entry against the disk, as a manager does that loads the capture.
void CheckOnDisk(const ObjectFileEntry& entry, const Place& place, Findings& findings) {
    if (entry.fileName.empty()) {
        findings.Add(Kind("O-EMPTY-PATH"), place, fmt::format("{} has no path", Quoted(entry.name)),
                     "a reader checks neither it nor the files behind it");
        return;
    }
    const std::string file = fmt::format("{} of {}", InWords(Unit::None, entry.fileName), Quoted(entry.name));
    const auto opened = ZU_WEP::PosixFile::Open(entry.fileName.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (!opened.IsOpen() || ::stat(entry.fileName.c_str(), &status) != 0) {
        findings.Add(Kind("O-MISSING"), place, fmt::format("{} can't be opened: {}", file, ZU_WEP::ErrnoText(errno)),
                     "the host is asked for it; without an answer the file loses its path");
    } else if (status.st_mtime != entry.timeStamp) {
        findings.Add(
            Kind("O-CHANGED"), place,
            fmt::format("{} is of {}, recorded was {}", file, InWords(Unit::UnixTime, std::int64_t{status.st_mtime}),
                        InWords(Unit::UnixTime, entry.timeStamp)),
            "the host is asked whether this is the file");
    }
}

}  // namespace

std::size_t CheckObjectFiles(std::string_view payload, const Place& place, Findings& findings) {
    const auto list = Zu::Wep::Trace::ParseObjectFileEntries(payload);
    std::set<std::string> names;
    for (const ObjectFileEntry& entry : list.entries) {
        if (!names.insert(entry.name).second) {
            findings.Add(Kind("O-DUPLICATE"), place, fmt::format("{} is recorded twice", Quoted(entry.name)),
                         "both are kept, and asked for the name a reader gives the first");
        }
        CheckOnDisk(entry, place, findings);
    }
    if (!list.complete) {
        findings.Add(Kind("O-TRUNCATED"), place,
                     fmt::format("the payload ends within entry {}", list.entries.size() + 1),
                     fmt::format("dropped; of the entries in front of it {} kept", list.entries.size()));
    }
    return list.entries.size();
}

}  // namespace stmdcm
