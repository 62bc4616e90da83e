#include "tool/many/Channel.h"

#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

constexpr std::size_t kPiece = 1 << 16;

}  // namespace

std::pair<Channel, Channel> Channel::Pair() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        const int error = errno;
        throw Failure(fmt::format("no further process can be reached: {}", ZU_WEP::ErrnoText(error)));
    }
    return {Channel(ends[0]), Channel(ends[1])};
}

Channel& Channel::operator=(Channel&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_buffer, other.m_buffer);
    std::swap(m_begin, other.m_begin);
    return *this;
}

void Channel::Close() {
    if (const int descriptor = std::exchange(m_descriptor, -1); descriptor >= 0) {
        ::close(descriptor);
    }
}

std::string Channel::Framed(std::string_view message) {
    const std::size_t size = message.size();
    return std::string(reinterpret_cast<const char*>(&size), sizeof size).append(message);
}

bool Channel::Send(std::string_view framed) const {
    for (std::string_view left = framed; !left.empty();) {
        const ssize_t count = ::send(m_descriptor, left.data(), left.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        left.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

std::optional<std::string> Channel::Receive() {
    while (!HasMessage()) {
        if (!ReadMore()) {
            return std::nullopt;
        }
    }
    const std::size_t size = SizeOfNext();
    std::string message = m_buffer.substr(m_begin + sizeof size, size);
    m_begin += sizeof size + size;
    return message;
}

bool Channel::HasMessage() const {
    const std::size_t here = m_buffer.size() - m_begin;
    return here >= sizeof(std::size_t) && here - sizeof(std::size_t) >= SizeOfNext();
}

std::size_t Channel::SizeOfNext() const {
    std::size_t size = 0;
    std::memcpy(&size, m_buffer.data() + m_begin, sizeof size);
    return size;
}

bool Channel::ReadMore() {
    m_buffer.erase(0, m_begin);
    m_begin = 0;
    std::array<char, kPiece> piece;  // no part of the buffer, which would be filled with zeros for each message
    ssize_t count = 0;
    while ((count = ::recv(m_descriptor, piece.data(), piece.size(), 0)) < 0 && errno == EINTR) {
    }
    m_buffer.append(piece.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
}

}  // namespace stmdcm
