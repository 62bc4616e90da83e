#pragma once

#include <string>
#include <string_view>

namespace stmdcm {

// Text from outside as a part of an HTML page, in which it can't become markup. It has to be UTF-8.

/// As text between elements. Characters that change the direction of text are shown as \uNNNN: they would let a name
/// look like another one.
std::string AsHtml(std::string_view text);

/// A JSON document as the content of a script element: the same document, without a sign that could end the element.
std::string AsScriptData(std::string_view json);

/// How a page's policy names the one script or style that it allows: 'sha256-...' (Content Security Policy, level 2).
std::string PolicyHash(std::string_view content);

}  // namespace stmdcm
