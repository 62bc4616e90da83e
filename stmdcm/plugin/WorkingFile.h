#pragma once

#include <string>
#include <string_view>

namespace stmdcm {

// Files of the program's own. Every failure is a Failure that names the file.

std::string ReadWorkingFile(const std::string& path);
/// Makes it, or gives it another content.
void WriteWorkingFile(const std::string& path, std::string_view bytes);

}  // namespace stmdcm
