// What a command of stmdcm does, done by a host that does nothing else: `bare_host show|check|set CAPTURE`.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "source_utilities/PosixFile.h"
#include "trace/dcm/StmDeviceConfigManager.h"
#include "trace/format/SectionScanner.h"
#include "trace/format/StmSections.h"

using namespace Zu::Wep::Trace;

namespace {

int Show(const char* path) {
    CPUInfo cpu{"bare", 0, 0, 0};
    StmDeviceConfigManager manager(&cpu, nullptr);
    if (!manager.LoadConfiguration(path, TRACE_DATA_FILE_TDF)) {
        return 1;
    }
    std::string text;
    manager.OutputParametersToBuffer(text);
    manager.GetUsecaseRecord()->SaveAllRecords(text);
    manager.GetCTUsecaseRecord()->SaveAllRecords(text);
    manager.GetPMIUsecaseRecord()->SaveAllRecords(text);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

int Check(const char* path) {
    CPUInfo cpu{"bare", 0, 0, 0};
    StmDeviceConfigManager manager(&cpu, nullptr);
    std::puts(manager.LoadConfiguration(path, TRACE_DATA_FILE_TDF) ? "loads" : "does not load");
    return 0;
}

/// Appends the settings that are there and retires those, each with its sync.
int Set(const char* path) {
    const ZU_WEP::PosixFile file = ZU_WEP::PosixFile::Open(path, O_RDWR);
    FileSectionSource source(file);
    SectionScanner scanner(source);
    SectionInfo section;
    if (!scanner.Find({&kStmSection, 1}, section)) {
        return 1;
    }
    std::string bytes(section.length, '\0');
    file.ReadAt(section.offset, bytes.data(), bytes.size());
    for (SectionInfo rest; scanner.Next(rest);) {
    }
    return file.WriteAt(scanner.StopOffset(), {bytes}) && file.SyncData() &&
                   file.WriteAt(section.offset + SectionHeader::kVersionOffset, {"\2"}) && file.SyncData()
               ? 0
               : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        return 2;
    }
    return std::strcmp(argv[1], "show") == 0    ? Show(argv[2])
           : std::strcmp(argv[1], "check") == 0 ? Check(argv[2])
                                                : Set(argv[2]);
}
