// Drives a plug-in with made-up inputs and prints what a host sees of it. scripts/compare-plugins runs it for two
// plug-ins in the same directory. Even inputs are settings texts, odd ones captures; the log's level and the number are
// the seed. An input gives a line of lengths and sums, the one that --only names everything in full.

#include <dlfcn.h>
#include <stdlib.h>
#include <sys/time.h>
#include <unistd.h>

#include <bit>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "fuzz/differential/InputMaker.h"
#include "trace/dcm/DeviceConfigManager.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"

namespace fs = std::filesystem;
using namespace stmdcm_test;
using namespace Zu::Wep::Trace;

namespace {

constexpr unsigned kSecondsPerInput = 60;
constexpr char kSettings[] = ".ZU-trace/settings";
constexpr std::size_t kLevelLength = 6;          ///< of a line of the log
constexpr std::size_t kLargestLoaded = 1 << 20;  ///< a section that states its end far away makes captures huge

/// Answers by chance, and notes what it is asked and told.
struct Host : CDeviceConfigEvents, CDeviceIdentifier {
    Host(InputMaker& maker, std::string objectFiles) : random(maker), files(std::move(objectFiles)) {}
    void OnUpdateObjectFile(const std::string& file, bool changed, std::string& newFile) override {
        Note("ask", file + newFile, changed);
        newFile = random.OneIn(3) ? file : random.Word(files);
    }
    bool SaveToFile(const std::string& file, eTraceDataFileType type) override { return Note("save", file, type); }
    bool LoadFromFile(const std::string& file, eTraceDataFileType type) override { return Note("load", file, type); }
    bool Note(const std::string& what, const std::string& file, int number) {
        calls += what + ' ' + file + ' ' + std::to_string(number) + '\n';
        return random.OneIn(2);
    }

    InputMaker& random;
    std::string files, calls;
};

/// What the text that is saved does not tell: it cuts values, and has no tag numbers.
void ShowMore(std::ostream&, UsecaseInfoIFBase&) {}
void ShowMore(std::ostream& out, UsecaseInfoIF& info) {
    for (unsigned i = 0; i < info.GetNumCounters(); ++i) {
        out << " #" << info.GetCounterInfo(i)->text;
    }
    for (unsigned i = 0; i < info.GetNumFormulars(); ++i) {
        const FormulaInfo& formula = *info.GetFormula(i);
        out << " /" << formula.name << '/' << formula.formula << '/' << formula.unit << '/' << formula.tagNumber;
    }
}

template <class Interface>
std::string RecordText(UsecaseRecordIFBase<Interface>& record) {
    std::ostringstream out;
    for (unsigned i = 0; i < record.GetNumUsecases() + 3; ++i) {  // PMI/CMI use cases have an index of their own
        if (Interface* info = record.GetUsecase(i)) {
            const char* probe = info->GetProbeName();
            out << i << ' ' << info->GetModuleName() << ' ' << (probe != nullptr ? probe : "(null)");
            ShowMore(out, *info);
            out << '\n';
        }
    }
    std::string text;
    const int result = record.SaveAllRecords(text);
    out << result << ' ' << record.GetNumUsecases() << '\n' << text;
    return out.str();
}

class Run {
  public:
    Run(const std::string& library, int level, bool full)
        : m_library(::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL)), m_level(level), m_full(full) {
        Find("CreateDeviceConfigManager", m_create);
        Find("DestroyDeviceConfigManager", m_destroy);
        for (const int number : {0, 1}) {
            const std::string name = "image" + std::to_string(number);
            WriteWhole(name, "an image");
            const timeval times[] = {{kImageTime + number, 0}, {kImageTime + number, 0}};
            ::utimes(name.c_str(), times);
        }
        for (const std::string extension : {".txt", ".tdf"}) {
            WriteWhole("input" + extension, "");
            fs::create_symlink("input" + extension, "second" + extension);
            fs::create_hard_link("input" + extension, "hard" + extension);
        }
        fs::create_symlink("input.tdf", "no-capture");
        std::cout << "start";
        const Manager first = Make(nullptr);  // it starts the log
        Add("log", TakeLog());
        std::cout << std::endl;
    }

    void Input(std::uint64_t number) {
        ::alarm(kSecondsPerInput);
        for (const fs::path& file : FilesIn(kSettings)) {
            fs::remove(file);
        }
        InputMaker random(static_cast<std::uint64_t>(m_level) << 48 | number, m_samples);
        const bool isCapture = number % 2 != 0;
        Host host(random, "|image0|image1|none|" + (fs::current_path() / "image0").string());
        const std::string bytes = isCapture ? random.Capture() : random.SettingsText();
        const std::string extension = isCapture ? ".tdf" : ".txt";
        WriteWhole("input" + extension, bytes);
        WriteWhole("saved.tdf", isCapture ? bytes : "TDF2" + SectionBytes("DEVID", ""));
        if (random.OneIn(4)) {
            WriteWhole(std::string(kSettings) + "/Core_0-Cluster-STMCfg.txt.dcm", random.SettingsText());
        }
        const std::string name = random.Word("input|input|second|hard") + extension;
        const std::string path = (random.OneIn(4) ? fs::current_path() / name : fs::path(name)).string();
        std::cout << number;
        LoadAndSave(host, random.OneIn(50) ? "no-capture" : path,
                    isCapture ? TRACE_DATA_FILE_TDF : TRACE_DATA_FILE_LOCAL);
        const Manager second = Make(&host);  // reads the settings file
        AddState("own-", *second);
        if (fs::file_size("saved.tdf") <= kLargestLoaded) {
            AddResult("load-saved", second->LoadConfiguration("saved.tdf", TRACE_DATA_FILE_TDF));
            AddState("saved-", *second);
        }
        Add("calls", host.calls);
        Add("log", TakeLog());
        std::cout << std::endl;
    }

