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

    Channel(Channel&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1)),
          m_buffer(std::move(other.m_buffer)),
          m_begin(std::exchange(other.m_begin, 0)) {}
    Channel& operator=(Channel&& other) noexcept;
    ~Channel() { Close(); }
    void Close();

    int Descriptor() const { return m_descriptor; }
    /// A message as bytes on the way; many may be sent at once.
    static std::string Framed(std::string_view message);

    /// Both wait. False, or nothing, where the other end is gone.
    bool Send(std::string_view framed) const;
    std::optional<std::string> Receive();
    /// Whether one is here already; the descriptor can't be read then, unless more has come.
    bool HasMessage() const;

  private:
    explicit Channel(int descriptor) : m_descriptor(descriptor) {}
    std::size_t SizeOfNext() const;
    bool ReadMore();

    int m_descriptor;
    std::string m_buffer;     ///< what was read; a call into the system may bring many messages
    std::size_t m_begin = 0;  ///< of what was not received of it
};

}  // namespace stmdcm
