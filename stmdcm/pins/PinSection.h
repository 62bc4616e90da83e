#pragma once

// The payload of the section "IMAGE_PINS". Its format is docs/pins.md.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "stmdcm/capture/Container.h"
#include "stmdcm/pins/ImageIdentity.h"

namespace stmdcm {

inline constexpr char kPinSectionName[] = "IMAGE_PINS";
inline constexpr int kPinSectionVersion = 1;

/// What the program image was that a capture was made with.
struct Pin {
    std::string name;       ///< of the CPU or application, as in DCM_COMMON
    std::uint32_t nth = 0;  ///< of those of that name, from 0
    ImageIdentity image;

    bool operator==(const Pin&) const = default;
};

std::string EncodePins(const std::vector<Pin>& pins);

/// Adds the whole pins at the start of `payload`. False when they don't fill it.
bool ReadPins(std::string_view payload, std::vector<Pin>& pins);

/// The pins of a capture.
struct PinList {
    std::vector<Pin> pins;
    bool isComplete = true;        ///< false: the section ends within one, and those in front of it count
    std::vector<Section> unknown;  ///< sections of pins of another version, which are passed over

    /// Of the section that a search finds; none where there is no such section.
    static PinList Of(const Container& capture);

    /// Whether the capture has just these, and all that is there is whole.
    bool Is(const std::vector<Pin>& others) const { return isComplete && pins == others; }
    /// nullptr for none.
    const ImageIdentity* Find(std::string_view name, std::uint32_t nth) const;
};

}  // namespace stmdcm
