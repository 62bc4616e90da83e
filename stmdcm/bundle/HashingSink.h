#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "stmdcm/capture/ByteSink.h"
#include "stmdcm/pins/Sha256.h"

namespace stmdcm {

/// Hands on what it takes, and tells what that was.
class HashingSink final : public ByteSink {
  public:
    explicit HashingSink(ByteSink& to) : m_to(to) {}

    void Write(std::string_view bytes) override {
        m_hash.Add(bytes);
        m_size += bytes.size();
        m_to.Write(bytes);
    }
    void WriteZeros(std::uint64_t count) override {
        HashOfZeros zeros(m_hash);
        zeros.WriteZeros(count);
        m_size += count;
        m_to.WriteZeros(count);
    }

    std::uint64_t Size() const { return m_size; }
    std::string TakeHash() { return m_hash.Take(); }

  private:
    struct HashOfZeros final : ByteSink {
        explicit HashOfZeros(Sha256& ofHash) : hash(ofHash) {}
        void Write(std::string_view bytes) override { hash.Add(bytes); }
        Sha256& hash;
    };

    ByteSink& m_to;
    Sha256 m_hash;
    std::uint64_t m_size = 0;
};

}  // namespace stmdcm
