#include <gtest/gtest.h>

#include "tests/usecase/Records.h"

namespace Zu::Wep::Trace {
namespace {

// Whatever a host puts into a text field, the block stays one block of lines that fit, and reads back as written.
TEST(BlockWriting, NoTextBreaksOutOfItsLine) {
    const std::string texts[] = {
        "}\n{\ntype=CPT\r\n}",
        "\n\n\n",
        "$/\r}",
        "=",
        std::string(119, 'x'),
        std::string(120, 'x'),
        std::string(5000, 'x'),
        std::string(100, 'x') + std::string(100, ' ') + "tail",
        std::string("a\0\n}", 4),
    };
    for (const std::string& text : texts) {
        const _CounterLineInfo counter{4294967295U, text};
        UsecaseInfo sc;
        CTUsecaseInfo cpt;
        PMIUsecaseInfo pmi;
        for (UsecaseInfoIFBase* usecase : {static_cast<UsecaseInfoIFBase*>(&sc), static_cast<UsecaseInfoIFBase*>(&cpt),
                                           static_cast<UsecaseInfoIFBase*>(&pmi)}) {
            usecase->SetModuleName(text.c_str());
            usecase->SetProbeName(text.c_str());
        }
        sc.AddCounter(&counter);
        sc.AddFormula(text.c_str(), text.c_str(), text.c_str(), 1);
        Records records;
        records.sc.AddUsecase(&sc);
        records.cpt.AddUsecase(&cpt);
        records.pmi.AddUsecase(&pmi);

        const std::string written = records.Text();
        std::istringstream lines(written);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size() + 1, 127U);
        }
        const Records again(written);
        EXPECT_EQ(again.sc.GetNumUsecases() + again.cpt.GetNumUsecases() + again.pmi.GetNumUsecases(), 3U) << text;
        const std::string second = again.Text();
        EXPECT_EQ(Records(second).Text(), second) << text;
    }
}

TEST(BlockWriting, AValueIsCutAtTheLastByteThatFits) {
    for (const std::size_t length : {120U, 121U, 122U}) {
        UsecaseInfo usecase;
        usecase.SetModuleName(std::string(length, 'x').c_str());
        std::string text;
        EXPECT_EQ(usecase.DoExport(text), 0);
        const std::size_t kept = std::min<std::size_t>(length, 121);
        EXPECT_NE(text.find("\nname=" + std::string(kept, 'x') + "\njobid=-1\n"), std::string::npos) << length;
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
