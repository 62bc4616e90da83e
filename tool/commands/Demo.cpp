#include "tool/commands/Demo.h"

#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/LibraryPath.h"
#include "stmdcm/plugin/PluginSession.h"
#include "tool/commands/DemoReport.h"
#include "tool/commands/DemoRun.h"
#include "tool/commands/LiveDemoRun.h"
#include "tool/output/GuardedHome.h"

namespace stmdcm {

void Demo::Declare(CLI::App& app) {
    app.add_option("--keep", m_keep, "Work in this new directory and leave the captures there")->type_name("DIR");
    app.footer(
        "Works in a private directory that is removed at the end, and touches nothing else.\n"
        "The live target is a simulated one. Ends with status 1 when a reloaded configuration differs.\n\nExample:\n  "
        "stmdcm demo --keep /tmp/demo");
}

ExitStatus Demo::Run(const Context& context) {
    SearchLibrariesFirstIn(SimulatorDirectory(), kFactoryFile);
    const GuardedHome home(m_keep);
    PluginSession session(home, context.options.plugin);
    const DemoResult result = DemoRun(session.plugin, home.Path()).Run();
    const LiveDemoResult live = LiveDemoRun(session).Run();
    const DemoReport report(result, live);
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    return result.Passed() && live.Passed() ? ExitStatus::Done : ExitStatus::Failed;
}

}  // namespace stmdcm
