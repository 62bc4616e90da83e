#pragma once

#include <csignal>

namespace ZU_WEP {

/// While it lives, a write of its thread that passes the process's file-size limit or finds nobody at a pipe's other
/// end fails (EFBIG, EPIPE) and raises no signal, SIGXFSZ or SIGPIPE, that would end the process (write(2), signal(7)).
/// The signals' dispositions and other threads are not touched, signals that were pending stay so, and `errno` is left
/// alone. Make and destroy it on one thread.
class WriteSignalBlock {
  public:
    WriteSignalBlock();
    ~WriteSignalBlock();
    WriteSignalBlock(const WriteSignalBlock&) = delete;
    WriteSignalBlock& operator=(const WriteSignalBlock&) = delete;

  private:
    sigset_t m_maskBefore;
    sigset_t m_own;  ///< those that only a write of its time can raise
};

}  // namespace ZU_WEP
