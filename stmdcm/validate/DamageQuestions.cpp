#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/FileSizeLimit.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"
#include "trace/format/SectionLayout.h"
#include "trace/format/StmSections.h"

namespace stmdcm::validate {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

constexpr char kSettings[] = "STM_ATB_Id = 9\n";
constexpr char kChainRule[] = "docs/tdf.md, \"In one step, by a manager\"";

std::string Ours() { return DeviceSection() + ObjectFileSection({}) + StmSection(kSettings); }

/// Whether a configuration behind that is found.
bool IsFoundBehind(Host& host, const std::string& section) {
    const Subject subject(host);
    return subject.LoadCapture(CaptureBytes(section + Ours())) && subject.Number(kAtbId) == 9;
}

/// What a save leaves of a capture; another manager loads what was saved.
std::string SavedAndFound(Host& host, const std::string& bytes) {
    const Subject subject(host);
    subject.Set(kAtbId, 77);
    const std::string saved = subject.SavedInto(bytes);
    const Subject another(host, "another");
    Expect("loading the capture that was saved into", another.LoadCapture(saved), true);
    Expect("STM_ATB_Id that was loaded", another.Number(kAtbId), 77);
    return saved;
}

constexpr Question kDamageTable[] = {
    {"damage.cut-anywhere", "a capture that is cut loads what is there, once the header of STMDECODERINFO is whole",
     kSearchRule,
     [](Host& host) {
         const std::string whole = CaptureBytes(DeviceSection() + ObjectFileSection({{"core0", "/none/a.out", 5}}) +
                                                StmSection("STM_ATB_Id = 9\nSTM_STP_Version = 2\n"));
         const std::size_t payload = LastPayloadOffset(whole);
         const std::size_t line = payload + std::string_view("STM_ATB_Id = 9").size();
         for (std::size_t size = 0; size < whole.size(); ++size) {
             const Subject subject(host);
             const std::string what = fmt::format("the first {} of {} bytes", size, whole.size());
             Expect("loading " + what, subject.LoadCapture(whole.substr(0, size)), size >= payload);
             Expect("STM_ATB_Id from " + what, subject.Number(kAtbId), size >= line ? 9 : 1);
         }
     }},
    {"damage.cut-and-saved", "saving into a capture that is cut anywhere gives one that can be walked again, or false",
     kChainRule,
     [](Host& host) {
         const std::string whole = CaptureBytes(SectionBytes("TRACE0", 1, "samples") + Ours());
         for (std::size_t size = 0; size < whole.size(); size += 1 + host.Chance(6)) {
             const Subject subject(host);
             const std::string path = host.Write("cut.tdf", whole.substr(0, size));
             const bool isSaved = subject->SaveConfiguration(path, TRACE_DATA_FILE_TDF);
             const std::string after = Host::Read(path);
             Expect(fmt::format("the result of saving behind {} bytes", size), isSaved, size >= kFirstSectionOffset);
             Expect("the payload that was there", after.substr(0, std::min<std::size_t>(size, 4)),
                    whole.substr(0, std::min<std::size_t>(size, 4)));
             if (isSaved) {
                 Expect(fmt::format("whether the save behind {} bytes is found", size),
                        PayloadOf(after, kStmSectionName) != "(none)", true);
             }
         }
     }},
    {"damage.any-flips", "no capture, however its bytes are changed, ends the host, and the manager works afterwards",
     kSearchRule,
     [](Host& host) {
         const std::string whole =
             CaptureBytes(SectionBytes("TRACE0", 1, "samples") + DeviceSection() +
                          ObjectFileSection({{"core0", "/none/a.out", 5}, {"core1", "/none/b.out", 6}}) +
                          StmSection(host.AnyProperties() + kUsecaseBlocks));
         const Subject subject(host);
         for (int round = 0; round < 300; ++round) {
             std::string bytes = whole;
             for (std::uint32_t change = 1 + host.Chance(4); change > 0; --change) {
                 const std::size_t place =
                     host.Chance(static_cast<std::uint32_t>(host.Chance(2) == 0 ? 160 : bytes.size()));
                 bytes[place] = static_cast<char>(host.Chance(256));
             }
             subject.LoadCapture(bytes);
         }
         Expect("loading the right one afterwards", subject.LoadCapture(whole), true);
     }},
    {"damage.length-zero", "a search ends at a section of length 0", kSearchRule,
     [](Host& host) {
         Expect("whether one is passed", IsFoundBehind(host, SectionBytes("N", 1, "data", -17)), false);
     }},
    {"damage.length-past-the-end", "a search ends at a section that reaches past the file", kSearchRule,
     [](Host& host) {
         Expect("whether one is passed", IsFoundBehind(host, SectionBytes("N", 1, "data", 10'000)), false);
     }},
    {"damage.length-of-128-MiB", "a search ends at a length above 128 MiB, and at one that passes 4 GiB", kSearchRule,
     [](Host& host) {
         for (const std::int64_t lie : {0x8000001LL, 0xFFFFFFFFLL, 0xFFFFFFF0LL}) {
             Expect(fmt::format("whether a length of {} is passed", lie),
                    IsFoundBehind(host, SectionBytes("N", 1, "data", lie - 17)), false);
         }
     }},
    {"damage.length-too-short", "a search goes on inside a section whose length does not cover its header", kSearchRule,
     [](Host& host) {
         for (int length = 1; length < 12; ++length) {
             IsFoundBehind(host, SectionBytes("N", 1, "data", length - 17));  // it ends, wherever
         }
         // A section of length 12 with a name: the walk goes on with the name, which is a section here.
         const std::string inside = SectionBytes("I", 1, "x");
         Expect("whether one is found that stands in the name of a section of length 12",
                IsFoundBehind(host, EncodeSectionStart(12, inside, 1)), true);
     }},
    {"damage.long-name", "a search passes a name of 4095 bytes, and ends at a longer one", kSearchRule,
     [](Host& host) {
         Expect("whether 4095 are passed", IsFoundBehind(host, SectionBytes(std::string(4095, 'n'), 1, "d")), true);
         Expect("whether 4096 are passed", IsFoundBehind(host, SectionBytes(std::string(4096, 'n'), 1, "d")), false);
     }},
    {"damage.lying-configuration",
     "a configuration that states another length is found, and no more is read than is "
     "there",
     kSearchRule,
     [](Host& host) {
         const std::string front = DeviceSection() + ObjectFileSection({});
         for (const std::int64_t lie : {1LL, 10'000LL, 0x7000000LL, -20LL, -40LL}) {
             const Subject subject(host);
             const bool result =
                 subject.LoadCapture(CaptureBytes(front + SectionBytes(kStmSectionName, 1, kSettings, lie)));
             Expect(fmt::format("loading one whose length is {} more than it has", lie), result, true);
             if (lie > 0) {
                 Expect("STM_ATB_Id", subject.Number(kAtbId), 9);
             }
         }
     }},
    {"damage.torn-foreign-end", "behind a foreign section that is torn a save puts zeros, and is found", kChainRule,
     [](Host& host) {
         const std::string torn = BareCapture() + SectionBytes("TRACE0", 1, "samples", 5);
         const std::string saved = SavedAndFound(host, torn);
         Expect("what was there, and the gap", saved.substr(0, torn.size() + 5), torn + std::string(5, '\0'));
     }},
    {"damage.torn-own-end", "a torn section of its own gets the length that it has, and a save behind it is found",
     kChainRule,
     [](Host& host) {
         const std::string torn = CaptureBytes(DeviceSection() + SectionBytes(kCommonSectionName, 1, "core0", 100));
         const std::string saved = SavedAndFound(host, torn);
         Expect("the first DCM_COMMON", PayloadOf(saved, kCommonSectionName), "core0");
     }},
    {"damage.zeros-at-the-end", "zeros at the end of a capture are space, where a save begins", kChainRule,
     [](Host& host) {
         const std::string bare = BareCapture();
         for (const std::size_t zeros : {1U, 3U, 12U, 500U, 70'000U}) {
             const std::string saved = SavedAndFound(host, bare + std::string(zeros, '\0'));
             Expect(fmt::format("where DCM_COMMON begins in front of {} zeros", zeros), SectionsOf(saved).at(1).offset,
                    bare.size());
         }
     }},
    {"damage.interrupted-save", "a save that was interrupted in its last step is there after the next", kChainRule,
     [](Host& host) {
         const std::string bytes =
             CaptureBytes(DeviceSection() + SectionBytes("unfinished", 1, "") + StmSection(kSettings));
         const Subject subject(host);
         Expect("loading it before that", subject.LoadCapture(bytes), false);
         const std::string saved = subject.SavedInto(bytes);
         Expect("the name of its second section", SectionsOf(saved).at(1).name, kCommonSectionName);
         Expect("loading it then", subject.LoadCapture(saved), true);
         Expect("STM_ATB_Id", subject.Number(kAtbId), 9);
     }},
    {"damage.broken-chain", "saving behind a chain that can't be mended gives true, and changes nothing in front",
     kResultRule,
     [](Host& host) {
         const std::string broken = CaptureBytes(DeviceSection() + SectionBytes("N", 1, "data", -17) + "behind");
         const Subject subject(host);
         const std::string saved = subject.SavedInto(broken);
         Expect("what was there", saved.substr(0, broken.size()), broken);
     }},
    {"damage.full-disk", "a disk that is full makes a save false, and the capture is as it was", kResultRule,
     [](Host& host) {
         const Subject subject(host);
         subject.LoadText(kUsecaseBlocks);
         const std::string bytes = BareCapture() + SectionBytes("TRACE0", 1, "samples");
         const std::string path = host.Write("full.tdf", bytes);
         const std::size_t room = subject.SavedInto(bytes).size();
         for (std::size_t limit = bytes.size(); limit < room; limit += 37) {
             const FileSizeLimit full(limit);
             Expect(fmt::format("saving with room for {} of {} bytes", limit - bytes.size(), room - bytes.size()),
                    subject->SaveConfiguration(path, TRACE_DATA_FILE_TDF), false);
             Expect("the capture afterwards", Host::Read(path), bytes);
         }
         Expect("saving when there is room again", subject->SaveConfiguration(path, TRACE_DATA_FILE_TDF), true);
     }},
    {"damage.not-a-file", "a directory, a pipe or a dead link in a capture's place gives false, at once", kResultRule,
     [](Host& host) {
         fs::create_directory(host.Path("folder.tdf"));
         ::mkfifo(host.Path("pipe.tdf").c_str(), 0600);
         fs::create_symlink(host.Path("none"), host.Path("link.tdf"));
         const Subject subject(host);
         for (const char* name : {"folder.tdf", "pipe.tdf", "link.tdf"}) {
             Expect(fmt::format("loading {}", name), subject.Load(host.Path(name)), false);
             Expect(fmt::format("saving into {}", name),
                    subject->SaveConfiguration(host.Path(name), TRACE_DATA_FILE_TDF), false);
         }
     }},
};

}  // namespace

std::span<const Question> DamageQuestions() { return kDamageTable; }

}  // namespace stmdcm::validate
