#pragma once

#include <string>

namespace ZU_WEP {

/// Environment variables, the working directory, paths (separated by "/") and the user's trace directories.
/// Failures throw `source_utilities_error` unless said otherwise. Variables and working directory belong to the whole
/// process: change them from one thread at a time.
class uEnvironment {
  public:
    /// The variable's value, "" when it is not set; valid until the variable is changed. Throws for a null name.
    static const char* GetVar(const char* name);
    /// 0, or -1 when the system refuses. Throws for a null argument.
    static int SetVar(const char* name, const char* value);

    static const char* GetWorkingDirectory(std::string& dir);
    /// 0 or -1.
    static int SetWorkingDirectory(const char* path);

    /// Creates every directory along `path`. Returns what the last step did: -1 also when the directory was there.
    static int MakeDirectory(const char* path);

    /// Turns every "\" into "/" and every run of them into one, a leading one included.
    static void NormalizeDirSep(std::string& path);
    /// Everything before the last "/", or "". A null `path` throws `std::logic_error`.
    static void GetParentDir(std::string& parent, const char* path);
    static void JoinPaths(std::string& path, const char* tail);
    /// The running program's path, cut at 1023 bytes; "" when it can't be read.
    static void GetCurrentExecutablePath(std::string& path);

    /// The directories ".ZU-trace", ".ZU-trace/settings" and ".ZU-trace/data" in the one that "HOME" names. Asking for
    /// one creates it, and whether that worked is not reported. They throw when "HOME" is empty or not set.
    static const char* GetTraceLoggingDirectory(std::string& dir);
    static const char* GetTraceUserSettingsDirectory(std::string& dir);
    static const char* GetTraceTemporaryDataDirectory(std::string& dir);

    /// Works in another directory until the end of its life or `Restore`.
    class ScopedDirectoryChanger {
      public:
        explicit ScopedDirectoryChanger(const char* path);
        virtual ~ScopedDirectoryChanger();
        ScopedDirectoryChanger(const ScopedDirectoryChanger&) = delete;
        ScopedDirectoryChanger& operator=(const ScopedDirectoryChanger&) = delete;

        /// Null does nothing. Throws when a change is still to be restored, or when `path` can't be entered.
        void Change(const char* path);
        void Restore();

      private:
        std::string m_savedDirectory;
    };
};

}  // namespace ZU_WEP