  private:
    using Destroy = decltype(&DestroyDeviceConfigManager);
    using Manager = std::unique_ptr<StmDeviceConfigManagerIF, Destroy>;

    template <class Function>
    void Find(const char* name, Function& function) {
        function = reinterpret_cast<Function>(m_library == nullptr ? nullptr : ::dlsym(m_library, name));
        if (function == nullptr) {
            throw std::runtime_error(::dlerror());
        }
    }

    Manager Make(CDeviceIdentifier* identifier) {
        static CPUInfo cpu{"Core_0/Cluster", 1, 2, 3};
        auto* made = static_cast<CDeviceConfigManager*>(m_create(&cpu, identifier));
        return {static_cast<StmDeviceConfigManagerIF*>(made), m_destroy};
    }

    void LoadAndSave(Host& host, const std::string& name, eTraceDataFileType type) {
        InputMaker& random = host.random;
        const Manager manager = Make(random.OneIn(8) ? nullptr : &host);
        manager->RegisterEventHandler(random.OneIn(8) ? nullptr : &host);
        AddResult("load", manager->LoadConfiguration(name, type));
        AddState("", *manager);
        for (const char* known : {"core0", "core", "x", "none", ""}) {
            std::string path = "unchanged";
            AddResult("file", manager->GetObjectFile(known, path));
            Add("path", path);
        }
        ConfigPropertyValue value;
        value.value.integer = static_cast<std::int32_t>(random.Below(3) << 8 * random.Below(4));
        manager->SetSTMProperty(random.Word(m_samples.properties), value);
        AddResult("save0", manager->SaveConfiguration("saved.tdf", TRACE_DATA_FILE_TDF));
        AddResult("save4", manager->SaveConfiguration("local.dcm", TRACE_DATA_FILE_LOCAL));
        AddResult("save1", manager->SaveConfiguration("live", TRACE_DATA_FILE_LIVE));
        manager->RetrieveAllConfiguration();
        manager->SaveAllConfiguration();
        Add("capture", ReadWhole("saved.tdf"));
        for (const fs::path& file : FilesIn(kSettings)) {
            Add(file.filename(), ReadWhole(file));
        }
    }

    void AddState(const std::string& when, StmDeviceConfigManagerIF& manager) {
        std::istringstream names(m_samples.properties + "|CycleModeDelta|None");
        std::ostringstream out;
        for (std::string name; std::getline(names, name, '|');) {
            ConfigPropertyValue value(-1, "text", {.real = -1.1});  // no byte of it is 0
            const bool known = manager.GetProperty(name, value);
            out << name << ' ' << known << ' ' << value.type << ' ' << value.text << std::hex << " 0x"
                << std::bit_cast<std::uint64_t>(value.value) << std::dec << '\n';
        }
        Add(when + "properties", out.str());
        Add(when + "sc", RecordText<UsecaseInfoIF>(*manager.GetUsecaseRecord()));
        Add(when + "cpt", RecordText<CTUsecaseInfoIF>(*manager.GetCTUsecaseRecord()));
        Add(when + "pmi", RecordText<UsecaseInfoIFBase>(*manager.GetPMIUsecaseRecord()));
    }

    void AddResult(const std::string& part, bool result) const { Add(part, std::to_string(result)); }

    void Add(const std::string& part, const std::string& text) const {
        if (m_full) {
            std::cout << "\n== " << part << '\n' << text;
        } else {
            std::cout << ' ' << part << '=' << text.size() << ':' << std::hash<std::string>()(text);
        }
    }

    /// The lines since the last call, without the time stamps that end with the first " | ".
    static std::string TakeLog() {
        std::string text;
        for (const fs::path& file : FilesIn(".ZU-trace")) {
            if (fs::is_directory(file)) {
                continue;
            }
            std::istringstream in(ReadWhole(file));
            for (std::string line; std::getline(in, line);) {
                const std::size_t end = line.find_first_not_of("0123456789:", kLevelLength);
                const bool isStamped = end != std::string::npos && line.compare(end, 3, " | ") == 0;
                text += (isStamped ? line.erase(kLevelLength, end - kLevelLength) : line) + '\n';
            }
            WriteWhole(file, "");  // the plug-in appends to it
        }
        return text;
    }

    void* m_library;
    decltype(&CreateDeviceConfigManager) m_create;
    Destroy m_destroy;
    int m_level;
    bool m_full;
    Samples m_samples;
};

/// Nothing of the user's home or environment is seen or changed.
void Isolate(const std::string& directory, const char* level) {
    fs::create_directories(directory);
    fs::current_path(directory);
    if (!fs::is_empty(".")) {
        throw std::runtime_error(directory + " is not empty");
    }
    ::clearenv();
    ::setenv("HOME", fs::current_path().c_str(), 1);
    ::setenv("ZU_TRACE_LOGGING", level, 1);
    ::setenv("TZ", "UTC0", 1);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const bool only = argc == 6 && argv[4] == std::string("--only");
        if (argc != 5 && !only) {
            throw std::runtime_error("usage: plugin_differential LIBRARY NEW-DIRECTORY LEVEL (COUNT | --only NUMBER)");
        }
        const fs::path library = fs::absolute(argv[1]);
        Isolate(argv[2], argv[3]);
        const std::uint64_t number = std::stoull(argv[argc - 1]);
        Run run(library, std::stoi(argv[3]), only);
        for (std::uint64_t input = only ? number : 0; input < number + (only ? 1 : 0); ++input) {
            run.Input(input);
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "plugin_differential: " << error.what() << '\n';
        return 2;
    }
}
