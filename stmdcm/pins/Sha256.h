#pragma once

#include <nettle/sha2.h>

#include <string>
#include <string_view>

namespace stmdcm {

/// SHA-256 (FIPS 180-4) of bytes that come piece by piece.
class Sha256 {
  public:
    Sha256() { sha256_init(&m_state); }
    void Add(std::string_view bytes);
    /// kSha256Size bytes. What is added after it counts for a new one.
    std::string Take();

  private:
    sha256_ctx m_state;
};

/// As people write hashes and build-ids, and programs: two digits a byte.
std::string InHexadecimal(std::string_view bytes);

}  // namespace stmdcm
