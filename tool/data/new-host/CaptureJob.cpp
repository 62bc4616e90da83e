#include "CaptureJob.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "Log.h"
#include "Properties.h"
#include "trace/dcm/PropertyNames.h"

using namespace Zu::Wep::Trace;

namespace {

constexpr char kCpu[] = "Core_0/Cluster";
constexpr std::int32_t kPins = 8;

/// Takes program images that have changed as they are, and goes on without those that are missing. A host with a user
/// asks that one here.
class Answers : public CDeviceConfigEvents {
  public:
    void OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) override {
        std::cout << (timeStampChanged ? "changed since it was recorded: " : "missing: ") << file << '\n';
        newFile = timeStampChanged ? file : "";
    }
};

/// A capture as a host begins it, before the trace: the container's identifier and a section DEVID of one line.
void WriteNewCapture(const std::string& path) {
    constexpr char bytes[] =
        "TDF2"
        "\x21\0\0\0"  // the section's length, this field included
        "\1\0\0\0"    // its version
        "\5\0\0\0"    // the length of its name
        "DEVID"
        "device=my_board\n";
    std::FILE* out = std::fopen(path.c_str(), "wbx");  // x: never in the place of a capture that is there
    if (out == nullptr) {
        throw std::runtime_error(path + " can't be made: " + std::strerror(errno));
    }
    const bool isWritten = std::fwrite(bytes, sizeof bytes - 1, 1, out) == 1;
    if (std::fclose(out) != 0 || !isWritten) {
        throw std::runtime_error(path + " can't be written: " + std::strerror(errno));
    }
}

void Load(Plugin::Manager& manager, const std::string& capture) {
    if (!std::filesystem::exists(capture)) {
        throw std::runtime_error(capture + ": there is no such file");  // of which the log says nothing
    }
    if (!manager.LoadConfiguration(capture, TRACE_DATA_FILE_TDF)) {
        throw std::runtime_error(capture + " can't be loaded" + SeeLog());
    }
}

/// The names of the use cases of hardware monitors; the other two records go the same way.
void PrintUsecases(UsecaseRecordIF& record) {
    for (unsigned i = 0; i < record.GetNumUsecases(); ++i) {
        std::cout << "  use case " << record.GetUsecase(i)->GetModuleName() << '\n';
    }
}

}  // namespace

void ChangeCapture(const Plugin& plugin, const std::string& capture, const std::string& copy) {
    CPUInfo cpu{kCpu, 0, 0, 0};
    Answers answers;  // before the manager, so that it ends after it
    const auto manager = plugin.MakeManager(cpu);
    manager->RegisterEventHandler(&answers);
    Load(*manager, capture);
    std::cout << capture << '\n';
    PrintProperties(*manager);
    PrintUsecases(*manager->GetUsecaseRecord());

    SetProperty(*manager, PropertyNames::STM_DTC_target_pins, kPins);
    // The first configuration in a capture is the one that is read, so a changed one goes into a capture that has none.
    WriteNewCapture(copy);
    if (!manager->SaveConfiguration(copy, TRACE_DATA_FILE_TDF)) {
        throw std::runtime_error(copy + " can't be saved into" + SeeLog());
    }
    const auto reader = plugin.MakeManager(cpu);
    reader->RegisterEventHandler(&answers);
    Load(*reader, copy);
    if (Property(*reader, PropertyNames::STM_DTC_target_pins) != kPins) {
        throw std::runtime_error(copy + " does not hold what was saved");
    }
    std::cout << copy << ": saved, with " << kPins << " pins\n";
}
