#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "host/vorn/vornError.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/FileSizeLimit.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"

namespace stmdcm::validate {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

constexpr char kOwnFile[] = "Core_0-Cluster-STMCfg.txt.dcm";

bool Save(const Subject& subject, const std::string& name) {
    return subject->SaveConfiguration(name, TRACE_DATA_FILE_LIVE);
}

bool Load(const Subject& subject, const std::string& name) {
    return subject->LoadConfiguration(name, TRACE_DATA_FILE_LIVE);
}

constexpr Question kSettingsTable[] = {
    {"settings.name-of-a-cpu", "a CPU's settings file has its name, with - for each slash", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         subject->SaveAllConfiguration();
         Expect("the files in the settings directory", FilesBelow(Host::Settings("")),
                std::vector<std::string>{kOwnFile});
     }},
    {"settings.saving-adds-the-extension", "saving adds .dcm, also to a name that has it", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         Save(subject, "a");
         Save(subject, "b.dcm");
         Expect("the files in the settings directory", FilesBelow(Host::Settings("")),
                std::vector<std::string>{"a.dcm", "b.dcm.dcm"});
     }},
    {"settings.loading-adds-the-extension", "loading adds .dcm, unless the path holds it anywhere", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         host.Write("home/.ZU-trace/settings/a.dcm", "STM_ATB_Id=5");
         host.Write("home/.ZU-trace/settings/b.dcm.old", "STM_ATB_Id=6");
         Expect("loading a", Load(subject, "a"), true);
         Expect("STM_ATB_Id from a.dcm", subject.Number("STM_ATB_Id"), 5);
         Expect("loading b.dcm.old", Load(subject, "b.dcm.old"), true);
         Expect("STM_ATB_Id from b.dcm.old", subject.Number("STM_ATB_Id"), 6);
     }},
    {"settings.empty-name", "there is no settings file without a name", kFilesRule,
     [](Host& host) { Expect("loading the name \"\"", Load(Subject(host), ""), false); }},
    {"settings.types", "types 1, 2 and 4 save a settings file, 3 and others don't; 1 and 4 alone load one", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         for (const auto& [type, saves, loads] : {std::tuple(TRACE_DATA_FILE_LIVE, true, true),
                                                  {TRACE_DATA_FILE_TYPE_2, true, false},
                                                  {TRACE_DATA_FILE_TYPE_3, false, false},
                                                  {TRACE_DATA_FILE_LOCAL, true, false},
                                                  {static_cast<eTraceDataFileType>(5), false, false},
                                                  {static_cast<eTraceDataFileType>(-1), false, false}}) {
             const std::string name = "type" + std::to_string(type);
             subject.LoadText(std::string("STM_ATB_Id=5\n") + kUsecaseBlocks);
             Expect("saving as " + name, subject->SaveConfiguration(name, type), saves);
             Expect("whether there is a file for " + name, fs::exists(Host::Settings(name + ".dcm")), saves);
             Expect("loading as " + name, subject->LoadConfiguration(name, type), loads);
         }
     }},
    {"settings.local-path", "a local file is loaded from the path as it is given", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         fs::create_directory(host.Path("folder"));
         host.Write("folder/no extension", "STM_ATB_Id=5");
         Expect("loading it", subject->LoadConfiguration("folder/no extension", TRACE_DATA_FILE_LOCAL), true);
         Expect("STM_ATB_Id", subject.Number("STM_ATB_Id"), 5);
     }},
    {"settings.no-directory-is-no-failure", "saving into a directory that can't be written gives true, and no file",
     kResultRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("saving into a directory that is missing", Save(subject, "no/such/directory"), true);
         Expect("the files in the settings directory", FilesBelow(Host::Settings("")), std::vector<std::string>());
     }},
    {"settings.replaced-whole", "saving replaces a longer file, under the same name, and leaves no other", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         host.Write("home/.ZU-trace/settings/a.dcm", std::string(100'000, 'x'));
         Save(subject, "a");
         Expect("the file", Host::Read(Host::Settings("a.dcm")), subject.Text());
         fs::remove(Host::Settings("validate-text.dcm"));
         Expect("the files in the settings directory", FilesBelow(Host::Settings("")),
                std::vector<std::string>{"a.dcm"});
     }},
    {"settings.mode-stays", "a settings file keeps its mode when it is replaced", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         Save(subject, "a");
         fs::permissions(Host::Settings("a.dcm"), fs::perms(0640));
         subject.Set("STM_ATB_Id", 5);
         Save(subject, "a");
         Expect("the mode", static_cast<unsigned>(fs::status(Host::Settings("a.dcm")).permissions()), 0640U);
         ExpectPart("the file", Host::Read(Host::Settings("a.dcm")), "STM_ATB_Id = 5\n");
     }},
    {"settings.link-stays", "a settings file that is a link to another is replaced where that is", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         host.Write("target.txt", "old");
         fs::create_symlink(host.Path("target.txt"), Host::Settings("a.dcm"));
         Expect("saving", Save(subject, "a"), true);
         ExpectPart("what is read by the link's name", Host::Read(Host::Settings("a.dcm")), "STM_ATB_Id = 1\n");
     }},
    {"settings.retrieve", "RetrieveAllConfiguration reads the CPU's file again, use cases and all", kLifeRule,
     [](Host& host) {
         const Subject subject(host);
         host.Write("home/.ZU-trace/settings/" + std::string(kOwnFile), std::string("STM_ATB_Id=5\n") + kUsecaseBlocks);
         subject.Set("STM_ATB_Id", 9);
         subject->RetrieveAllConfiguration();
         Expect("STM_ATB_Id", subject.Number("STM_ATB_Id"), 5);
         Expect("the number of SC use cases", subject.Sc().GetNumUsecases(), 2U);
         subject->RetrieveAllConfiguration();
         Expect("their number when it is read once more", subject.Sc().GetNumUsecases(), 2U);
     }},
    {"settings.no-retrieve-behind-a-local-file", "it reads nothing once a local file was loaded", kGrantedRule,
     [](Host& host) {
         const Subject subject(host);
         subject->SaveAllConfiguration();
         subject.LoadText("STM_ATB_Id=7");
         subject->RetrieveAllConfiguration();
         Expect("STM_ATB_Id", subject.Number("STM_ATB_Id"), 7);
     }},
    {"settings.no-variable",
     "without ZU_TRACE_SETTINGS_DIR settings files throw std::logic_error, making a manager "
     "doesn't",
     kResultRule,
     [](Host& host) {
         const Subject subject(host);
         for (const bool isEmpty : {false, true}) {
             isEmpty ? ::setenv("ZU_TRACE_SETTINGS_DIR", "", 1) : ::unsetenv("ZU_TRACE_SETTINGS_DIR");
             ExpectThrow<std::logic_error>(
                 "saving one", [&] { Save(subject, "a"); }, "std::logic_error");
             ExpectThrow<std::logic_error>(
                 "loading one", [&] { Load(subject, "a"); }, "std::logic_error");
             const Subject another(host, "another");
             Expect("STM_ATB_Id of a manager that is made then", another.Number("STM_ATB_Id"), 1);
         }
     }},
    {"settings.variable-counts", "settings files are where ZU_TRACE_SETTINGS_DIR says when they are used", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         fs::create_directory(host.Path("elsewhere"));
         ::setenv("ZU_TRACE_SETTINGS_DIR", host.Path("elsewhere").c_str(), 1);
         Save(subject, "a");
         Expect("whether the file is there", fs::exists(host.Path("elsewhere/a.dcm")), true);
     }},
    {"settings.full-disk", "a disk that is full makes a save false, and the old file stays", kFilesRule,
     [](Host& host) {
         const Subject subject(host);
         Save(subject, "a");
         const std::string before = Host::Read(Host::Settings("a.dcm"));
         subject.LoadText(std::string("STM_ATB_Id=5\n") + kUsecaseBlocks);
         {
             const FileSizeLimit limit(100);
             Expect("the result of saving", Save(subject, "a"), false);
         }
         Expect("the file afterwards", Host::Read(Host::Settings("a.dcm")), before);
         Expect("the files in the settings directory", FilesBelow(Host::Settings("")),
                std::vector<std::string>{"a.dcm"});
         Expect("saving when there is room again", Save(subject, "a"), true);
     }},
    {"settings.host-is-told", "the device identifier hears of each save: the path without .dcm, and type 4",
     kGrantedRule,
     [](Host& host) {
         Identifier identifier;
         identifier.result = false;
         const Subject subject(host, kCpuName, &identifier);
         Expect("a save, though the identifier gives false", Save(subject, "a"), true);
         Load(subject, "a");
         Expect("its calls", identifier.calls, std::vector<std::string>{"save " + Host::Settings("a") + " 4"});
     }},
    {"settings.host-may-throw", "what the device identifier throws as vornError is a save that failed", kGrantedRule,
     [](Host& host) {
         Identifier identifier;
         identifier.inside = [] { throw Zu::Wep::Vorn::vornError("no", Zu::Wep::Vorn::vornErrorIF::Severity_Error); };
         const Subject subject(host, kCpuName, &identifier);
         Expect("the save", Save(subject, "a"), false);
         Expect("the next save", Save(subject, "a"), true);
     }},
};

}  // namespace

std::span<const Question> SettingsQuestions() { return kSettingsTable; }

}  // namespace stmdcm::validate
