#include <gtest/gtest.h>

#include <memory>

#include "tests/support/AllocationWatch.h"
#include "tests/usecase/Records.h"

namespace Zu::Wep::Trace {
namespace {

template <class Info>
std::string ImportThenCleanUp(const std::string& text) {
    Info usecase;
    std::istringstream in(text);
    EXPECT_EQ(usecase.DoImport("", in), 0);
    usecase.CleanUp();
    std::string out;
    usecase.DoExport(out);
    return out;
}

TEST(Record, CleanUpSetsEveryDefault) {
    const std::string keys = "name=n\njobid=2\nprobe=p\nsw=3\n";
    EXPECT_EQ(ImportThenCleanUp<UsecaseInfo>("{\nid=1\nsuppress=1\n#1=c\n/$\nname=f\n$/\n" + keys + "}\n"),
              "{\nid=0\nname=\njobid=-1\nprobe=\nsw=0\nsuppress=0\n}\n");
    EXPECT_EQ(ImportThenCleanUp<CTUsecaseInfo>("{\ntype=CPT\nsid=1\ncr=3\ndf=4\nmode=5\ndo=6\n" + keys + "}\n"),
              "{\ntype=CPT\nsid=0\nname=\njobid=-1\nprobe=\nsw=65535\ncr=0\ndf=1\nmode=1\ndo=254\n}\n");
    EXPECT_EQ(ImportThenCleanUp<PMIUsecaseInfo>("{\ntype=PMI_CMI\n" + keys + "}\n"),
              "{\ntype=PMI_CMI\nname=\nsw=65535\n}\n");
}

const std::string CounterBlock = "#1=a\n#1=b\n";
const std::string FormulaBlock = "/$\nname=f\nformula=x:3\nunit=u\nofmask=-1\n$/\n";

std::string Fields(int id, int probe) {
    return "{\nid=" + std::to_string(id) + "\nname=m\njobid=" + std::to_string(id) + "\nprobe=p" +
           std::to_string(probe) + "\nsw=0\nsuppress=0\n";
}

std::string Block(int id) { return Fields(id, id) + CounterBlock + FormulaBlock + "}\n"; }

// Removal must not go through the assignment of use cases: it would lose probe names and double counters.
TEST(Record, RemovalKeepsTheOthersWhole) {
    Records records(Block(5) + Block(7) + Block(5) + Block(-1) + Block(0));
    records.sc.RemoveUsecase(9);
    EXPECT_EQ(records.sc.GetNumUsecases(), 5U);
    records.sc.RemoveUsecase(5);
    EXPECT_EQ(Export(records.sc), Block(7) + Block(-1) + Block(0));
    records.sc.CleaupUsecases(true);
    EXPECT_EQ(Export(records.sc), Block(7) + Block(0));
    records.sc.AddUsecase(records.sc.GetUsecase(0));  // An element of the array that grows.
    EXPECT_EQ(Export(records.sc), Block(7) + Block(0) + Block(7));
    EXPECT_EQ(records.sc.GetUsecase(3), nullptr);
    records.sc.CleaupUsecases(false);
    EXPECT_EQ(Export(records.sc), "");
}

/// Lets each allocation fail in turn while a record reads its text a second time or drops use cases.
template <class Record>
void ExpectEveryFailureToldAndNothingLost(const std::string& text) {
    using Operation = void (*)(Record&, std::istringstream&);
    const Operation operations[] = {[](Record& record, auto& in) { record.RetrieveAllRecords(in); },
                                    [](Record& record, auto&) { record.RemoveUsecase(1); },
                                    [](Record& record, auto&) { record.CleaupUsecases(true); }};
    for (const Operation operation : operations) {
        bool failed = true;
        for (std::size_t n = 0; failed; ++n) {
            Record record;
            Records::Read(record, text);
            const std::string held = Export(record);
            std::istringstream in(text);
            failed = stmdcm_test::RunsOutOfMemory(n, [&] { operation(record, in); });
            const std::string now = Export(record);
            EXPECT_TRUE(failed ? now.starts_with(held) && (held + held).starts_with(now)
                               : now == held + held || now.size() < held.size())
                << n;
        }
    }
}

TEST(Record, MemoryThatRunsOutIsToldAndLosesNothing) {
    const std::string name = "name=" + std::string(100, 'n') + "\n}\n";
    const std::string text = Block(5) + "{\ntype=CPT\njobid=1\n" + name + Block(-1) + "{\ntype=PMI_CMI\n" + name +
                             "{\ntype=CPT\njobid=-1\n" + name + Block(1) + "{\ntype=PMI_CMI\nname=CMI0\n}\n" +
                             "{\ntype=CPT\njobid=4\n" + name + Block(7);
    ExpectEveryFailureToldAndNothingLost<UsecaseRecord>(text);
    ExpectEveryFailureToldAndNothingLost<CTUsecaseRecord>(text);
    ExpectEveryFailureToldAndNothingLost<PMIUsecaseRecord>(text);
}

TEST(Record, PmiSelectsBySource) {
    const auto block = [](const char* name) { return std::string("{\ntype=PMI_CMI\nname=") + name + "\nsw=1\n}\n"; };
    const auto read = [&] { return std::make_unique<Records>(block("CMI1") + block("PMI") + block("PMI")); };
    auto records = read();
    records->pmi.GetUsecase(0)->SetSampleWindow(2);
    EXPECT_NE(records->Text().find("PMI\nsw=2\n}\n{"), std::string::npos);  // The first of the two.
    EXPECT_STREQ(records->pmi.GetUsecase(2)->GetModuleName(), "CMI1");
    EXPECT_EQ(records->pmi.GetUsecase(1), nullptr);
    EXPECT_EQ(records->pmi.GetUsecase(3), nullptr);
    for (const auto& [index, left] : {std::pair(0, 1U), {1, 3U}, {2, 2U}, {7, 0U}, {-1, 0U}}) {
        records = read();
        records->pmi.RemoveUsecase(index);
        EXPECT_EQ(records->pmi.GetNumUsecases(), left) << index;
    }
}

TEST(Usecase, ScAssignmentAppendsAndKeepsTheProbe) {
    Records records(Block(5) + Block(7));
    static_cast<UsecaseInfo&>(*records.sc.GetUsecase(0)) = static_cast<UsecaseInfo&>(*records.sc.GetUsecase(1));
    EXPECT_EQ(Export(records.sc),
              Fields(7, 5) + CounterBlock + CounterBlock + FormulaBlock + FormulaBlock + "}\n" + Block(7));
}

}  // namespace
}  // namespace Zu::Wep::Trace
