#include "tests/sim/LiveTest.h"

namespace Zu::Wep::Trace {
namespace {

using NoFactory = LiveTest;
using NoLibrary = LiveTest;

TEST_F(NoFactory, TheFunctionIsLookedForAtEachAttempt) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_FALSE(m_live->LoadConfigurationLive());
        EXPECT_EQ(TakeLiveLog(), (Lines{kLoading, "    E STM DCM: Cannot get Trace Facotry Dll "}));
    }
}

TEST_F(NoLibrary, IsASilentFailure) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_FALSE(m_live->LoadConfigurationLive());
        EXPECT_EQ(TakeLiveLog(), Lines{kLoading});
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
