#include "tool/cli/ProgramText.h"

namespace stmdcm {

namespace {

constexpr TextRow kExitStatuses[] = {
    {"0", "Done."},
    {"1", "Failed; or there are differences, or problems were found."},
    {"2", "The command line was wrong; nothing was done."},
    {"3", "Done, but something was lost or is doubtful; standard error says what."},
};

constexpr TextRow kEnvironment[] = {
    {"NO_COLOR", "Set to anything: no colours, unless --color says otherwise."},
    {"TERM", "No colours when it is \"dumb\"."},
    {"TMPDIR", "Where the plug-in gets its private directory while the program runs."},
    {"LD_LIBRARY_PATH", "Where the trace factory of a live target is looked for."},
    {"STMDCM_SCENARIO", "The scenario that the simulated trace factory plays."},
    {"HOME, ZU_TRACE_*", "Not handed to the plug-in: no settings of yours are read or written."},
};

}  // namespace

std::span<const TextRow> ExitStatusRows() { return kExitStatuses; }
std::span<const TextRow> EnvironmentRows() { return kEnvironment; }

}  // namespace stmdcm
