#include <fmt/format.h>

#include <cstring>
#include <vector>

#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

namespace {

/// A manager that has done everything once.
void LiveAndDie(Host& host) {
    Identifier identifier;
    Handler handler("=");
    const Subject subject(host, kCpuName, &identifier);
    subject->RegisterEventHandler(&handler);
    subject.LoadText(std::string("STM_ATB_Id = 5\n") + kUsecaseBlocks);
    subject.LoadCapture(
        subject.SavedInto(CaptureBytes(DeviceSection() + ObjectFileSection({{"core0", "/none/a.out", 5}}))));
    subject->SaveAllConfiguration();
}

constexpr Question kLifeTable[] = {
    {"life.one", "a manager is made and destroyed", kLifeRule, [](Host& host) { Subject{host}; }},
    {"life.null-cpu", "there is no manager without a CPU", kLifeRule,
     [](Host& host) {
         Expect("whether a null CPU gives a manager", host.Create(nullptr, nullptr) != nullptr, false);
         Identifier identifier;
         Expect("whether a null CPU with an identifier gives one", host.Create(nullptr, &identifier) != nullptr, false);
     }},
    {"life.null-identifier", "a manager without a device identifier saves and loads captures", kLifeRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("loading what was saved", subject.LoadCapture(subject.SavedInto(BareCapture())), true);
     }},
    {"life.destroy-null", "destroying null does nothing", kLifeRule, [](Host& host) { host.Destroy(nullptr); }},
    {"life.many", "a hundred managers live at once and end in any order", kLifeRule,
     [](Host& host) {
         std::vector<Subject> managers;
         for (int i = 0; i < 100; ++i) {
             managers.emplace_back(host, fmt::format("cpu{}", i));
             managers.back().Set("STM_ATB_Id", i);
         }
         for (std::size_t left = managers.size(); left > 0; --left) {
             const std::uint32_t chosen = host.Chance(static_cast<std::uint32_t>(left));
             std::swap(managers[chosen], managers[left - 1]);
             const std::string name = managers[left - 1].Cpu().name;
             Expect("STM_ATB_Id of " + name, "cpu" + std::to_string(managers[left - 1].Number("STM_ATB_Id")), name);
             managers[left - 1].End();
         }
     }},
    {"life.apart", "what is set in one manager is not in another", kLifeRule,
     [](Host& host) {
         const Subject one(host, "one");
         const Subject other(host, "other");
         one.LoadText(host.AnyProperties() + kUsecaseBlocks);
         Expect("the number of SC use cases of the other", other.Sc().GetNumUsecases(), 0U);
         Expect("what the other saves", other.Text(), Subject(host, "fresh").Text());
     }},
    {"life.info", "GetInfo gives the CPU's numbers and its name", kLifeRule,
     [](Host& host) {
         const Subject subject(host);
         int device = 0;
         int cpu = 0;
         std::string name = "before";
         Expect("the result of GetInfo", subject->GetInfo(device, cpu, name), true);
         Expect("the device id", device, 11);
         Expect("the CPU id", cpu, 13);
         Expect("the name", name, kCpuName);
     }},
    {"life.any-name", "a CPU may have any name that is shorter than 128 characters", kLifeRule,
     [](Host& host) {
         for (const std::string& name : {std::string(), std::string("/"), std::string("../up"), std::string("a b\tc"),
                                         std::string("\xff\x01%s%n"), std::string(127, 'n')}) {
             const Subject subject(host, name);
             int number = 0;
             std::string told;
             subject->GetInfo(number, number, told);
             Expect("the name", told, name);
             subject->SaveAllConfiguration();
             subject->RetrieveAllConfiguration();
         }
     }},
    {"life.borrows", "a manager changes nothing of the CPU that it borrows", kLifeRule,
     [](Host& host) {
         const Subject subject(host);
         subject.LoadText("STM_ATB_Id = 5\n");
         subject->SaveAllConfiguration();
         const CPUInfo& cpu = subject.Cpu();
         Expect("the CPU afterwards", fmt::format("{} {} {} {}", cpu.name, cpu.deviceId, cpu.reserved, cpu.cpuId),
                fmt::format("{} 11 12 13", kCpuName));
     }},
    {"life.same-cpu", "two managers of one CPU may live at once", kLifeRule,
     [](Host& host) {
         const Subject one(host);
         Subject other(host);
         one.Set("STM_ATB_Id", 5);
         other.End();
         Expect("STM_ATB_Id when the other has ended", one.Number("STM_ATB_Id"), 5);
     }},
    {"life.last-error", "GetLastError is empty, after a failure too", kResultRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("GetLastError of a fresh manager", subject->GetLastError(), "");
         subject.Load(host.Path("none.tdf"));
         subject->SaveConfiguration(host.Path("none.tdf"), TRACE_DATA_FILE_TDF);
         Expect("GetLastError after failures", subject->GetLastError(), "");
     }},
    {"life.any-order", "calls in any order, with nothing loaded, end well", kLifeRule,
     [](Host& host) {
         for (int round = 0; round < 40; ++round) {
             Subject subject(host);
             for (int call = 0; call < 6; ++call) {
                 switch (host.Chance(6)) {
                     case 0:
                         subject->RegisterEventHandler(nullptr);
                         break;
                     case 1:
                         subject->RetrieveAllConfiguration();
                         break;
                     case 2:
                         subject.Image("core0");
                         break;
                     case 3:
                         subject.Sc().CleaupUsecases(host.Chance(2) == 0);
                         break;
                     case 4:
                         subject.Load(host.Path("none.tdf"));
                         break;
                     default:
                         subject.Pmi().RemoveUsecase(static_cast<int>(host.Chance(4)));
                 }
             }
             Expect("STM_STP_Version after them", subject.Number("STM_STP_Version"), 1);
         }
     }},
    {"life.leaves-no-descriptor", "a manager that has loaded and saved leaves no descriptor open", kLifeRule,
     [](Host& host) {
         LiveAndDie(host);
         const std::size_t before = Held::Descriptors();
         LiveAndDie(host);
         Expect("descriptors after one more", Held::Descriptors(), before);
     }},
    {"life.leaves-no-memory", "managers that come and go leave no memory behind", kLifeRule,
     [](Host& host) {
         const auto liveAndDie = [&](int times) {
             for (int i = 0; i < times; ++i) {
                 LiveAndDie(host);
             }
         };
         liveAndDie(20);
         const std::size_t before = Held::Heap();
         liveAndDie(20);
         ExpectAtMost("bytes more on the heap after twenty managers", static_cast<long long>(Held::Heap() - before),
                      2048);
     }},
    {"life.leaves-no-file", "saving leaves no file behind but what was saved", kFilesRule,
     [](Host& host) {
         LiveAndDie(host);
         std::vector<std::string> names = FilesBelow(host.Path(""));
         std::erase(names, "printed");
         Expect("the files", names,
                std::vector<std::string>{"home/.ZU-trace/settings/Core_0-Cluster-STMCfg.txt.dcm", "loaded.tdf",
                                         "local.txt", "saved.tdf"});
     }},
};

}  // namespace

std::span<const Question> LifeQuestions() { return kLifeTable; }

}  // namespace stmdcm::validate
