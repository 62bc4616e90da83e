#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace stmdcm {

/// One end of a connection between two processes of this program, over which whole messages go.
class Channel {
  public:
    /// The two ends. Throws Failure.
    static std::pair<Channel, Channel> Pair();

    Channel(Channel&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    Channel& operator=(Channel&& other) noexcept;
    ~Channel() { Close(); }
    void Close();

    int Descriptor() const { return m_descriptor; }
    /// Both wait. False, or nothing, where the other end is gone.
    bool Send(std::string_view message) const;
    std::optional<std::string> Receive() const;

  private:
    explicit Channel(int descriptor) : m_descriptor(descriptor) {}
    bool SendAll(std::string_view bytes) const;
    bool ReceiveAll(char* buffer, std::size_t size) const;

    int m_descriptor;
};

}  // namespace stmdcm
