#include "tool/commands/CommandTable.h"

#include "tool/commands/Apply.h"
#include "tool/commands/Check.h"
#include "tool/commands/CompleteWords.h"
#include "tool/commands/Convert.h"
#include "tool/commands/Demo.h"
#include "tool/commands/Diff.h"
#include "tool/commands/Extract.h"
#include "tool/commands/Live.h"
#include "tool/commands/Objects.h"
#include "tool/commands/PrintCompletion.h"
#include "tool/commands/PrintManual.h"
#include "tool/commands/Recover.h"
#include "tool/commands/Restore.h"
#include "tool/commands/Sections.h"
#include "tool/commands/Set.h"
#include "tool/commands/Show.h"
#include "tool/commands/ShowHistory.h"

namespace stmdcm {

namespace {

template <class T>
std::unique_ptr<Command> Make() {
    return std::make_unique<T>();
}

// A new command is one line here.
constexpr CommandEntry kCommands[] = {
    {"show", "Show the configuration in a capture or a settings file", Make<Show>},
    {"check", "Tell what the lenient readers pass over in silence", Make<Check>},
    {"sections", "List the sections of a capture and how readers find them", Make<Sections>},
    {"extract", "Write the payload of one section of a capture", Make<Extract>},
    {"recover", "Make a new capture of what can be found in a torn or broken one", Make<Recover>},
    {"set", "Change properties of a capture, in place, or of a settings file", Make<Set>},
    {"apply", "Put the configuration of a settings file or capture into captures", Make<Apply>},
    {"convert", "Turn a capture into settings text, or settings into a capture", Make<Convert>},
    {"diff", "Compare the configurations of two captures or settings files", Make<Diff>},
    {"objects", "Tell which program images are there, and record their new places", Make<Objects>},
    {"history", "List the earlier configurations that a capture holds", Make<ShowHistory>},
    {"restore", "Put an earlier configuration of a capture in force again", Make<Restore>},
    {"live", "Load the configuration from the live target, show it and save it", Make<Live>},
    {"demo", "Load, change, save and reload configurations, and compare them", Make<Demo>},
    {"completion", "Print the script that completes command lines in a shell", Make<PrintCompletion>},
    {"complete", "Tell what a command line can go on with", Make<CompleteWords>, true},
    {"help-man", "Print the manual page", Make<PrintManual>, true},
};

}  // namespace

std::span<const CommandEntry> CommandTable() { return kCommands; }

}  // namespace stmdcm
