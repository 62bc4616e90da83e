#pragma once

#include <sys/types.h>

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "tool/many/Channel.h"
#include "tool/many/FileWork.h"

namespace stmdcm {

class StopRequest;

/// Other processes that do a command's work on files, each one after the other: the plug-in, its log and what guards
/// temporary files know one process with one thread. They end with this, and when this process does. For one that ends
/// too early there comes another, which does the rest of its files. Names and results go in batches, no result later
/// than LateOutput has it: so it is not known on which file one was that ended too early. The next one does all of them
/// once more, with each result on its way before the file behind it is begun; and a file with which that one ends, too,
/// is tried a last time.
class Workers {
  public:
    /// So many names may wait in front of each: these fit into its channel (FileNames::kLongest), so nobody waits for
    /// a name to be taken while results wait to be taken, too.
    static constexpr std::size_t kMostWaiting = 32;

    /// Borrows the work, the context and the request (null: there is none), at which each does the file that it is on
    /// and begins with no other. `ofUnfinished` is how a file is whose process ended too early: the end of a sentence.
    /// Throws Failure where they can't be started.
    /// Where the work is `once`, no file is ever worked on again: each result is on its way at once.
    Workers(std::size_t count, const FileWork& work, const Context& context, const StopRequest* stop,
            std::string ofUnfinished, bool once);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    std::size_t Count() const { return m_workers.size(); }
    /// Can be read as soon as there is something to receive.
    int Descriptor(std::size_t worker) const { return m_workers[worker].channel.Descriptor(); }
    /// To be sent with others that are queued.
    void Queue(std::size_t worker, const std::string& file);
    void SendQueued();
    /// The first file that was queued and not received yet; there has to be one.
    const std::string& FirstOf(std::size_t worker) const { return m_workers[worker].files.front(); }
    /// Of that one; nothing where it was not begun before the end was asked
    /// for.
    std::optional<FileOutcome> Receive(std::size_t worker);
    /// Whether that needs no waiting for the descriptor.
    bool HasResult(std::size_t worker) const;

  private:
    struct Worker {
        Channel channel;
        pid_t process;
        bool isCareful;                      ///< sends each result before it begins with the next file
        std::deque<std::string> files = {};  ///< that were queued and not received
        std::string suspect = {};            ///< on which one of them has ended already
        std::string queued = {};             ///< the last of those, framed
        std::size_t queuedCount = 0;
    };

    Worker Start(bool isCareful);
    bool Restart(Worker& worker, std::string& why);
    static std::string Reap(Worker& worker);
    FileOutcome Fail(Worker& worker, const std::string& why);

    const FileWork& m_work;
    const Context& m_context;
    const StopRequest* m_stop;
    std::string m_ofUnfinished;
    bool m_once;
    std::vector<Worker> m_workers;
};

}  // namespace stmdcm
