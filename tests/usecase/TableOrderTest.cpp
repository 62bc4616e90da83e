// Calls through the slots of the built tables, as a host compiled elsewhere does: the headers' order can't hide a slip.

#include <gtest/gtest.h>

#include "tests/support/Slot.h"
#include "tests/usecase/Records.h"

namespace Zu::Wep::Trace {
namespace {

using stmdcm_test::Slot;

void CheckBaseOperations(void* usecase, unsigned id = 17, const char* probe = "probe", int job = 3) {
    const auto setAndGet = [usecase](std::size_t slot, auto value) {
        Slot<void>(usecase, slot, value);
        return Slot<decltype(value)>(usecase, slot + 1);
    };
    EXPECT_EQ(setAndGet(0, 17U), id);
    EXPECT_STREQ(setAndGet(2, "mod"), "mod");
    EXPECT_STREQ(setAndGet(4, "probe"), probe);
    EXPECT_EQ(setAndGet(6, 1000U), 1000U);
    EXPECT_EQ(setAndGet(8, 3), job);
    EXPECT_EQ(Slot<unsigned>(usecase, 1), id);
    EXPECT_STREQ(Slot<const char*>(usecase, 3), "mod");
}

/// As the host's own compiler lays them out.
struct Counter {
    std::uint32_t number;
    std::string text;
};
struct Formula {
    std::string name, formula, unit;
    std::uint32_t tag, mask;
};

TEST(TableOrder, ScUsecase) {
    void* usecase = new UsecaseInfo;
    CheckBaseOperations(usecase);
    Slot<void>(usecase, 10, true);
    EXPECT_TRUE(Slot<bool>(usecase, 11));
    const Counter counter{4, "reads"};
    Slot<void>(usecase, 12, &counter);
    Slot<void>(usecase, 13, "f", "#4:2", "MB/s", 9U);
    Slot<void>(usecase, 13, "g", "", "", 5U);
    EXPECT_EQ(Slot<unsigned>(usecase, 14), 1U);
    EXPECT_EQ(Slot<unsigned>(usecase, 15), 2U);
    EXPECT_EQ(Slot<Counter*>(usecase, 16, 0U)->text, "reads");
    EXPECT_EQ(Slot<Formula*>(usecase, 17, 0U)->unit, "MB/s");
    EXPECT_EQ(Slot<Formula*>(usecase, 17, 1U)->mask, 5U);
    EXPECT_EQ(Slot<Formula*>(usecase, 17, 2U), nullptr);
    Slot<void>(usecase, 19);  // 18 destroys, 19 destroys and frees: the leak check of the sanitizers watches it.
}

TEST(TableOrder, CptUsecase) {
    void* usecase = new CTUsecaseInfo;
    CheckBaseOperations(usecase);
    Slot<void>(usecase, 10, 33U, false);  // Only the low five bits count: option 1.
    EXPECT_FALSE(Slot<bool>(usecase, 11, 1U));
    EXPECT_TRUE(Slot<bool>(usecase, 11, 7U));
    for (const std::size_t slot : {12U, 14U, 16U}) {
        Slot<void>(usecase, slot, static_cast<unsigned>(slot));
        EXPECT_EQ(Slot<unsigned>(usecase, slot + 1), slot);
    }
    std::string text;
    static_cast<CTUsecaseInfo*>(usecase)->DoExport(text);
    EXPECT_NE(text.find("cr=12\ndf=14\nmode=16\ndo=252\n"), std::string::npos) << text;
    Slot<void>(usecase, 19);
}

TEST(TableOrder, PmiUsecaseHasNoModuleIdProbeOrJob) {
    void* usecase = new PMIUsecaseInfo;
    CheckBaseOperations(usecase, 4294967295U, nullptr, -1);
    Slot<void>(usecase, 11);  // The destructor stands right behind the ten operations.
}

template <class Record>
class RecordTable : public testing::Test {};
using AllRecords = testing::Types<UsecaseRecord, CTUsecaseRecord, PMIUsecaseRecord>;
TYPED_TEST_SUITE(RecordTable, AllRecords);

TYPED_TEST(RecordTable, DestructorThenTheEightOperations) {
    static_assert(sizeof(TypeParam) == sizeof(void*) + sizeof(std::vector<int>), "the array is the only field");
    void* record = new TypeParam;
    void* scratch = Slot<void*>(record, 7);
    Slot<void>(scratch, 2, "PMI");
    EXPECT_EQ(Slot<void*>(record, 7), scratch);
    EXPECT_STREQ(Slot<const char*>(scratch, 3), "");  // Every call resets the one object.
    Slot<void>(scratch, 2, "PMI");
    Slot<void>(record, 5, scratch);
    EXPECT_EQ(Slot<unsigned>(record, 2), 1U);
    EXPECT_STREQ(Slot<const char*>(Slot<void*>(record, 6, 0U), 3), "PMI");
    EXPECT_EQ(Slot<void*>(record, 6, 1U), nullptr);
    std::string text;
    EXPECT_EQ(Slot<int>(record, 8, &text), 0);
    std::istringstream in(text);
    EXPECT_EQ(Slot<int>(record, 9, &in), 0);
    EXPECT_EQ(Slot<unsigned>(record, 2), 2U);
    Slot<void>(record, 3, 1);  // Neither a job nor a source in use.
    EXPECT_EQ(Slot<unsigned>(record, 2), 2U);
    Slot<void>(record, 4, true);
    EXPECT_EQ(Slot<unsigned>(record, 2), 0U);
    Slot<void>(record, 1);
}

}  // namespace
}  // namespace Zu::Wep::Trace
