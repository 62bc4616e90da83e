#include "stmdcm/pins/Sha256.h"

#include <fmt/format.h>

#include <cstdint>

#include "stmdcm/pins/ImageIdentity.h"

namespace stmdcm {

static_assert(kSha256Size == SHA256_DIGEST_SIZE);

void Sha256::Add(std::string_view bytes) {
    sha256_update(&m_state, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
}

std::string Sha256::Take() {
    std::uint8_t digest[kSha256Size];
    sha256_digest(&m_state, sizeof digest, digest);
    return {digest, digest + sizeof digest};
}

std::string InHexadecimal(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    }
    return text;
}

}  // namespace stmdcm
