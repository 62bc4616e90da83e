#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tool/many/Channel.h"
#include "tool/many/FileWork.h"

namespace stmdcm {

/// Other processes that do a command's work on files, each one after the other: the plug-in, its log and what guards
/// temporary files know one process with one thread. They end with this, and when this process does.
class Workers {
  public:
    /// So many names may wait in front of each: these fit into its channel (FileNames::kLongest), so nobody waits for
    /// a name to be taken while results wait to be taken, too.
    static constexpr std::size_t kMostWaiting = 16;

    /// Borrows the context. Throws Failure where they can't be started.
    Workers(std::size_t count, const FileWork& work, const Context& context);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    std::size_t Count() const { return m_channels.size(); }
    /// Can be read as soon as there is something to receive.
    int Descriptor(std::size_t worker) const { return m_channels[worker].Descriptor(); }
    void Send(std::size_t worker, const std::string& file) const { m_channels[worker].Send(file); }
    /// Of the first `file` that was sent and not received yet. Throws Failure where the worker has ended.
    FileOutcome Receive(std::size_t worker, const std::string& file);
    /// Whether that would not wait, though perhaps the descriptor can't be read.
    bool HasResult(std::size_t worker) const { return m_channels[worker].HasMessage(); }

  private:
    void Start(const FileWork& work, const Context& context);

    std::vector<Channel> m_channels;
    std::vector<pid_t> m_processes;
};

}  // namespace stmdcm
