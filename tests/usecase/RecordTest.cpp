#include <gtest/gtest.h>

#include <memory>

#include "tests/usecase/Records.h"

namespace Zu::Wep::Trace {
namespace {

constexpr const char* FreshSc = "{\nid=0\nname=\njobid=-1\nprobe=\nsw=0\nsuppress=0\n}\n";
constexpr const char* FreshCpt =
    "{\ntype=CPT\nsid=0\nname=\njobid=-1\nprobe=\nsw=65535\ncr=0\ndf=1\nmode=1\ndo=254\n}\n";
constexpr const char* FreshPmi = "{\ntype=PMI_CMI\nname=\nsw=65535\n}\n";

TEST(Record, AnEmptyBlockIsAUsecaseWithTheDefaultsOfEachKind) {
    const Records records("{\n}\n");
    EXPECT_EQ(Export(records.sc), FreshSc);
    EXPECT_EQ(Export(records.cpt), FreshCpt);
    EXPECT_EQ(Export(records.pmi), FreshPmi);
    EXPECT_EQ(Records().Text(), "");
}

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
    EXPECT_EQ(ImportThenCleanUp<UsecaseInfo>("{\nid=1\nsuppress=1\n#1=c\n/$\nname=f\n$/\n" + keys + "}\n"), FreshSc);
    EXPECT_EQ(ImportThenCleanUp<CTUsecaseInfo>("{\ntype=CPT\nsid=1\ncr=3\ndf=4\nmode=5\ndo=6\n" + keys + "}\n"),
              FreshCpt);
    EXPECT_EQ(ImportThenCleanUp<PMIUsecaseInfo>("{\ntype=PMI_CMI\n" + keys + "}\n"), FreshPmi);
}

// Removal must not go through the assignment of use cases: it would lose probe names and double counters.
TEST(Record, RemovalKeepsTheOthersWhole) {
    const auto block = [](int job) {
        const std::string number = std::to_string(job);
        return "{\nid=" + number + "\nname=m\njobid=" + number + "\nprobe=p" + number +
               "\nsw=0\nsuppress=0\n#1=a\n#1=b\n/$\nname=f\nformula=x:3\nunit=u\nofmask=-1\n$/\n}\n";
    };
    Records records(block(5) + block(7) + block(5) + block(-1) + block(0));
    records.sc.RemoveUsecase(9);
    EXPECT_EQ(records.sc.GetNumUsecases(), 5U);
    records.sc.RemoveUsecase(5);
    EXPECT_EQ(Export(records.sc), block(7) + block(-1) + block(0));
    records.sc.CleaupUsecases(true);
    EXPECT_EQ(Export(records.sc), block(7) + block(0));
    records.sc.AddUsecase(records.sc.GetUsecase(0));  // An element of the array that grows.
    EXPECT_EQ(Export(records.sc), block(7) + block(0) + block(7));
    EXPECT_EQ(records.sc.GetUsecase(3), nullptr);
    records.sc.CleaupUsecases(false);
    EXPECT_EQ(Export(records.sc), "");
}

TEST(Record, PmiSelectsBySource) {
    const auto read = [] {
        std::string text;
        for (const std::string name : {"CMI1", "PMI", "PMI"}) {
            text += "{\ntype=PMI_CMI\nname=" + name + "\nsw=" + std::to_string(text.size()) + "\n}\n";
        }
        return std::make_unique<Records>(text);
    };
    auto records = read();
    EXPECT_STREQ(records->pmi.GetUsecase(2)->GetModuleName(), "CMI1");
    EXPECT_EQ(records->pmi.GetUsecase(0)->GetSampleWindow(), 32U);  // The first of the two.
    EXPECT_EQ(records->pmi.GetUsecase(1), nullptr);
    EXPECT_EQ(records->pmi.GetUsecase(3), nullptr);
    for (const auto& [index, left] : {std::pair(0, 1U), {1, 3U}, {2, 2U}, {7, 0U}, {-1, 0U}}) {
        records = read();
        records->pmi.RemoveUsecase(index);
        EXPECT_EQ(records->pmi.GetNumUsecases(), left) << index;
    }
}

TEST(Usecase, ScAssignmentAppendsAndKeepsTheProbe) {
    UsecaseInfo source;
    UsecaseInfo target;
    const _CounterLineInfo counter{1, "c"};
    for (UsecaseInfo* usecase : {&source, &target}) {
        usecase->AddCounter(&counter);
        usecase->AddFormula("f", "x:3", "u", 1);
    }
    source.SetModuleName("source");
    source.SetProbeName("source");
    target.SetProbeName("target");
    target = source;
    EXPECT_EQ(target.GetNumCounters(), 2U);
    EXPECT_EQ(target.GetNumFormulars(), 2U);
    EXPECT_STREQ(target.GetModuleName(), "source");
    EXPECT_STREQ(target.GetProbeName(), "target");
    const UsecaseInfo copy(source);
    EXPECT_STREQ(copy.GetProbeName(), "source");
    EXPECT_EQ(copy.GetNumCounters(), 1U);
}

}  // namespace
}  // namespace Zu::Wep::Trace
