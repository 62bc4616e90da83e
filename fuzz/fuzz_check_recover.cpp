// Any bytes as a capture on disk: checked, loaded and recovered, and the result of that once more. The findings, the
// manager and the recovery agree, and nothing but the two files is written.

#include <unistd.h>

#include <filesystem>
#include <optional>

#include "fuzz/Support.h"
#include "stmdcm/Failure.h"
#include "stmdcm/reading/Reading.h"
#include "stmdcm/recover/RecoveryCheck.h"
#include "stmdcm/recover/RecoveryPlanner.h"
#include "stmdcm/recover/RecoveryWriter.h"
#include "trace/dcm/StmDeviceConfigManager.h"

using namespace Zu::Wep::Trace;
using namespace stmdcm;
using stmdcm_fuzz::Require;

namespace {

struct StringSink final : ByteSink {
    void Write(std::string_view added) override { bytes += added; }
    std::string bytes;
};

/// In a home that is empty.
bool Loads(const std::string& path) {
    CPUInfo cpu{"core", 1, 0, 2};
    return StmDeviceConfigManager(&cpu, nullptr).LoadConfiguration(path, TRACE_DATA_FILE_TDF);
}

Reading Check(const std::string& path) {
    Reading reading = CheckFile(path, ConfigurationKind::Capture);
    Require(reading.loads == Loads(path), "check says whether it loads");
    return reading;
}

/// Nothing where there is no section, or too many places to look at.
std::optional<RecoveryPlan> Recover(const std::string& from, const std::string& to) {
    const auto isNothing = [](std::uint64_t) {};
    try {
        const CaptureFile file(from, CaptureFile::Identifier::Optional);
        RecoveryPlan plan = RecoveryPlanner(file, isNothing).Make();
        StringSink sink;
        WriteRecovery(file, plan, Payloads::All, sink, isNothing);
        Require(sink.bytes.size() == plan.ResultSize(), "the result is as long as planned");
        stmdcm_test::WriteWhole(to, sink.bytes);
        CheckRecovery(to, plan);
        return plan;
    } catch (const Failure& failure) {
        Require(failure.File() == from, "a failure names the file");
        return std::nullopt;
    }
}

bool HasContainerFinding(const Findings& findings) {
    const auto& listed = findings.Sorted();
    return std::any_of(listed.begin(), listed.end(), [](const Finding& finding) {
        return !IsAboutText(*finding.kind) && finding.kind->severity != Severity::Note;
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string input = stmdcm_fuzz::Scratch() / "input.tdf",
                             output = stmdcm_fuzz::Scratch() / "output.tdf";
    ::setenv("HOME", stmdcm_fuzz::Scratch().Path().c_str(), 1);
    const std::string bytes = stmdcm_fuzz::Text(data, size);
    stmdcm_test::WriteWhole(input, bytes);
    const Reading before = Check(input);
    if (const auto plan = Recover(input, output)) {
        const Reading after = Check(output);
        const std::string result = stmdcm_test::ReadWhole(output);
        Require(!plan->IsGood() || (after.loads && after.findings.Count(Severity::Error) == 0),
                "good is without error");
        Require(!plan->IsGood() || result == bytes, "good is as it was");
        Require(HasContainerFinding(before.findings) || result == bytes, "nothing is changed where nothing is wrong");
    }
    Require(stmdcm_test::ReadWhole(input) == bytes, "the input is not changed");
    return 0;
}
