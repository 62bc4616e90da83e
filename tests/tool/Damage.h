#pragma once

#include <string>
#include <vector>

namespace stmdcm {

/// What an accident with a disk, a copy or an editor of bytes has made of a file.
struct Damaged {
    std::string what;
    std::string bytes;
};

/// The file as it is; with a byte zeroed, a page zeroed, cut, doubled; a capture also with each section's length
/// changed, sections swapped, and without its identifier.
std::vector<Damaged> Damages(const std::string& bytes);

}  // namespace stmdcm
