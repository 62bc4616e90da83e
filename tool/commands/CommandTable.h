#pragma once

#include "tool/cli/Command.h"

namespace stmdcm {

// A new command is a source in this folder, and here its name and its line. What it tells is a report in the source
// or, where others tell the same, in tool/reports/.

using CommandFactory = std::unique_ptr<Command>();
CommandFactory MakeApply, MakeBundle, MakeCheck, MakeComplete, MakeCompletion, MakeConvert, MakeDemo, MakeDiff,
    MakeExplain, MakeExtract, MakeHelpMan, MakeHistory, MakeLive, MakeNewHost, MakeObjects, MakeRecover, MakeReport,
    MakeRestore, MakeSections, MakeSet, MakeShow, MakeUnbundle, MakeUndo, MakeValidate;

/// Every command, in the order in which the help shows them.
inline constexpr CommandEntry kCommands[] = {
    {"show", "Show the configuration in a capture or a settings file", MakeShow},
    {"check", "Tell what the lenient readers pass over in silence", MakeCheck},
    {"explain", "Tell why a property, use case or program image is what it is", MakeExplain},
    {"report", "Write one page about captures, to be opened in a browser", MakeReport},
    {"sections", "List the sections of a capture and how readers find them", MakeSections},
    {"extract", "Write the payload of one section of a capture", MakeExtract},
    {"recover", "Make a new capture of what can be found in a torn or broken one", MakeRecover},
    {"set", "Change properties of a capture, in place, or of a settings file", MakeSet},
    {"apply", "Put the configuration of a settings file or capture into captures", MakeApply},
    {"convert", "Turn a capture into settings text, or settings into a capture", MakeConvert},
    {"diff", "Compare the configurations of two captures or settings files", MakeDiff},
    {"objects", "Tell which program images are there, and record their new places", MakeObjects},
    {"bundle", "Copy a capture and its program images, to decode it elsewhere", MakeBundle},
    {"unbundle", "Put a bundle to work: verify it and map the images' places", MakeUnbundle},
    {"history", "List the earlier configurations that a capture holds", MakeHistory},
    {"restore", "Put an earlier configuration of a capture in force again", MakeRestore},
    {"undo", "Put the configuration before the last change in force again", MakeUndo},
    {"live", "Load the configuration from the live target, show it and save it", MakeLive},
    {"validate", "Ask a plug-in whether it does what its hosts rely on", MakeValidate},
    {"demo", "Load, change, save and reload configurations, and compare them", MakeDemo},
    {"new-host", "Write a host of the plug-in to begin with, which builds at once", MakeNewHost},
    {"completion", "Print the script that completes command lines in a shell", MakeCompletion},
    {"complete", "Tell what a command line can go on with", MakeComplete, true},
    {"help-man", "Print the manual page", MakeHelpMan, true},
};

}  // namespace stmdcm
