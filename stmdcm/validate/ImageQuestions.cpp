#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>

#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"

namespace stmdcm::validate {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

using Strings = std::vector<std::string>;
using Entries = std::vector<ObjectFileEntry>;

std::string With(const Entries& entries) {
    return CaptureBytes(DeviceSection() + ObjectFileSection(entries) + StmSection("STM_ATB_Id = 9\n"));
}

/// One recorded file and what a load makes of it; behind it stands another that was modified.
struct CheckCase {
    std::string recorded;  ///< a file's name in the folder
    std::int64_t time;     ///< as it is recorded
    std::string answer;    ///< of the host
    std::string asked;     ///< "missing", "changed" or empty
    std::string kept;      ///< as it is saved afterwards; empty: without a path
    bool goesOn;           ///< the next file is checked
};

/// In the folder are "same" of the time 100, "changed" of 200 and "next" of 400.
void ExpectCheck(Host& host, const CheckCase& c) {
    host.WriteDated("same", 100);
    host.WriteDated("changed", 200);
    host.WriteDated("next", 400);
    const Subject subject(host);
    Handler handler(c.answer.empty() ? "" : host.Path(c.answer));
    subject->RegisterEventHandler(&handler);
    const std::string file = host.Path(c.recorded);
    const std::string next = host.Path("next");
    Expect("the load", subject.LoadCapture(With({{"c", file, c.time}, {"d", next, 5}})), true);
    Strings asked;
    if (!c.asked.empty()) {
        asked.push_back(c.asked + " " + file);
    }
    if (c.goesOn) {
        asked.push_back("changed " + next);
    }
    Expect("what the host was asked", handler.asked, asked);
    Expect("what stood in the answer's place before", handler.cameIn, "");
    const Strings images = subject.Images();
    Expect("the first that is kept", images.empty() || images[0][0] != 'c' ? "" : images[0], c.kept);
}

constexpr Question kImageTable[] = {
    {"image.bytes", "the object files are written as the page shows, those without a path left out", kImageLayoutRule,
     [](Host& host) {
         const Subject subject(host);
         const std::string image = host.WriteDated("a.out", 1700000000);
         subject.LoadCapture(With({{"core0", image, 1700000000}, {"core1", "", 7}}));
         const std::string time("\0\x00\xF1\x53\x65\0\0\0\0", 9);
         Expect("DCM_COMMON", PayloadOf(subject.SavedInto(BareCapture()), kCommonSectionName),
                std::string("core0\0", 6) + image + time);
     }},
    {"image.same", "a file of the recorded time is nobody's question", kImageReadingRule,
     [](Host& host) {
         ExpectCheck(host, {"same", 100, "", "", "c same 100", true});
     }},
    {"image.confirmed", "of a modified file the host's same path records its new time", kImageReadingRule,
     [](Host& host) {
         ExpectCheck(host, {"changed", 1, "changed", "changed", "c changed 200", true});
     }},
    {"image.replaced", "another path is taken with the time of the file first looked at", kImageReadingRule,
     [](Host& host) {
         ExpectCheck(host, {"changed", 1, "same", "changed", "c same 200", true});
     }},
    {"image.modified-without-an-answer", "no answer to a modified file ends the check, and it stays", kImageReadingRule,
     [](Host& host) {
         ExpectCheck(host, {"changed", 1, "", "changed", "c changed 1", false});
     }},
    {"image.found", "a missing file is the host's answer, and of the recorded time the check goes on",
     kImageReadingRule,
     [](Host& host) {
         const Subject subject(host);
         const std::string same = host.WriteDated("same", 100);
         Handler handler(same);
         subject->RegisterEventHandler(&handler);
         subject.LoadCapture(With({{"c", "/none", 100}}));
         Expect("what the host was asked", handler.asked, Strings{"missing /none"});
         Expect("what is kept", subject.Images(), Strings{"c same 100"});
     }},
    {"image.found-with-another-time", "one of another time is taken, and ends the check", kImageReadingRule,
     [](Host& host) {
         ExpectCheck(host, {"none", 1, "same", "missing", "c same 1", false});
     }},
    {"image.missing-for-good", "a missing file without an answer loses its path, and ends the check", kImageReadingRule,
     [](Host& host) {
         ExpectCheck(host, {"none", 1, "", "missing", "", false});
     }},
    {"image.no-handler", "without an event handler a missing file loses its path, and nothing crashes",
     kImageReadingRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("the load", subject.LoadCapture(With({{"c", "/none", 1}, {"d", "/none/too", 2}})), true);
         Expect("what is kept", subject.Images(), Strings{"d too 2"});
         Expect("the file of c", subject.Image("c"), "");
     }},
    {"image.handler-is-replaced", "the handler that was registered last is asked, and none after null",
     kImageReadingRule,
     [](Host& host) {
         const Subject subject(host);
         Handler first;
         Handler second;
         subject->RegisterEventHandler(&first);
         subject->RegisterEventHandler(&second);
         subject.LoadCapture(With({{"c", "/none", 1}}));
         subject->RegisterEventHandler(nullptr);
         subject.LoadCapture(With({{"c", "/none", 1}}));
         Expect("how often the first was asked", first.asked.size(), std::size_t{0});
         Expect("how often the second was asked", second.asked.size(), std::size_t{1});
     }},
    {"image.empty-list-keeps", "an empty DCM_COMMON keeps the manager's list, unchecked", kImageReadingRule,
     [](Host& host) {
         const Subject subject(host);
         const std::string image = host.WriteDated("a.out", 100);
         subject.LoadCapture(With({{"core0", image, 100}}));
         Handler handler;
         subject->RegisterEventHandler(&handler);
         fs::remove(image);
         Expect("the load", subject.LoadCapture(With({})), true);
         Expect("what the host was asked", handler.asked, Strings());
         Expect("the file of core0", subject.Image("core0"), image);
     }},
    {"image.list-is-replaced", "another list takes the place of the manager's", kImageReadingRule,
     [](Host& host) {
         const Subject subject(host);
         const std::string image = host.WriteDated("a.out", 100);
         subject.LoadCapture(With({{"core0", image, 100}}));
         subject.LoadCapture(With({{"video", image, 100}}));
         Expect("what is kept", subject.Images(), Strings{"video a.out 100"});
     }},
    {"image.torn-entry", "an entry that runs past its section is dropped; those in front of it count",
     kImageReadingRule,
     [](Host& host) {
         const std::string image = host.WriteDated("a.out", 100);
         std::string payload;
         AppendObjectFileEntry(payload, {"core0", image, 100});
         const std::size_t whole = payload.size();
         AppendObjectFileEntry(payload, {"core1", image, 100});
         for (std::size_t size = whole; size < payload.size(); ++size) {
             const Subject subject(host);
             const std::string section = SectionBytes("DCM_COMMON", 1, payload.substr(0, size));
             Expect("the load", subject.LoadCapture(CaptureBytes(DeviceSection() + section + StmSection("a\n"))), true);
             Expect("what is kept", subject.Images(), Strings{"core0 a.out 100"});
         }
     }},
    {"image.exact-name", "an object file is found by its name, before those that contain it", kImageFindingRule,
     [](Host& host) {
         const Subject subject(host);
         const std::string one = host.WriteDated("one", 100);
         const std::string other = host.WriteDated("other", 100);
         subject.LoadCapture(With({{"core10", one, 100}, {"core1", other, 100}}));
         Expect("the file of core1", subject.Image("core1"), other);
         Expect("the file of ore", subject.Image("ore"), one);
     }},
    {"image.near-name", "else by a name with its last character in it, in any case", kImageFindingRule,
     [](Host& host) {
         const Subject subject(host);
         const std::string image = host.WriteDated("a.out", 100);
         subject.LoadCapture(With({{"core1", image, 100}, {"dsp", image + "2", 100}}));
         Expect("the file of DRAGONFLY1", subject.Image("DRAGONFLY1"), image);
         Expect("the file of CORE", subject.Image("CORE"), image);
         Expect("the file of z", subject.Image("z"), "(none)");
     }},
    {"image.prompt", "a name that is like none is asked for, and an answer that exists is kept", kImageFindingRule,
     [](Host& host) {
         const Subject subject(host);
         Handler handler(host.Path("none"));
         subject->RegisterEventHandler(&handler);
         Expect("the file of z, which the host does not find", subject.Image("z"), "(none)");
         handler.answer = host.WriteDated("a.out", 100);
         Expect("the file of z, which it finds", subject.Image("z"), handler.answer);
         Expect("what it was asked", handler.asked, Strings{"missing Application for z", "missing Application for z"});
         Expect("what is kept", subject.Images(), Strings{"z a.out 100"});
         subject.Image("z");
         Expect("how often it was asked when the file is known", handler.asked.size(), std::size_t{2});
     }},
    {"image.handler-loads", "a handler may load a capture into the manager that asks it", kImageReadingRule,
     [](Host& host) {
         const std::string image = host.WriteDated("a.out", 100);
         const std::string other = host.Write("other.tdf", With({{"video", image, 100}}));
         const Subject subject(host);
         Handler handler("=");
         handler.inside = [&] { subject.Load(other); };
         subject->RegisterEventHandler(&handler);
         subject.LoadCapture(With({{"core0", "/none", 1}, {"core1", "/none", 1}}));
         Expect("what it was asked", handler.asked, Strings{"missing /none"});
         Expect("what is kept", subject.Images(), Strings{"video a.out 100"});
     }},
    {"image.handler-asks", "a handler may ask the manager for files while it is asked, and the list grows",
     kImageReadingRule,
     [](Host& host) {
         const std::string image = host.WriteDated("a.out", 100);
         const Subject subject(host);
         Handler handler(image);
         handler.inside = [&] {
             for (const char* name : {"z", "y", "x", "w"}) {
                 subject.Image(name);
             }
         };
         subject->RegisterEventHandler(&handler);
         subject.LoadCapture(With({{"core0", "/none", 100}}));
         Expect("the first that is kept", subject.Images().at(0), "core0 a.out 100");
         Expect("how many are kept", subject.Images().size(), std::size_t{5});
     }},
    {"image.handler-rewrites", "a handler may replace the capture that is loaded: what it then names is read",
     kImageReadingRule,
     [](Host& host) {
         const Subject subject(host);
         Handler handler;
         handler.inside = [&] {
             host.Write("new.tdf", CaptureBytes(DeviceSection() + ObjectFileSection({}) +
                                                StmSection("STM_ATB_Id = 44\nSTM_STP_Version = 2\n")));
             fs::rename(host.Path("new.tdf"), host.Path("loaded.tdf"));
         };
         subject->RegisterEventHandler(&handler);
         Expect("the load", subject.LoadCapture(With({{"core0", "/none", 1}})), true);
         Expect("STM_ATB_Id", subject.Number("STM_ATB_Id"), 44);
     }},
    {"image.handler-throws", "what a handler throws reaches the host, and the manager works afterwards", kGrantedRule,
     [](Host& host) {
         const Subject subject(host);
         Handler handler;
         handler.inside = [] { throw std::runtime_error("the host's own"); };
         subject->RegisterEventHandler(&handler);
         const std::string capture = With({{"core0", "/none", 1}});
         ExpectThrow<std::runtime_error>(
             "a load in which the handler throws", [&] { subject.LoadCapture(capture); },
             "the host's std::runtime_error");
         Expect("the next load", subject.LoadCapture(capture), true);
         Expect("STM_ATB_Id", subject.Number("STM_ATB_Id"), 9);
     }},
    {"image.pipe", "a recorded path that is a pipe by now is not waited for", kImageReadingRule,
     [](Host& host) {
         ::mkfifo(host.Path("pipe").c_str(), 0600);
         Expect("the load", Subject(host).LoadCapture(With({{"core0", host.Path("pipe"), 1}})), true);
     }},
};

}  // namespace

std::span<const Question> ImageQuestions() { return kImageTable; }

}  // namespace stmdcm::validate
