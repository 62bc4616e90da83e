#include "tests/faults/FaultRun.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <new>

#include "tests/faults/FaultPlan.h"

namespace stmdcm_test {

namespace fs = std::filesystem;

namespace {

constexpr uid_t kNobody = 65534;

std::string Take(int memory) {
    std::string text(static_cast<std::size_t>(::lseek(memory, 0, SEEK_END)), '\0');
    text.resize(static_cast<std::size_t>(::pread(memory, text.data(), text.size(), 0)));
    ::close(memory);
    return text;
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (const std::string& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

Snapshot FilesBelow(const fs::path& folder) {
    Snapshot files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().lexically_relative(folder).string();
        files[name] = entry.is_symlink()        ? "-> " + fs::read_symlink(entry.path()).string()
                      : entry.is_regular_file() ? ReadWhole(entry.path().string())
                      : entry.is_directory()    ? "folder"
                                                : "no file";
    }
    return files;
}

}  // namespace

FaultMachine::FaultMachine() : m_report(m_root / "report") {
    for (const char* folder : {"work", "home", "tmp", "foreign"}) {
        fs::create_directory(m_root / folder);
    }
    ::chmod(m_root.Path().c_str(), 0755);
    WriteWhole(m_report, std::string(sizeof(Report), '\0'));
    const char* const counts = std::getenv("LLVM_PROFILE_FILE");
    m_environment = {std::string(kReportVariable) + "=" + m_report,
                     "HOME=" + m_root / "home",
                     "TMPDIR=" + m_root / "tmp",
                     "LD_PRELOAD=" STMDCM_SHIM,
                     "PATH=/usr/bin:/bin",
                     std::string("LLVM_PROFILE_FILE=") + (counts != nullptr ? counts : ""),  // scripts/coverage
                     "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0"};
}

FaultResult FaultMachine::Run(const std::vector<std::string>& command, const FaultPlan& plan) const {
    std::vector<std::string> environment = m_more;  // the first of a name counts
    environment.insert(environment.end(), m_environment.begin(), m_environment.end());
    environment.push_back(std::string(kPlanVariable) + "=" + plan.mode + " " + std::to_string(plan.n) + " " +
                          std::to_string(plan.error) + (plan.onwards ? " onwards" : " once"));
    WriteWhole(m_report, std::string(sizeof(Report), '\0'));
    fs::remove(m_report + kRecordingEnd);
    const int out = ::memfd_create("out", MFD_CLOEXEC);
    const int error = ::memfd_create("error", MFD_CLOEXEC);
    const std::vector<char*> argv = Pointers(command), envp = Pointers(environment);
    const std::string folder = Folder();
    ::chmod(m_report.c_str(), 0666);
    const pid_t child = ::vfork();
    if (child == 0) {
        ::alarm(60);
        if (m_isUnprivileged) {  // of this process alone, whose memory is its parent's
            ::syscall(SYS_setgroups, 0, nullptr);
            ::syscall(SYS_setresgid, kNobody, kNobody, kNobody);
            ::syscall(SYS_setresuid, kNobody, kNobody, kNobody);
        }
        ::dup2(out, STDOUT_FILENO);
        ::dup2(error, STDERR_FILENO);
        if (::chdir(folder.c_str()) == 0) {
            ::execve(argv[0], argv.data(), envp.data());
        }
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    FaultResult result;
    result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    result.out = Take(out);
    result.error = Take(error);
    const std::string bytes = ReadWhole(m_report);
    Report report{};
    std::memcpy(static_cast<void*>(&report), bytes.data(), sizeof report);
    result.calls = static_cast<unsigned>(report.calls.load());
    result.isHit = report.hits > 0;
    result.hit = std::string(report.call) + " " + report.path;
    return result;
}

std::string FaultMachine::Recording() const { return ReadWhole(m_report + kRecordingEnd); }

void FaultMachine::Reset(const Snapshot& files) const {
    for (const char* name : {"work", "home", "tmp"}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(m_root / name)) {
            fs::remove_all(entry.path());
        }
    }
    for (const auto& [name, bytes] : files) {
        const std::string path = Folder() + "/" + name;
        fs::create_directories(fs::path(path).parent_path());
        WriteWhole(path, bytes);
        const timespec times[2] = {{1'700'000'100, 0}, {1'700'000'100, 0}};  // what is printed is the same each time
        ::utimensat(AT_FDCWD, path.c_str(), times, 0);
        ::setxattr(path.c_str(), "user.kept", "1", 1, 0);  // where the file system can
    }
    for (const char* name : {"work", "home", "tmp"}) {
        Give(m_root / name);
    }
}

/// To the user as whom programs run.
void FaultMachine::Give(const std::string& folder) const {
    if (m_isUnprivileged) {
        ::lchown(folder.c_str(), kNobody, kNobody);
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
            ::lchown(entry.path().c_str(), kNobody, kNobody);
        }
    }
}

Snapshot FaultMachine::Files() const { return FilesBelow(Folder()); }

Snapshot FaultMachine::ForeignFiles() const { return FilesBelow(ForeignFolder()); }

Snapshot FaultMachine::Left() const {
    Snapshot left = FilesBelow(m_root / "home");
    left.merge(FilesBelow(m_root / "tmp"));
    return left;
}

}  // namespace stmdcm_test
