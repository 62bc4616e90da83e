#include "stmdcm/change/NewCapture.h"

#include "stmdcm/reading/Reading.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/SectionLayout.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

void AppendSection(std::string& bytes, std::string_view name, std::uint32_t version, std::string_view payload) {
    const std::size_t length = SectionHeader::Size + name.size() + payload.size();
    bytes += EncodeSectionStart(static_cast<std::uint32_t>(length), name, version);
    bytes += payload;
}

}  // namespace

std::string EmptyCapture() {
    std::string bytes(TDFIdentifier);
    AppendSection(bytes, kDeviceSectionName, kDeviceSectionVersion, kNoDeviceText);
    return bytes;
}

std::string NewCapture(std::string_view settings, std::string_view images) {
    std::string bytes = EmptyCapture();
    AppendSection(bytes, kCommonSectionName, kCommonSectionVersion, images);
    AppendSection(bytes, kStmSectionName, kStmSectionVersion, settings);
    return bytes;
}

}  // namespace stmdcm
