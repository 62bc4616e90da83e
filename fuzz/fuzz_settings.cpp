// Reads any bytes as a settings text; what is written from it must read back to the same text.

#include <cstdint>
#include <cstdlib>
#include <string>

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
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (const LineLimits& limits : {LineLimits{}, kFileLineLimits}) {
        StmProperties first, second;
        const std::string written = Read(text, limits, first);
        if (Read(written, limits, second) != written) {
            std::abort();
        }
    }
    return 0;
}
