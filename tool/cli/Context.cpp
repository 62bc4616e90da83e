#include "stmdcm/reading/Words.h"
#include "tool/cli/Command.h"
#include "tool/reports/FailureReport.h"

namespace stmdcm {

std::string Context::Sentence(const Failure& failure) {
    return failure.File().empty() ? failure.Cause() : Shown(failure.File()) + ": " + failure.Cause();
}

ExitStatus Context::Tell(const Failure& failure) const {
    console.Diagnose(Sentence(failure));
    if (options.json && failure.Reason() != Failure::Kind::Output) {
        try {
            PrintDocument(FailureReport::Document(command, failure));
        } catch (const Failure& another) {
            return Tell(another);
        }
    }
    return StatusOf(failure, ofFailure);
}

}  // namespace stmdcm
