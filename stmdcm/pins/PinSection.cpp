#include "stmdcm/pins/PinSection.h"

#include <algorithm>

#include "trace/format/LittleEndian.h"

namespace stmdcm {

using Zu::Wep::Trace::LoadLittleEndian;
using Zu::Wep::Trace::StoreLittleEndian;

namespace {

// Behind the name and its zero byte.
constexpr std::size_t kNthOffset = 0;
constexpr std::size_t kSizeOffset = kNthOffset + sizeof(std::uint32_t);
constexpr std::size_t kHashOffset = kSizeOffset + sizeof(std::uint64_t);
constexpr std::size_t kBuildIdLengthOffset = kHashOffset + kSha256Size;
constexpr std::size_t kBuildIdOffset = kBuildIdLengthOffset + 1;

/// Takes a pin off the front of `rest`; false where it runs past it.
bool TakePin(std::string_view& rest, std::vector<Pin>& pins) {
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos || rest.size() - (end + 1) < kBuildIdOffset) {
        return false;
    }
    const std::string_view fields = rest.substr(end + 1);
    const auto length = static_cast<unsigned char>(fields[kBuildIdLengthOffset]);
    if (fields.size() - kBuildIdOffset < length) {
        return false;
    }
    pins.push_back(
        {std::string(rest.substr(0, end)),
         LoadLittleEndian<std::uint32_t>(fields.data() + kNthOffset),
         {LoadLittleEndian<std::uint64_t>(fields.data() + kSizeOffset),
          std::string(fields.substr(kHashOffset, kSha256Size)), std::string(fields.substr(kBuildIdOffset, length))}});
    rest = fields.substr(kBuildIdOffset + length);
    return true;
}

void AppendPin(std::string& payload, const Pin& pin) {
    payload.append(pin.name, 0, pin.name.find('\0'));
    payload += '\0';
    char numbers[kHashOffset];
    StoreLittleEndian(pin.nth, numbers + kNthOffset);
    StoreLittleEndian(pin.image.size, numbers + kSizeOffset);
    payload.append(numbers, sizeof numbers);
    payload += pin.image.sha256;
    payload += static_cast<char>(static_cast<unsigned char>(pin.image.buildId.size()));
    payload += pin.image.buildId;
}

}  // namespace

std::string EncodePins(const std::vector<Pin>& pins) {
    std::string payload;
    for (const Pin& pin : pins) {
        AppendPin(payload, pin);
    }
    return payload;
}

bool ReadPins(std::string_view payload, std::vector<Pin>& pins) {
    while (!payload.empty()) {
        if (!TakePin(payload, pins)) {
            return false;
        }
    }
    return true;
}

PinList PinList::Of(const Container& capture) {
    PinList list;
    if (const Section* section = capture.Find(kPinSectionName, kPinSectionVersion)) {
        list.isComplete = ReadPins(capture.ReadPayload(*section), list.pins) && !capture.IsTorn(*section);
    }
    for (const Section& section : capture.Sections()) {
        if (section.use == SectionUse::Read && section.version != kPinSectionVersion &&
            capture.HasName(section, kPinSectionName)) {
            list.unknown.push_back(section);
        }
    }
    return list;
}

const ImageIdentity* PinList::Find(std::string_view name, std::uint32_t nth) const {
    const auto found =
        std::find_if(pins.begin(), pins.end(), [&](const Pin& pin) { return pin.name == name && pin.nth == nth; });
    return found == pins.end() ? nullptr : &found->image;
}

}  // namespace stmdcm
