#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/FileSizeLimit.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"

namespace stmdcm::validate {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

using Strings = std::vector<std::string>;

constexpr char kLevelVariable[] = "ZU_TRACE_LOGGING";
constexpr char kProcessVariable[] = "ZU_TRACE_DEBUGCLIENT_PID";

std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "(unset)" : value;
}

Strings Variables() {
    Strings variables;
    for (char** each = environ; *each != nullptr; ++each) {
        variables.emplace_back(*each);
    }
    std::sort(variables.begin(), variables.end());
    return variables;
}

/// Of today, with the month counted from 0.
std::string LogName(const std::string& process) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return fmt::format("zu_trace_log_{}{}{}_{}.txt", local.tm_mon, local.tm_mday, local.tm_year + 1900, process);
}

/// The names of the log files that there are.
Strings Logs(const Host& host) {
    Strings names = FilesBelow(host.Home(""));
    std::erase_if(names, [](const std::string& name) { return name.find("zu_trace_log_") == std::string::npos; });
    return names;
}

/// What the log of this process holds; "(none)".
std::string LogText(const Host& host) {
    const Strings names = Logs(host);
    return names.empty() ? "(none)" : Host::Read(host.Home(names[0]));
}

/// Has the manager write two lines at least.
void Work(Host& host) {
    const Subject subject(host);
    ConfigPropertyValue value;
    subject->GetProperty("no such property", value);
    subject.LoadText("STM_ATB_Id = 9\n");
}

