// Any bytes as a trace data file, through every operation that reads or appends.

#include <optional>

#include "fuzz/Support.h"
#include "host/vorn/vornError.h"
#include "tests/support/AppendSection.h"
#include "trace/tdf/OpenCapture.h"
#include "trace/tdf/TDFHandler.h"

using stmdcm_fuzz::Require;
using stmdcm_test::AppendSection;
using Zu::Wep::Trace::OpenCapture;
using Zu::Wep::Trace::TDFHandler;

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = stmdcm_fuzz::Scratch() / "input.tdf";
    stmdcm_test::WriteWhole(path, stmdcm_fuzz::Text(data, size));
    for (const char* name : {"", "DEVID", "STMDECODERINFO"}) {
        const auto payload = Read(path, name);
        Require(!payload || payload->size() < size, "a payload is a part of the file");
        const auto loaded = Load(path, name, size + 1);
        // A section that states to be empty is loaded and not read.
        Require(loaded == payload || (!payload && loaded->empty()), "both readers give the same");
    }
    const auto before = Read(path, "NEW");
    try {
        AppendSection(path, "NEW", 1, "appended");
        // Found, unless an older one hides it or no search comes to the end. A name that the file's end cuts off is
        // filled up with zeros, so its section may be the one that is found: it holds nothing else.
        const auto after = Read(path, "NEW");
        const bool isFilledUp = after && after->find_first_not_of('\0') == std::string::npos;
        Require(before ? after.has_value() : !after || *after == "appended" || isFilledUp,
                "what is appended is found whole, and what is there stays");
    } catch (const Zu::Wep::Vorn::vornError&) {
        Require(size < 4, "a capture is appended to");
    }
    return 0;
}
