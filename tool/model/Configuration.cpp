#include "tool/model/Configuration.h"

#include <fmt/format.h>

namespace stmdcm {

std::string ScUsecase::Key() const { return fmt::format("job {}, module {}", job, moduleId); }

std::string CptUsecase::Key() const { return fmt::format("job {}, module {}", job, moduleId); }

ObjectFile::State ObjectFile::DiskState() const {
    if (!modified) {
        return State::Missing;
    }
    return *modified == recorded ? State::Present : State::Changed;
}

const char* ObjectFile::DiskStateName() const {
    switch (DiskState()) {
        case State::Present:
            return "present";
        case State::Changed:
            return "changed";
        case State::Missing:
            break;
    }
    return "missing";
}

}  // namespace stmdcm
