#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>

#include <filesystem>

#include "host/vorn/vornError.h"
#include "source_utilities/PosixFile.h"
#include "stmdcm/plugin/WorkingFile.h"
#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"
#include "trace/format/StmSections.h"

namespace stmdcm::validate {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

/// A capture that loads, with that settings text and device text.
std::string Whole(std::string_view settings, std::string_view device = "serial=7\n") {
    return CaptureBytes(DeviceSection(device) + ObjectFileSection({}) + StmSection(settings));
}

/// Loading gives that, and STM_ATB_Id is that then, which was 3.
void ExpectLoad(Host& host, const std::string& what, const std::string& bytes, bool result, std::int32_t id) {
    const Subject subject(host);
    subject.Set(kAtbId, 3);
    Expect("the result of loading " + what, subject.LoadCapture(bytes), result);
    Expect("STM_ATB_Id after loading " + what, subject.Number(kAtbId), id);
}

/// Neither loading nor saving does anything with that file.
void ExpectRefused(Host& host, const std::string& name, const std::string& bytes) {
    const Subject subject(host);
    const std::string path = host.Write(name, bytes);
    Expect("loading " + name, subject.Load(path), false);
    Expect("saving into " + name, subject->SaveConfiguration(path, TRACE_DATA_FILE_TDF), false);
    Expect(name + " afterwards", Host::Read(path), bytes);
}

/// Sections that mean nothing to a manager, of any bytes and size.
std::string ForeignSections(Host& host) {
    std::string sections = SectionBytes("", 1, "no name") + SectionBytes("EMPTY", 0, "") +
                           SectionBytes("DCM_COMMON", 2, "another version") +
                           SectionBytes("stmdecoderinfo", 1, "another case");
    for (int i = 0; i < 20; ++i) {
        std::string payload(host.Chance(3000), '\0');
        for (char& byte : payload) {
            byte = static_cast<char>(host.Chance(256));
        }
        sections += SectionBytes(fmt::format("TRACE{}", i), host.Chance(1000), payload);
    }
    return sections;
}

constexpr Question kCaptureTable[] = {
    {"capture.there-and-back", "a capture gives back the whole configuration that was saved into it", kLayoutRule,
     [](Host& host) {
         const std::string text = host.AnyProperties() + kUsecaseBlocks;
         const Subject subject(host);
         subject.LoadText(text);
         const std::string saved = subject.SavedInto(BareCapture());
         const Subject another(host, "another");
         Expect("loading what was saved", another.LoadCapture(saved), true);
         Expect("the configuration that was loaded", another.Text(), text);
     }},
    {"capture.sections", "a save appends DCM_COMMON and STMDECODERINFO of version 1, and nothing more", kLayoutRule,
     [](Host& host) {
         std::vector<std::string> names;
         for (const FoundSection& section : SectionsOf(Subject(host).SavedInto(BareCapture()))) {
             names.push_back(fmt::format("{} {}", section.name, section.version));
         }
         Expect("the sections", names, std::vector<std::string>{"DEVID 1", "DCM_COMMON 1", "STMDECODERINFO 1"});
     }},
    {"capture.foreign-stays", "a save changes no byte of the sections that are there", kSaveRule,
     [](Host& host) {
         const std::string before = CaptureBytes(ForeignSections(host) + DeviceSection() + ForeignSections(host));
         const std::string after = Subject(host).SavedInto(before);
         Expect("the bytes that were there", after.substr(0, before.size()), before);
     }},
    {"capture.found-behind-foreign", "a configuration is found behind any sections of others", kSearchRule,
     [](Host& host) {
         const std::string foreign = ForeignSections(host);
         const std::string bytes = CaptureBytes(foreign + StmSection("STM_ATB_Id = 9\n") + foreign +
                                                ObjectFileSection({}) + foreign + DeviceSection() + foreign);
         ExpectLoad(host, "it", bytes, true, 9);
     }},
    {"capture.many-sections", "a configuration is found behind twenty thousand sections", kSearchRule,
     [](Host& host) {
         std::string foreign;
         for (int i = 0; i < 20'000; ++i) {
             foreign += SectionBytes("TRACE", 1, "data");
         }
         const Subject subject(host);
         subject.Set(kAtbId, 9);
         ExpectLoad(host, "what was saved behind them", subject.SavedInto(BareCapture() + foreign), true, 9);
     }},
    {"capture.must-exist", "saving into a capture that is missing gives false and makes no file", kResultRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("saving", subject->SaveConfiguration(host.Path("none.tdf"), TRACE_DATA_FILE_TDF), false);
         Expect("whether there is a file", fs::exists(host.Path("none.tdf")), false);
         Expect("loading", subject.Load(host.Path("none.tdf")), false);
     }},
    {"capture.identifier", "a file that does not begin with TDF2 is no capture", kResultRule,
     [](Host& host) {
         const std::string sections = Whole("STM_ATB_Id = 9\n").substr(4);
         for (const char* start : {"TDF3", "tdf2", "2FDT"}) {
             ExpectRefused(host, "other.tdf", start + sections);
         }
         ExpectRefused(host, "short.tdf", "TDF");
         ExpectRefused(host, "empty.tdf", "");
     }},
    {"capture.extension", "a capture has the extension .tdf, in any case", kSearchRule,
     [](Host& host) {
         for (const char* name : {"a.dat", "tdf", "a.tdf.old", "a.tdfx"}) {
             ExpectRefused(host, name, Whole("STM_ATB_Id = 9\n"));
         }
         const Subject subject(host);
         Expect("loading A.TdF", subject.Load(host.Write("A.TdF", Whole("STM_ATB_Id = 9\n"))), true);
     }},
    {"capture.no-device", "a capture without a section DEVID can't be loaded, and nothing of it is applied",
     kDeviceRule,
     [](Host& host) {
         const std::string ours = ObjectFileSection({}) + StmSection("STM_ATB_Id = 9\n");
         ExpectLoad(host, "one without DEVID", CaptureBytes(ours), false, 3);
         ExpectLoad(host, "one with DEVID of version 2", CaptureBytes(SectionBytes("DEVID", 2, "a=b\n") + ours), false,
                    3);
     }},
    {"capture.empty-device", "neither can one with an empty DEVID", kDeviceRule,
     [](Host& host) { ExpectLoad(host, "it", Whole("STM_ATB_Id = 9\n", ""), false, 3); }},
    {"capture.device-sets-properties", "a property in DEVID is set, in front of those of STMDECODERINFO", kDeviceRule,
     [](Host& host) {
         ExpectLoad(host, "one that sets it in DEVID", Whole("STM_STP_Version = 2\n", "STM_ATB_Id=9\n"), true, 9);
         ExpectLoad(host, "one that sets it in both", Whole("STM_ATB_Id = 8\n", "STM_ATB_Id=9\n"), true, 8);
     }},
    {"capture.device-passes-over", "DEVID may hold any other lines, which are passed over", kDeviceRule,
     [](Host& host) {
         ExpectLoad(host, "it",
                    Whole("STM_STP_Version = 2\n",
                          "device=board-7\r\n\nno value\nSTM_ATB_Id\n=\nCycleModeDelta=0\nSTM_ATB_Id = 9 x\n"),
                    true, 9);
     }},
    {"capture.empty-configuration", "one with an empty STMDECODERINFO can't be loaded, though DEVID is in force then",
     kResultRule,
     [](Host& host) {
         ExpectLoad(host, "it", Whole("", "STM_ATB_Id=9\n"), false, 9);
         const Subject subject(host);
         subject.LoadText(kUsecaseBlocks);
         subject.LoadCapture(Whole(""));
         Expect("the number of SC use cases, which stay", subject.Sc().GetNumUsecases(), 2U);
     }},
    {"capture.no-configuration", "one without STMDECODERINFO of version 1 can't be loaded", kSearchRule,
     [](Host& host) {
         const std::string start = DeviceSection() + ObjectFileSection({});
         ExpectLoad(host, "one without it", CaptureBytes(start), false, 3);
         for (const auto& [name, version] :
              {std::pair("STMDECODERINFO", 2), {"stmdecoderinfo", 1}, {"STMDECODERINF", 1}, {"STMDECODERINFO ", 1}}) {
             const std::string section = SectionBytes(name, static_cast<std::uint32_t>(version), "STM_ATB_Id = 9\n");
             ExpectLoad(host, fmt::format("one with {} of version {}", name, version), CaptureBytes(start + section),
                        false, 3);
         }
     }},
    {"capture.no-object-files", "neither can one without DCM_COMMON", kErrorRule,
     [](Host& host) {
         ExpectLoad(host, "it", CaptureBytes(DeviceSection() + StmSection("STM_ATB_Id = 9\n")), false, 3);
     }},
    {"capture.any-text-loads", "a load gives true however the text looks, and what is understood of it is in force",
     kReadingRule,
     [](Host& host) {
         for (const char* text : {"STM_ATB_Id = 9\n", "STM_ATB_Id = 9", "STM_ATB_Id = 9\ncolour = 3\n",
                                  "STM_ATB_Id = 9\n\n\n\n", "STM_ATB_Id = 9\n{\ntype=CPT\n"}) {
             ExpectLoad(host, InWords(text), Whole(text), true, 9);
         }
         ExpectLoad(host, "an unknown name", Whole("colour = 3\nSTM_ATB_Id = 9\n"), true, 3);
     }},
    {"capture.oldest-counts", "the oldest configuration is read: a second save changes nothing for a reader",
     kResultRule,
     [](Host& host) {
         const Subject subject(host);
         subject.Set(kAtbId, 8);
         const std::string once = subject.SavedInto(BareCapture());
         subject.Set(kAtbId, 9);
         const std::string twice = subject.SavedInto(once);
         Expect("the first save in the capture", twice.substr(0, once.size()), once);
         Expect("whether the second is there, too", twice.size() > once.size(), true);
         ExpectLoad(host, "it", twice, true, 8);
     }},
    {"capture.retired-is-passed-over", "a section that a change has retired is passed over",
     "docs/tdf.md, \"Changing a configuration in place\"",
     [](Host& host) {
         for (const std::uint32_t state : {0x80000001U, 0x81000001U, 0xA1000001U, 0xC0000001U}) {
             const std::string bytes = CaptureBytes(DeviceSection() + ObjectFileSection({}) +
                                                    SectionBytes(kStmSectionName, state, "STM_ATB_Id = 8\n") +
                                                    StmSection("STM_ATB_Id = 9\n"));
             ExpectLoad(host, fmt::format("one behind a section of version {:#x}", state), bytes, true, 9);
         }
     }},
    {"capture.host-loads-too", "a load tells the device identifier the path and type 0, once", kGrantedRule,
     [](Host& host) {
         Identifier identifier;
         identifier.result = false;
         const Subject subject(host, kCpuName, &identifier);
         Expect("the load, though the identifier gives false",
                subject.LoadCapture(CaptureBytes(DeviceSection() + ObjectFileSection({{"a", "/none", 1}}) +
                                                 StmSection("STM_ATB_Id = 9\n"))),
                true);
         Expect("its calls", identifier.calls, std::vector<std::string>{"load " + host.Path("loaded.tdf") + " 0"});
     }},
    {"capture.host-saves-in-front", "what the device identifier appends within a save is in front of it", kResultRule,
     [](Host& host) {
         Identifier identifier;
         identifier.result = false;
         identifier.inside = [&] {
             WriteWorkingFile(host.Path("saved.tdf"),
                              Host::Read(host.Path("saved.tdf")) + SectionBytes("HOST", 1, "its own"));
         };
         const Subject subject(host, kCpuName, &identifier);
         std::string names;
         for (const FoundSection& section : SectionsOf(subject.SavedInto(BareCapture()))) {
             names += section.name + " ";
         }
         Expect("the sections", names, "DEVID HOST DCM_COMMON STMDECODERINFO ");
         Expect("its calls", identifier.calls, std::vector<std::string>{"save " + host.Path("saved.tdf") + " 0"});
     }},
    {"capture.host-may-throw", "what the device identifier throws as vornError is a save, or a load, that failed",
     kGrantedRule,
     [](Host& host) {
         const auto fail = [] { throw Zu::Wep::Vorn::vornError("no", Zu::Wep::Vorn::vornErrorIF::Severity_Error); };
         Identifier identifier;
         const Subject subject(host, kCpuName, &identifier);
         const std::string bytes = Subject(host).SavedInto(BareCapture() + ObjectFileSection({{"a", "/none", 1}}));
         identifier.inside = fail;
         const std::string path = host.Write("throws.tdf", bytes);
         Expect("the save", subject->SaveConfiguration(path, TRACE_DATA_FILE_TDF), false);
         Expect("the capture afterwards", Host::Read(path), bytes);
         identifier.inside = fail;
         Expect("the load", subject.Load(path), false);
         Expect("the next load", subject.Load(path), true);
     }},
    {"capture.locked", "a save into a capture that the host has locked itself waits a while, and is done", kResultRule,
     [](Host& host) {
         const std::string path = host.Write("locked.tdf", BareCapture());
         const auto own = ZU_WEP::PosixFile::Open(path.c_str(), O_RDWR);
         ::flock(own.Descriptor(), LOCK_EX);
         const Subject subject(host);
         subject.Set(kAtbId, 9);
         Expect("the save", subject->SaveConfiguration(path, TRACE_DATA_FILE_TDF), true);
         ExpectLoad(host, "what was saved", Host::Read(path), true, 9);
     }},
    {"capture.loading-reads-alone", "loading changes neither the capture's bytes nor its time", kSearchRule,
     [](Host& host) {
         const std::string bytes = Whole("STM_ATB_Id = 9\n") + std::string(100, '\0');
         const std::string path = host.Write("old.tdf", bytes);
         fs::last_write_time(path, fs::file_time_type());
         Subject(host).Load(path);
         Expect("the bytes", Host::Read(path), bytes);
         Expect("whether the time is the same", fs::last_write_time(path) == fs::file_time_type(), true);
     }},
};

}  // namespace

std::span<const Question> CaptureQuestions() { return kCaptureTable; }

}  // namespace stmdcm::validate
