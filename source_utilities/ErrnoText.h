#pragma once

#include <string>
#include <system_error>

namespace ZU_WEP {

/// An `errno` value in words.
inline std::string ErrnoText(int error) { return std::generic_category().message(error); }

}  // namespace ZU_WEP
