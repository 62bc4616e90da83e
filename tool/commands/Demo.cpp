#include "tool/commands/Demo.h"

#include "tool/commands/DemoReport.h"
#include "tool/commands/DemoRun.h"
#include "tool/plugin/Plugin.h"
#include "tool/plugin/TraceHome.h"

namespace stmdcm {

void Demo::Declare(CLI::App& app) {
    app.add_option("--keep", m_keep, "Work in this new directory and leave the captures there")->type_name("DIR");
    app.footer(
        "Works in a private directory that is removed at the end, and touches nothing else.\n"
        "Ends with status 1 when the reloaded configuration differs.\n\nExample:\n  stmdcm demo --keep /tmp/demo");
}

ExitStatus Demo::Run(const Context& context) {
    const TraceHome home = m_keep.empty() ? TraceHome() : TraceHome(m_keep);
    const Plugin plugin(home, context.options.plugin);
    const DemoResult result = DemoRun(plugin, home.Path()).Run();
    const DemoReport report(result);
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    return result.Passed() ? ExitStatus::Done : ExitStatus::Failed;
}

}  // namespace stmdcm
