#include "tests/sim/LiveTest.h"

namespace Zu::Wep::Trace {
namespace {

struct OtherLibraries : LiveTest {
    void ExpectAtEachAttempt(const Lines& log) {
        for (int attempt = 0; attempt < 2; ++attempt) {
            EXPECT_FALSE(m_live->LoadConfigurationLive());
            EXPECT_EQ(TakeLiveLog(), log);
        }
    }
};

TEST_F(OtherLibraries, NoFactory) { ExpectAtEachAttempt({kLoading, "    E STM DCM: Cannot get Trace Facotry Dll "}); }

TEST_F(OtherLibraries, NoLibrary) { ExpectAtEachAttempt({kLoading}); }

}  // namespace
}  // namespace Zu::Wep::Trace
