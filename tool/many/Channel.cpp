#include "tool/many/Channel.h"

#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

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
    return *this;
}

void Channel::Close() {
    if (const int descriptor = std::exchange(m_descriptor, -1); descriptor >= 0) {
        ::close(descriptor);
    }
}

bool Channel::Send(std::string_view message) const {
    const std::size_t size = message.size();
    std::string bytes(reinterpret_cast<const char*>(&size), sizeof size);
    return SendAll(bytes.append(message));
}

std::optional<std::string> Channel::Receive() const {
    std::size_t size = 0;
    if (!ReceiveAll(reinterpret_cast<char*>(&size), sizeof size)) {
        return std::nullopt;
    }
    std::string message(size, '\0');
    return ReceiveAll(message.data(), size) ? std::optional(std::move(message)) : std::nullopt;
}

bool Channel::SendAll(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

bool Channel::ReceiveAll(char* buffer, std::size_t size) const {
    while (size > 0) {
        const ssize_t count = ::recv(m_descriptor, buffer, size, 0);
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return false;
        }
        buffer += count < 0 ? 0 : count;
        size -= count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace stmdcm
