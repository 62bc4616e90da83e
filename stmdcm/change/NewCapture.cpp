#include "stmdcm/change/NewCapture.h"

#include "trace/format/SectionLayout.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

std::string NewCapture(const std::vector<NewSection>& sections) {
    std::string bytes(kTDFIdentifier);
    for (const auto& [name, version, payload] : sections) {
        const std::size_t length = SectionHeader::kSize + name.size() + payload.size();
        bytes += EncodeSectionStart(static_cast<std::uint32_t>(length), name, version) + payload;
    }
    return bytes;
}

}  // namespace stmdcm
