#pragma once

namespace ZU_WEP {

/// Processes by their id; 0 stands for none.
class uProcess {
  public:
    static unsigned long GetPid();

    /// Starts `program`, looked up along PATH, with one argument (or none: null) and returns the child's id; 0 on
    /// failure. When the program can't be run the CHILD returns 0 from this call and lives on as a copy of the caller.
    /// `wait` has no effect.
    static unsigned long InvokeProcess(const char* program, const char* argument, bool wait);

    /// Sends SIGTERM to a child of this process and waits until it has ended.
    static bool TerminateProcess(unsigned long pid);

    /// `pid` when a process of that id runs, else 0.
    static unsigned long LookupProcess(unsigned long pid);
    /// The first process whose executable's path contains `name`, else 0. `unused` has no effect.
    static unsigned long LookupProcess(const char* name, unsigned long unused);
};

}  // namespace ZU_WEP
