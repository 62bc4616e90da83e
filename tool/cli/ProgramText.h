#pragma once

namespace stmdcm {

/// A word and what it means.
struct TextRow {
    const char* name;
    const char* meaning;
};

// What the help of the whole program says besides its commands and options.

inline constexpr char kProgramDescription[] = "Works with the configurations of STM trace captures.";
inline constexpr char kExample[] = "stmdcm show capture.tdf";

inline constexpr TextRow kExitStatuses[] = {
    {"0", "Done."},
    {"1", "Failed; or there are differences, or problems were found."},
    {"2", "The command line was wrong; nothing was done."},
    {"3", "Done, but something was lost or is doubtful; the output or standard error says what."},
    {"4", "Of check and diff: a file could not be read or compared."},
};

// What commands say alike.
inline constexpr char kOverwriteOutput[] =
    "Overwrite the output file, which keeps owner, mode, ACL and attributes; its other hard links keep the old content";
inline constexpr char kOverwriteSettings[] =
    "Overwrite a settings file, which keeps owner, mode, ACL and attributes; its other hard links keep the old text";

inline constexpr TextRow kEnvironment[] = {
    {"NO_COLOR", "Set to anything: no colours, unless --color says otherwise."},
    {"TERM", "No colours when it is \"dumb\"."},
    {"TMPDIR", "Where the plug-in gets its private directory while the program runs."},
    {"LD_LIBRARY_PATH", "Where the trace factory of a live target is looked for."},
    {"STMDCM_SCENARIO", "The scenario that the simulated trace factory plays."},
    {"HOME, ZU_TRACE_*", "Not handed to the plug-in: no settings of yours are read or written."},
};

// What the manual page says besides. PREFIX is where the program is installed: it is PREFIX/bin/stmdcm.

inline constexpr TextRow kFiles[] = {
    {"PREFIX/lib/libStmDCM.so", "The plug-in."},
    {"PREFIX/share/stmdcm/full.tdf", "A capture to try the commands on; demo works with it."},
    {"TMPDIR/.stmdcm-*.tmp", "The plug-in's private directory; removed at the end, after an interrupt too."},
    {".stmdcm-*.tmp",
     "A new file beside the one that it will replace, or the new directory of bundle. Only a SIGKILL can leave these; "
     "the next command that makes one in the same directory removes yours."},
};
inline constexpr char kSeeAlso[] =
    "flock(2), the lock that is held while a file is changed; docs/ in the source of this program: tdf.md and "
    "settings-text.md for the formats, scenario.md, pins.md, bundle.md, check.md for the findings, recover.md, "
    "validate.md, report.md, json.md, python.md and farm.md for many captures, host-guide.md, host-checker.md and "
    "interface-policy.md.";

}  // namespace stmdcm
