#include <dlfcn.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <filesystem>

#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/ContainerFunctions.h"
#include "stmdcm/validate/ElfSymbols.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"
#include "trace/Interface.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

namespace {

/// What a host does all the time.
void WorkOnce(Host& host) {
    const Subject subject(host);
    subject.LoadText("STM_ATB_Id = 5\n{\n}\n");
    subject.LoadCapture(subject.SavedInto(BareCapture()));
}

/// The part of a process that is its host's alone.
std::string HostState() {
    sigset_t blocked;
    ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    std::string state = fmt::format("umask {:o}, locale {}, working directory {}", mask,
                                    std::setlocale(LC_ALL, nullptr), std::filesystem::current_path().string());
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        struct stat file {};
        const bool isOpen = ::fstat(descriptor, &file) == 0;
        state += fmt::format(", {} {}", descriptor, isOpen ? std::to_string(file.st_ino) : "closed");
    }
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action {};
        ::sigaction(number, nullptr, &action);
        state += fmt::format(", {}{}{}", action.sa_handler == SIG_DFL ? "" : "handled ",
                             sigismember(&blocked, number) == 1 ? "blocked " : "", number);
    }
    return state;
}

void LoadWorkAndUnload(Host& host, int times) {
    for (int i = 0; i < times; ++i) {
        WorkOnce(host);
        host.Unload();
    }
}

constexpr Question kLibraryTable[] = {
    {"library.loads", "the dynamic loader loads it with every symbol that it needs", kLifeRule,
     [](Host& host) { host.Load(); }},
    {"library.entry-points", "it has the two functions that make and end a manager", kLifeRule,
     [](Host& host) {
         for (const char* name : {"CreateDeviceConfigManager", "DestroyDeviceConfigManager"}) {
             host.Exported<void (*)()>(name);
         }
     }},
    {"library.version", "it bears the version of the interface that the headers describe", kBuildRule,
     [](Host& host) {
         for (const char* name : {"CreateDeviceConfigManager", "DestroyDeviceConfigManager"}) {
             void* const symbol = host.Symbol(name);  // versioned ones of libraries that it needs are found, too
             Expect(fmt::format("whether {} has the version {}", name, STMDCM_INTERFACE_VERSION),
                    symbol != nullptr && host.Symbol(name, STMDCM_INTERFACE_VERSION) == symbol, true);
         }
     }},
    {"library.container", "it has the container's functions, which hosts link to", kLayoutRule,
     [](Host& host) {
         for (const ContainerFunction& function : kContainerFunctions) {
             Expect(fmt::format("whether it has {}", function.name), host.Symbol(function.symbol) != nullptr, true);
         }
     }},
    {"library.nothing-else", "it exports nothing but its interface, so that no host's names clash", kGrantedRule,
     [](Host& host) {
         std::vector<std::string> others = ExportedSymbols(host.LibraryPath());
         std::erase_if(others, [](const std::string& name) {
             return name == "CreateDeviceConfigManager" || name == "DestroyDeviceConfigManager" ||
                    name.starts_with("_ZN2Zu3Wep5Trace10TDFHandler") ||
                    name.starts_with("_ZNK2Zu3Wep5Trace10TDFHandler") || name.starts_with("_ZN2Zu3Wep5Trace8FileSize");
         });
         Expect("what it exports besides its interface", others, std::vector<std::string>());
     }},
    {"library.unloads", "it goes when its last manager is gone and the host closes it", kLifeRule,
     [](Host& host) {
         LoadWorkAndUnload(host, 1);
         Expect("whether it is still loaded", ::dlopen(host.LibraryPath().c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr,
                false);
     }},
    {"library.loads-again", "it works as before when it is loaded a second time", kLifeRule,
     [](Host& host) {
         LoadWorkAndUnload(host, 2);
         Expect("STM_ATB_Id in the third life", Subject(host).Number("STM_ATB_Id"), 1);
     }},
    {"library.unloading-leaves-nothing-open", "loading and unloading it with the log on leaves no descriptor open",
     kLifeRule,
     [](Host& host) {
         ::setenv("ZU_TRACE_LOGGING", "1", 1);
         LoadWorkAndUnload(host, 2);
         const std::size_t before = Held::Descriptors();
         LoadWorkAndUnload(host, 5);
         Expect("descriptors after five more lives", Held::Descriptors(), before);
     }},
    {"library.unloading-leaves-no-memory", "loading and unloading it again and again leaves no memory behind",
     kLifeRule,
     [](Host& host) {
         LoadWorkAndUnload(host, 10);
         const std::size_t before = Held::Heap();
         LoadWorkAndUnload(host, 10);
         ExpectAtMost("bytes more on the heap after ten lives", static_cast<long long>(Held::Heap() - before), 4096);
     }},
    {"library.starts-no-thread", "it starts no thread", kLifeRule,
     [](Host& host) {
         const Subject subject(host);
         WorkOnce(host);
         Expect("threads of the process", Held::Threads(), std::size_t{1});
     }},
    {"library.starts-no-process", "it starts no process", kLifeRule,
     [](Host& host) {
         WorkOnce(host);
         Expect("the process's children", Host::Read(fmt::format("/proc/self/task/{}/children", ::getpid())), "");
     }},
    {"library.prints-nothing", "it prints nothing while its log is off", kLogLevelRule,
     [](Host& host) {
         WorkOnce(host);
         Expect("what it printed", host.Printed(), "");
     }},
    {"library.leaves-the-process-alone",
     "signals, umask, locale, working directory and standard streams stay as the host has them", kGrantedRule,
     [](Host& host) {
         const std::string before = HostState();
         WorkOnce(host);
         Expect("the state of the process", HostState(), before);
     }},
};

}  // namespace

std::span<const Question> LibraryQuestions() { return kLibraryTable; }

}  // namespace stmdcm::validate
