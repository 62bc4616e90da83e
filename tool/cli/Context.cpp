#include "stmdcm/reading/Words.h"
#include "tool/cli/Command.h"

namespace stmdcm {

namespace {

/// docs/json.md
Json DocumentOf(const char* command, const Failure& failure) {
    return JsonRenderer::Document(command,
                                  {{"failure",
                                    {{"file", JsonRenderer::OrNull(failure.File())},
                                     {"offset", failure.Offset() ? Json(std::to_string(*failure.Offset())) : nullptr},
                                     {"cause", failure.Cause()}}}});
}

}  // namespace

std::string Context::Sentence(const Failure& failure) {
    return failure.File().empty() ? failure.Cause() : Shown(failure.File()) + ": " + failure.Cause();
}

ExitStatus Context::Tell(const Failure& failure) const {
    console.Diagnose(Sentence(failure));
    if (options.json && failure.Reason() != Failure::Kind::Output) {
        try {
            PrintDocument(DocumentOf(command, failure));
        } catch (const Failure& another) {
            return Tell(another);
        }
    }
    return StatusOf(failure, ofFailure);
}

}  // namespace stmdcm