constexpr Question kEnvironmentTable[] = {
    {"environment.directories", "the first manager makes the directories for settings and data below HOME", kLifeRule,
     [](Host& host) {
         const Subject subject(host);
         for (const char* name : {".ZU-trace", ".ZU-trace/settings", ".ZU-trace/data"}) {
             Expect(fmt::format("whether there is $HOME/{}", name), fs::is_directory(host.Home(name)), true);
         }
     }},
    {"environment.variables", "it exports their places and the process", kLogPlaceRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("ZU_TRACE_LOGGING_DIR", Variable("ZU_TRACE_LOGGING_DIR"), host.Home(".ZU-trace"));
         Expect("ZU_TRACE_SETTINGS_DIR", Variable("ZU_TRACE_SETTINGS_DIR"), host.Home(".ZU-trace/settings"));
         Expect("ZU_TRACE_DATA_DIR", Variable("ZU_TRACE_DATA_DIR"), host.Home(".ZU-trace/data"));
         Expect("ZU_TRACE_DEBUGCLIENT_PID", Variable(kProcessVariable), std::to_string(::getpid()));
     }},
    {"environment.no-other-variable", "every other variable stays as the host has it", kGrantedRule,
     [](Host& host) {
         const Strings before = Variables();
         Work(host);
         Strings after = Variables();
         std::erase_if(after, [](const std::string& variable) { return variable.starts_with("ZU_TRACE_"); });
         Expect("the variables afterwards", after, before);
     }},
    {"environment.no-home", "without HOME a manager is made all the same, and the next one tries again", kLifeRule,
     [](Host& host) {
         ::unsetenv("HOME");
         const Subject subject(host);
         Expect("STM_STP_Version", subject.Number("STM_STP_Version"), 1);
         Expect("loading a capture",
                subject.LoadCapture(CaptureBytes(DeviceSection() + ObjectFileSection({}) + StmSection("a\n"))), true);
         ::setenv("HOME", host.Home("").c_str(), 1);
         const Subject next(host, "next");
         Expect("whether the next makes the directories", fs::is_directory(host.Home(".ZU-trace/settings")), true);
     }},
    {"environment.home-is-no-directory", "a HOME in which nothing can be made costs no manager", kLifeRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         ::setenv("HOME", host.Write("a file", "text").c_str(), 1);
         Expect("STM_STP_Version", Subject(host).Number("STM_STP_Version"), 1);
         Expect("what stood in its place", Host::Read(host.Path("a file")), "text");
     }},
    {"environment.directory-is-a-file", "neither does a file in the place of its directory", kLifeRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         host.Write("home/.ZU-trace", "text");
         Expect("STM_STP_Version", Subject(host).Number("STM_STP_Version"), 1);
         Expect("what stood in its place", Host::Read(host.Home(".ZU-trace")), "text");
     }},
    {"environment.debug-client", "a process that is named already, and runs, stays named", kLogPlaceRule,
     [](Host& host) {
         const std::string parent = std::to_string(::getppid());
         ::setenv(kProcessVariable, parent.c_str(), 1);
         ::setenv(kLevelVariable, "1", 1);
         Work(host);
         Expect("ZU_TRACE_DEBUGCLIENT_PID", Variable(kProcessVariable), parent);
         Expect("the log's name", Logs(host), Strings{".ZU-trace/" + LogName(parent)});
     }},
    {"environment.no-debug-client", "one that does not run is replaced by the host's own", kLogPlaceRule,
     [](Host& host) {
         for (const char* value : {"", "no number", "-1", "99999999"}) {
             ::setenv(kProcessVariable, value, 1);
             Work(host);
             host.Unload();
             Expect(fmt::format("ZU_TRACE_DEBUGCLIENT_PID, which was \"{}\"", value), Variable(kProcessVariable),
                    std::to_string(::getpid()));
         }
     }},
    {"log.off", "without ZU_TRACE_LOGGING there is no log file", kLogLevelRule,
     [](Host& host) {
         Work(host);
         Expect("the log files", Logs(host), Strings());
     }},
    {"log.place", "the log is a file in .ZU-trace, named by the day and the process", kLogPlaceRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         const std::string before = LogName(std::to_string(::getpid()));
         Work(host);
         const std::string after = LogName(std::to_string(::getpid()));  // at midnight it may be either
         const Strings logs = Logs(host);
         Expect("the log files", logs,
                Strings{".ZU-trace/" + (logs == Strings{".ZU-trace/" + before} ? before : after)});
     }},
    {"log.levels", "ZU_TRACE_LOGGING says whether there is a file, and whether its lines are printed, too",
     kLogLevelRule,
     [](Host& host) {
         struct Level {
             const char* value;
             bool hasFile, isPrinted;
         };
         for (const auto& [value, hasFile, isPrinted] : {Level{"1", true, false},
                                                         {"2", true, true},
                                                         {"3", true, false},
                                                         {"4", true, true},
                                                         {"5", true, true},
                                                         {"6", true, true},
                                                         {"0", false, false},
                                                         {"7", false, false},
                                                         {"-1", false, false},
                                                         {"", false, false},
                                                         {"on", false, false},
                                                         {"1x", true, false}}) {
             ::setenv(kLevelVariable, value, 1);
             const std::size_t printed = host.Printed().size();
             Work(host);
             host.Unload();
             Expect(fmt::format("whether \"{}\" makes a file", value), !Logs(host).empty(), hasFile);
             Expect(fmt::format("whether \"{}\" prints", value), host.Printed().size() > printed, isPrinted);
             fs::remove_all(host.Home(".ZU-trace"));
         }
     }},
    {"log.first-counts", "the first manager's level holds for the process", kLogPlaceRule,
     [](Host& host) {
         const Subject first(host);
         ::setenv(kLevelVariable, "1", 1);
         Work(host);
         Expect("the log files", Logs(host), Strings());
     }},
    {"log.lines", "each line has its level, the time, and its text", kLogLineRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         Work(host);
         std::istringstream lines(LogText(host));
         const std::regex form("[M ][W ][F ][A ][E ] ( |\\d\\d:\\d\\d:\\d\\d:\\d{3} \\| ).*");
         for (std::string line; std::getline(lines, line);) {
             Expect("whether a line has the right form: " + line, std::regex_match(line, form), true);
         }
     }},
    {"log.tells-why", "the log tells which property there is not, and which file can't be opened", kLogLineRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         Work(host);
         const std::string log = LogText(host);
         ExpectPart("the log", log, "STM Local DCM: GetProperty failed Proerty Name = no such property.\n");
         ExpectPart("the log", log,
                    "LoadSTMConfiguration fail to open file: " +
                        host.Home(".ZU-trace/settings/Core_0-Cluster-STMCfg.txt.dcm") + "\n");
         ExpectPart("the log", log,
                    "Logger : trace user settings directory is " + host.Home(".ZU-trace/settings") + "\n");
     }},
    {"log.tells-of-damage", "a line of level 16 tells of a capture that can't be loaded, with its name and cause",
     kResultRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         Subject(host).LoadCapture(CaptureBytes(ObjectFileSection({})));
         ExpectPart("the log", LogText(host), "    E ");
         ExpectPart("the log", LogText(host),
                    host.Path("loaded.tdf") + ": Section size cannot be located in the file.");
     }},
    {"log.appends", "a log that is there is appended to", kLogPlaceRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         fs::create_directory(host.Home(".ZU-trace"));
         host.Write("home/.ZU-trace/" + LogName(std::to_string(::getpid())), "first line\n");
         Work(host);
         Expect("its first line", LogText(host).substr(0, 11), "first line\n");
     }},
    {"log.full-disk", "a log that can't grow costs its lines, and ends nobody", kLogPlaceRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         const Subject subject(host);
         {
             const FileSizeLimit limit(LogText(host).size() + 10);
             for (int i = 0; i < 10; ++i) {
                 ConfigPropertyValue value;
                 subject->GetProperty("no such property", value);
             }
         }
         Expect("STM_STP_Version afterwards", subject.Number("STM_STP_Version"), 1);
     }},
    {"log.nobody-reads", "lines that are printed for nobody end nobody", kLogPlaceRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "2", 1);
         int ends[2];
         if (::pipe(ends) != 0 || ::dup2(ends[1], STDOUT_FILENO) == -1) {
             Skip("a pipe can't be made");
         }
         ::close(ends[1]);
         ::close(ends[0]);
         Work(host);
         ExpectPart("the log", LogText(host), "GetProperty failed");
     }},
    {"log.long-line", "a line has at most 4095 bytes, and no text of a host's breaks it", kLogLineRule,
     [](Host& host) {
         ::setenv(kLevelVariable, "1", 1);
         const Subject subject(host);
         ConfigPropertyValue value;
         subject->GetProperty(std::string(10'000, 'n') + "%s%n", value);
         subject->GetProperty("%s%n%d", value);
         std::istringstream lines(LogText(host));
         for (std::string line; std::getline(lines, line);) {
             Expect("whether a line has at most 4095 bytes", line.size() <= 4095, true);
         }
         ExpectPart("the log", LogText(host), "Proerty Name = %s%n%d.\n");
     }},
};

}  // namespace

std::span<const Question> EnvironmentQuestions() { return kEnvironmentTable; }

}  // namespace stmdcm::validate
