#include <gtest/gtest.h>

#include "tests/usecase/Records.h"

namespace Zu::Wep::Trace {
namespace {

// Whatever a host puts into a text field, the block stays one block of lines that fit, and reads back as written.
TEST(BlockWriting, NoTextBreaksOutOfItsLine) {
    const std::string texts[] = {"}\n{\ntype=CPT\r\n}",
                                 "\n\n\n",
                                 "$/\r}",
                                 "=",
                                 std::string(121, 'x'),
                                 std::string(5000, 'x'),
                                 std::string(90, 'x') + std::string(90, ' ') + "tail"};
    for (const std::string& text : texts) {
        Records records;
        const auto fill = [&text](auto& record, auto* usecase) {
            usecase->SetModuleName(text.c_str());
            usecase->SetProbeName(text.c_str());
            record.AddUsecase(usecase);
        };
        const _CounterLineInfo counter{4294967295U, text};
        UsecaseInfoIF* usecase = records.sc.GetAUsecaseInfo();
        usecase->AddCounter(&counter);
        usecase->AddFormula(text.c_str(), text.c_str(), text.c_str(), 1);
        fill(records.sc, usecase);
        fill(records.cpt, records.cpt.GetAUsecaseInfo());
        fill(records.pmi, records.pmi.GetAUsecaseInfo());

        const std::string written = records.Text();
        const std::string value(text.size() < 127 ? text : text.substr(0, 121));
        if (value.find_first_of("\r\n ") == std::string::npos) {
            EXPECT_NE(written.find("\nname=" + value + "\njobid=-1\n"), std::string::npos) << text;
        }
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

}  // namespace
}  // namespace Zu::Wep::Trace
