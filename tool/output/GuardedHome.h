#pragma once

#include <filesystem>
#include <string>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/capture/InterruptBlock.h"
#include "stmdcm/plugin/TraceHome.h"
#include "tool/output/InterruptGuard.h"

namespace stmdcm {

/// A file that a function of std::filesystem failed for.
inline Failure FailureOf(const std::filesystem::filesystem_error& error) {
    return {error.path1().string(), ZU_WEP::ErrnoText(error.code().value())};
}

/// A home for the plug-in that goes also when the user interrupts the program.
class GuardedHome : public TraceHome {
  public:
    /// The block lasts as long as the making of this, so no interrupt comes between the directory and its guard.
    explicit GuardedHome(const std::string& keep = {}, const InterruptBlock& /*block*/ = InterruptBlock())
        : TraceHome(keep), m_guard(keep.empty() ? Path().string() : "") {}
    ~GuardedHome() { Remove(); }

    /// Calls `work()`. What it throws for a file in here names what the user knows.
    template <class Work>
    auto WithNames(Work work) const {
        try {
            return work();
        } catch (const Failure& failure) {
            throw Named(failure);
        } catch (const std::filesystem::filesystem_error& error) {
            throw Named(FailureOf(error));
        }
    }

  private:
    InterruptGuard m_guard;
};

/// Calls `work(home)` in a home of its own, WithNames.
template <class Work>
auto InGuardedHome(const std::string& keep, Work work) {
    const GuardedHome home(keep);
    return home.WithNames([&] { return work(home); });
}

}  // namespace stmdcm
