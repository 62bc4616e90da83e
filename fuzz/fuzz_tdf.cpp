// Any bytes as a trace data file, through every operation that reads or appends.

#include <optional>

#include "fuzz/Support.h"
#include "host/vorn/vornError.h"
#include "tests/support/AppendSection.h"
#include "tests/support/SectionList.h"
#include "trace/tdf/ChainEnd.h"
#include "trace/tdf/OpenCapture.h"
#include "trace/tdf/TDFHandler.h"

using stmdcm_fuzz::Require;
using stmdcm_test::AppendSection;
using namespace Zu::Wep::Trace;

namespace {

std::optional<std::string> Read(const std::string& path, const char* name) {
    try {
        return OpenCapture(path).Read({name, 1});
    } catch (const Zu::Wep::Vorn::vornError&) {
        return std::nullopt;
    }
}

/// What LoadSectionData gives into a buffer of `size` bytes.
std::optional<std::string> Load(const std::string& path, const char* name, std::size_t size) {
    try {
        std::string buffer(size, '\0');
        unsigned int count = 0;
        TDFHandler().LoadSectionData(path.c_str(), name, 1, buffer.data(), static_cast<unsigned>(size), count);
        return buffer.substr(0, count);
    } catch (const Zu::Wep::Vorn::vornError&) {
        return std::nullopt;
    }
}

/// Whether a section of that name is found once it is appended: where the chain ends in a place that a search reaches,
/// unless the end of the file cuts off a name that is complete for a search, which stops at a zero byte. The gap behind
/// that one is filled with zeros, and so it is the one that is found.
bool IsFoundOnceAppended(const std::string& capture, std::string_view name) {
    stmdcm::MemorySource source(capture);
    const ChainEnd end = FindChainEnd(source, capture.size(), ChainLock::Held);
    const std::size_t at = end.stopOffset + SectionHeader::kSize;
    const bool isTornWithin = end.stop == ScanStop::TornHeader && at < capture.size() &&
                              capture.substr(at, capture.find('\0', at) - at) == name;
    return end.reachable && !isTornWithin;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = stmdcm_fuzz::Scratch() / "input.tdf";
    const std::string input = stmdcm_fuzz::Text(data, size);
    stmdcm_test::WriteWhole(path, input);
    for (const char* name : {"", "DEVID", "STMDECODERINFO"}) {
        const auto payload = Read(path, name);
        Require(!payload || payload->size() < size, "a payload is a part of the file");
        const auto loaded = Load(path, name, size + 1);
        // A section that states to be empty is loaded and not read.
        Require(loaded == payload || (!payload && loaded->empty()), "both readers give the same");
    }
    const auto before = Read(path, "NEW");
    const bool isCapture = AppendSection(path, "NEW", 1, "appended") == SaveTarget::Capture;
    Require(isCapture == input.starts_with(kTDFIdentifier), "captures alone are appended to");
    const auto after = Read(path, "NEW");
    Require(before.has_value() <= after.has_value(), "what was found is found");
    const bool isOurs = isCapture && !before && IsFoundOnceAppended(input, "NEW");
    Require(!isOurs || after == "appended", "what is appended is found");
    return 0;
}
