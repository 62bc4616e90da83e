#pragma once

#include <string>
#include <vector>

namespace stmdcm {

/// What an accident with a disk, a copy or an editor has made of a file or a text.
struct Damaged {
    std::string what;
    std::string bytes;
};

/// The file as it is; with a byte zeroed, a page zeroed, cut, doubled; a capture also with each section's length
/// changed, sections swapped, and without its identifier.
std::vector<Damaged> Damages(const std::string& bytes);

/// A settings text with one of its lines doubled, with a zero byte, without its brace, or, unless the readers of the
/// text pass over what they don't know, cut in its key: nobody could have meant that.
std::vector<Damaged> Accidents(const std::string& text, bool passesOver);

}  // namespace stmdcm
