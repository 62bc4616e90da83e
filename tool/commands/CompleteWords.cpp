#include "tool/commands/CompleteWords.h"

#include <fmt/format.h>

#include "tool/cli/Completer.h"

namespace stmdcm {

namespace {

std::string Kind(const ValueSyntax& syntax) {
    switch (syntax.kind) {
        case ValueKind::File:
            return fmt::format("files {}", syntax.extensions);
        case ValueKind::Directory:
            return "directories";
        default:
            return "words";
    }
}

}  // namespace

void CompleteWords::Declare(CLI::App& app) {
    m_program = app.get_parent();
    app.add_option("WORD", m_words, "The words behind the program's name, the one to complete last");
    app.footer(
        "The first line is \"words\", \"directories\", or \"files\" with the extensions that fit. Behind \"words\" "
        "each line is a word that can stand there, a tab and what it means.\n\nExample:\n"
        "  stmdcm complete -- --color a");
}

ExitStatus CompleteWords::Run(const Context& context) {
    const Completion completion = Completer(*m_program).Complete(m_words);
    std::string text = Kind(completion.syntax) + "\n";
    for (const auto& [word, description] : completion.candidates) {
        text += fmt::format("{}\t{}\n", word, description);
    }
    context.console.Print(text);
    return ExitStatus::Done;
}

}  // namespace stmdcm
