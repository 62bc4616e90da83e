// Reads any bytes as a settings text; what is written from it must read back to the same text.

#include "fuzz/Support.h"
#include "trace/format/SettingsText.h"
#include "trace/format/StmPropertyTable.h"

using namespace Zu::Wep::Trace;

namespace {

std::string Read(const std::string& text, const LineLimits& limits, StmProperties& properties) {
    const SettingsText read(
        text, limits,
        [&](std::string_view name, std::string_view value) { return SetFromText(properties, name, value); }, nullptr);
    std::string written;
    AppendPropertyLines(properties, written);
    return written;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = stmdcm_fuzz::Text(data, size);
    for (const LineLimits& limits : {LineLimits{}, kFileLineLimits}) {
        StmProperties first, second;
        const std::string written = Read(text, limits, first);
        stmdcm_fuzz::Require(Read(written, limits, second) == written, "what is written reads back");
    }
    return 0;
}
