#pragma once

namespace stmdcm {

/// What a number means to a reader.
enum class Unit { None, Hertz, Address, Mask, Job, UnixTime };

/// Names one field of an item: the key in JSON and, with blanks for underscores, the label in text.
struct Field {
    const char* name;
    Unit unit = Unit::None;
    /// Follows from the other fields or from the disk: shown, but no difference between two configurations.
    bool derived = false;
};

}  // namespace stmdcm
