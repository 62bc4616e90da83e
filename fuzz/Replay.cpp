// Feeds a fuzzing target, linked to this in place of the fuzzer, with every file of the directories named on the
// command line, and with every beginning of the small ones. A failure names the file and how much of it there was.

#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "tests/support/ScratchDir.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr std::size_t kSmall = 640;

std::string g_input;

void TellInput(int signal) {
    [[maybe_unused]] const auto ignored = ::write(STDERR_FILENO, g_input.data(), g_input.size());
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void Feed(const std::string& name, const std::string& bytes, std::size_t size) {
    g_input = "input: " + name + ", its first " + std::to_string(size) + " bytes\n";
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), size);
}

}  // namespace

int main(int argc, char** argv) {
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        std::signal(signal, TellInput);
    }
    std::size_t runs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            const std::string bytes = stmdcm_test::ReadWhole(entry.path());
            for (std::size_t size = bytes.size() <= kSmall ? 0 : bytes.size(); size <= bytes.size(); ++size, ++runs) {
                Feed(entry.path(), bytes, size);
            }
        }
    }
    std::printf("%zu inputs\n", runs);
    return runs == 0 ? 1 : 0;
}
