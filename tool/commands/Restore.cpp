#include "tool/commands/Restore.h"

#include <fmt/format.h>

#include "stmdcm/change/History.h"
#include "tool/render/JsonRenderer.h"

namespace stmdcm {

void Restore::Declare(CLI::App& app) {
    app.add_option("file", m_file, "A capture")->required()->type_name("CAPTURE");
    app.add_option("number", m_number, "The configuration's number, as \"history\" shows it")
        ->required()
        ->type_name("N");
    app.footer(
        "Appends a copy of that configuration, byte for byte, and retires the current one: so a restore can be undone\n"
        "by another. Object files (DCM_COMMON) and settings (STMDECODERINFO) are restored apart.\n\nExample:\n"
        "  stmdcm restore capture.tdf 2");
}

ExitStatus Restore::Run(const Context& context) {
    const RestoreResult result = RestoreConfiguration(m_file, m_number);
    if (context.options.json) {
        JsonRenderer::Json document = JsonRenderer::Document("restore");
        document["file"] = m_file;
        document["number"] = m_number;
        document["section"] = result.restored.name;
        document["written"] = result.isWritten;
        context.console.Print(JsonRenderer::Text(document));
    } else if (result.isWritten) {
        context.console.Print(
            fmt::format("{}: configuration {} ({}) is in force again\n", m_file, m_number, result.restored.name));
    } else {
        context.console.Print(fmt::format("{}: configuration {} ({}) is what is in force, nothing was written\n",
                                          m_file, m_number, result.restored.name));
    }
    return ExitStatus::Done;
}

}  // namespace stmdcm
