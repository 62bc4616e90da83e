#include <fmt/format.h>

#include <sstream>

#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

namespace {

/// The text of a record alone.
template <class Record>
std::string TextOf(const Record& record) {
    std::string text;
    record.SaveAllRecords(text);
    return text;
}

template <class Record>
void Read(Record& record, const std::string& text) {
    std::istringstream in(text);
    Expect("the result of RetrieveAllRecords", record.RetrieveAllRecords(in), 0);
}

/// An SC block of that job, in which everything but the job is the same.
std::string JobBlock(int job) {
    return fmt::format(
        "{{\nid=3\nname=m\njobid={}\nprobe=p\nsw=7\nsuppress=1\n#1=a\n#1=b\n"
        "/$\nname=f\nformula=x:3\nunit=u\nofmask=-1\n$/\n}}\n",
        job);
}

std::string MonitorBlock(const std::string& source) {
    return fmt::format("{{\ntype=PMI_CMI\nname={}\nsw=1\n}}\n", source);
}

struct BlockCase {
    std::string text;
    unsigned int sc, cpt, monitors;  ///< use cases that are read
};

void ExpectBlocks(Host& host, const std::vector<BlockCase>& cases) {
    for (const BlockCase& each : cases) {
        const Subject subject(host);
        Read(subject.Sc(), each.text);
        Read(subject.Cpt(), each.text);
        Read(subject.Pmi(), each.text);
        Expect("the numbers of use cases in " + InWords(each.text),
               fmt::format("{} SC, {} CPT, {} PMI/CMI", subject.Sc().GetNumUsecases(), subject.Cpt().GetNumUsecases(),
                           subject.Pmi().GetNumUsecases()),
               fmt::format("{} SC, {} CPT, {} PMI/CMI", each.sc, each.cpt, each.monitors));
    }
}

const std::string kGood = "{\nid=1\n}\n";

const Question kUsecaseTable[] = {
    {"usecase.none-at-first", "the records of a fresh manager are empty, and are the same ones at every call",
     kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("the number of use cases",
                subject.Sc().GetNumUsecases() + subject.Cpt().GetNumUsecases() + subject.Pmi().GetNumUsecases(), 0U);
         Expect("whether there is a first SC one", subject.Sc().GetUsecase(0) != nullptr, false);
         Expect("whether there is a PMI one", subject.Pmi().GetUsecase(0) != nullptr, false);
         Expect("the text of the three", TextOf(subject.Sc()) + TextOf(subject.Cpt()) + TextOf(subject.Pmi()), "");
         Expect("whether it is the same record", &subject.Sc() == &subject.Sc(), true);
     }},
    {"usecase.scratch-defaults", "the scratch object of each kind has the defaults of its kind", kBlockRule,
     [](Host& host) {
         const Subject subject(host);
         subject.Sc().AddUsecase(subject.Sc().GetAUsecaseInfo());
         subject.Cpt().AddUsecase(subject.Cpt().GetAUsecaseInfo());
         subject.Pmi().AddUsecase(subject.Pmi().GetAUsecaseInfo());
         Expect("the SC block", TextOf(subject.Sc()), "{\nid=0\nname=\njobid=-1\nprobe=\nsw=0\nsuppress=0\n}\n");
         Expect("the CPT block", TextOf(subject.Cpt()),
                "{\ntype=CPT\nsid=0\nname=\njobid=-1\nprobe=\nsw=65535\ncr=0\ndf=1\nmode=1\ndo=254\n}\n");
         Expect("the PMI/CMI block", TextOf(subject.Pmi()), "{\ntype=PMI_CMI\nname=\nsw=65535\n}\n");
     }},
    {"usecase.scratch-is-reset", "the scratch object is one, and every call resets it", kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         UsecaseInfoIF* const scratch = subject.Sc().GetAUsecaseInfo();
         scratch->SetModuleName("old");
         scratch->AddFormula("f", "1", "u", 1);
         Expect("whether it is the same object", subject.Sc().GetAUsecaseInfo() == scratch, true);
         Expect("its name", std::string(scratch->GetModuleName()), "");
         Expect("its number of formulas", scratch->GetNumFormulars(), 0U);
     }},
    {"usecase.adding-copies", "a record keeps a copy, which later changes of the original don't reach", kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         UsecaseInfoIF* const scratch = subject.Sc().GetAUsecaseInfo();
         scratch->SetModuleName("first");
         subject.Sc().AddUsecase(scratch);
         scratch->SetModuleName("second");
         subject.Sc().AddUsecase(scratch);
         Expect("the name of the first", std::string(subject.Sc().GetUsecase(0)->GetModuleName()), "first");
         Expect("the name of the second", std::string(subject.Sc().GetUsecase(1)->GetModuleName()), "second");
         Expect("whether there is a third", subject.Sc().GetUsecase(2) != nullptr, false);
     }},
    {"usecase.sc-fields", "an SC use case keeps every field that is set", kBlockRule,
     [](Host& host) {
         const Subject subject(host);
         UsecaseInfoIF* const info = subject.Sc().GetAUsecaseInfo();
         info->SetModuleId(4294967295U);
         info->SetModuleName("m");
         info->SetProbeName("p");
         info->SetSampleWindow(9);
         info->SetJobNum(4);
         info->SetSuppress(true);
         subject.Sc().AddUsecase(info);
         Expect("its block", TextOf(subject.Sc()), "{\nid=-1\nname=m\njobid=4\nprobe=p\nsw=9\nsuppress=1\n}\n");
         const UsecaseInfoIF* const held = subject.Sc().GetUsecase(0);
         Expect("what it tells",
                fmt::format("{} {} {} {} {} {}", held->GetModuleId(), held->GetModuleName(), held->GetProbeName(),
                            held->GetSampleWindow(), held->GetJobNum(), held->GetSuppress()),
                "4294967295 m p 9 4 true");
     }},
    {"usecase.counters-and-formulas", "an SC use case keeps counters and formulas, in their order, equal ones too",
     kBlockRule,
     [](Host& host) {
         const Subject subject(host);
         UsecaseInfoIF* const info = subject.Sc().GetAUsecaseInfo();
         for (const char* text : {"a", "b"}) {
             const _CounterLineInfo counter{1, text};
             info->AddCounter(&counter);
         }
         info->AddFormula("f", "x:3", "u", 4294967295U);
         subject.Sc().AddUsecase(info);
         UsecaseInfoIF* const held = subject.Sc().GetUsecase(0);
         Expect("the number of counters", held->GetNumCounters(), 2U);
         Expect("the second counter", held->GetCounterInfo(1)->text, "b");
         Expect("whether there is a third", held->GetCounterInfo(2) != nullptr, false);
         Expect("the formula", held->GetFormula(0)->formula, "x:3");
         Expect("whether there is a second", held->GetFormula(1) != nullptr, false);
         ExpectPart("the block", TextOf(subject.Sc()),
                    "#1=a\n#1=b\n/$\nname=f\nformula=x:3\nunit=u\nofmask=-1\n$/\n}\n");
     }},
    {"usecase.tag-number", "reading computes a formula's tag number from what is behind its first colon", kBlockRule,
     [](Host& host) {
         for (const auto& [formula, tag] : {std::pair("X:12/Y", 12U),
                                            {"a:12345", 123U},
                                            {"12345", 123U},
                                            {"1:2:3", 2U},
                                            {"9:", 0U},
                                            {"a:-1", 4294967295U}}) {
             const Subject subject(host);
             Read(subject.Sc(), fmt::format("{{\n/$\nformula={}\n$/\n}}\n", formula));
             Expect(fmt::format("the tag number of {}", formula), subject.Sc().GetUsecase(0)->GetFormula(0)->tagNumber,
                    tag);
         }
     }},
    {"usecase.cpt-fields", "a CPT use case keeps every field that is set", kBlockRule,
     [](Host& host) {
         const Subject subject(host);
         CTUsecaseInfoIF* const info = subject.Cpt().GetAUsecaseInfo();
         info->SetModuleId(4);
         info->SetModuleName("t");
         info->SetProbeName("p");
         info->SetSampleWindow(9);
         info->SetJobNum(5);
         info->SetClockRate(4294967295U);
         info->SetDividFactor(2);
         info->SetModuleMode(3);
         subject.Cpt().AddUsecase(info);
         Expect("its block", TextOf(subject.Cpt()),
                "{\ntype=CPT\nsid=4\nname=t\njobid=5\nprobe=p\nsw=9\ncr=-1\ndf=2\nmode=3\ndo=254\n}\n");
     }},
    {"usecase.cpt-options", "each data option of a CPT use case is a bit of its own", kBlockRule,
     [](Host& host) {
         const Subject subject(host);
         CTUsecaseInfoIF* const info = subject.Cpt().GetAUsecaseInfo();
         Expect("option 0 at first", info->IsOptionEnabled(CT_DATA_OPTION_0), false);
         Expect("option 7 at first", info->IsOptionEnabled(CT_DATA_OPTION_7), true);
         info->SetDataOptions(CT_DATA_OPTION_0, true);
         info->SetDataOptions(CT_DATA_OPTION_7, false);
         info->SetDataOptions(CT_DATA_OPTION_LAST, true);
         Expect("option 31", info->IsOptionEnabled(CT_DATA_OPTION_LAST), true);
         subject.Cpt().AddUsecase(info);
         ExpectPart("the block", TextOf(subject.Cpt()), fmt::format("do={}\n", static_cast<std::int32_t>(0x8000007FU)));
     }},
    {"usecase.monitor-has-no-job", "a PMI/CMI use case has no module id, probe and job; setting one does nothing",
     kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         UsecaseInfoIFBase* const info = subject.Pmi().GetAUsecaseInfo();
         info->SetModuleId(1);
         info->SetProbeName("p");
         info->SetJobNum(2);
         info->SetModuleName("CMI0");
         info->SetSampleWindow(3);
         Expect("the module id", info->GetModuleId(), 4294967295U);
         Expect("whether there is a probe name", info->GetProbeName() != nullptr, false);
         Expect("the job", info->GetJobNum(), -1);
         subject.Pmi().AddUsecase(info);
         Expect("the block", TextOf(subject.Pmi()), "{\ntype=PMI_CMI\nname=CMI0\nsw=3\n}\n");
     }},
    {"usecase.monitor-by-source", "PMI/CMI use cases are found by their source, the first of each", kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         Read(subject.Pmi(), MonitorBlock("CMI1") + MonitorBlock("PMI") + MonitorBlock("PMI"));
         subject.Pmi().GetUsecase(0)->SetSampleWindow(2);
         Expect("the record when source 0 was changed", TextOf(subject.Pmi()),
                MonitorBlock("CMI1") + "{\ntype=PMI_CMI\nname=PMI\nsw=2\n}\n" + MonitorBlock("PMI"));
         Expect("whether there is one of source 1", subject.Pmi().GetUsecase(1) != nullptr, false);
         Expect("the name of source 2", std::string(subject.Pmi().GetUsecase(2)->GetModuleName()), "CMI1");
         Expect("whether there is one of source 3", subject.Pmi().GetUsecase(3) != nullptr, false);
     }},
    {"usecase.removing-a-job", "removing takes away every use case of that job, and leaves the others whole",
     kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         Read(subject.Sc(), JobBlock(5) + JobBlock(7) + JobBlock(5) + JobBlock(-1));
         subject.Sc().RemoveUsecase(9);
         Expect("the number without job 9", subject.Sc().GetNumUsecases(), 4U);
         subject.Sc().RemoveUsecase(5);
         Expect("the record without job 5", TextOf(subject.Sc()), JobBlock(7) + JobBlock(-1));
     }},
    {"usecase.removing-a-cpt-job", "so does removing from the CPT record", kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         Read(subject.Cpt(), "{\ntype=CPT\njobid=5\n}\n{\ntype=CPT\njobid=6\nprobe=p\n}\n{\ntype=CPT\njobid=5\n}\n");
         subject.Cpt().RemoveUsecase(5);
         Expect("how many stay", subject.Cpt().GetNumUsecases(), 1U);
         Expect("the probe of what stays", std::string(subject.Cpt().GetUsecase(0)->GetProbeName()), "p");
     }},
    {"usecase.removing-a-source", "removing takes PMI/CMI use cases by source; another number empties the record",
     kUsecaseRule,
     [](Host& host) {
         for (const auto& [selector, left] : {std::pair(0, 1U), {1, 3U}, {2, 2U}, {3, 0U}, {-1, 0U}}) {
             const Subject subject(host);
             Read(subject.Pmi(), MonitorBlock("CMI1") + MonitorBlock("PMI") + MonitorBlock("PMI"));
             subject.Pmi().RemoveUsecase(selector);
             Expect(fmt::format("how many stay without source {}", selector), subject.Pmi().GetNumUsecases(), left);
         }
     }},
    {"usecase.cleaning-up", "cleaning up takes all, or those without a job", kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         Read(subject.Sc(), JobBlock(7) + JobBlock(-1) + JobBlock(0) + JobBlock(-9));
         subject.Sc().CleaupUsecases(true);
         Expect("the record with jobs", TextOf(subject.Sc()), JobBlock(7) + JobBlock(0));
         subject.Sc().CleaupUsecases(false);
         Expect("the number afterwards", subject.Sc().GetNumUsecases(), 0U);
         Read(subject.Pmi(), MonitorBlock("PMI"));
         subject.Pmi().CleaupUsecases(true);
         Expect("the number of PMI/CMI use cases, which have no job", subject.Pmi().GetNumUsecases(), 0U);
     }},
    {"usecase.added-from-itself", "a use case of a record can be added to that record", kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         Read(subject.Sc(), JobBlock(5));
         for (int i = 0; i < 10; ++i) {
             subject.Sc().AddUsecase(subject.Sc().GetUsecase(0));
         }
         Expect("the last of them", TextOf(subject.Sc()).substr(10 * JobBlock(5).size()), JobBlock(5));
     }},
    {"usecase.reading-appends", "RetrieveAllRecords appends what it reads, SaveAllRecords appends to the text",
     kUsecaseRule,
     [](Host& host) {
         const Subject subject(host);
         Read(subject.Sc(), JobBlock(1));
         Read(subject.Sc(), JobBlock(2));
         std::string text = "kept:";
         Expect("the result of SaveAllRecords", subject.Sc().SaveAllRecords(text), 0);
         Expect("the text", text, "kept:" + JobBlock(1) + JobBlock(2));
     }},
    {"usecase.mixed-kinds", "each record reads its own blocks among those of others", kBlockRule,
     [](Host& host) {
         ExpectBlocks(host, {{kUsecaseBlocks, 2, 1, 1},
                             {kGood + "{\ntype=CPT\n}\n{\ntype=PMI_CMI\n}\n{\ntype=SC\n}\n", 2, 1, 1}});
     }},
    {"usecase.any-order-of-fields", "fields come in any order, unknown ones are ignored, the last of a key counts",
     kBlockRule,
     [](Host& host) {
         const Subject subject(host);
         Read(subject.Sc(), "{\nsuppress=7\ncolour=3\nname=first\njobid=2\nname=a=b \nname = x\n}\n");
         Expect("the block", TextOf(subject.Sc()), "{\nid=0\nname=a=b\njobid=2\nprobe=\nsw=0\nsuppress=1\n}\n");
     }},
    {"usecase.empty-block", "a block with nothing in it is a use case of each kind", kBadBlockRule,
     [](Host& host) {
         ExpectBlocks(host, {{"{\n}\n", 1, 1, 1}});
     }},
    {"usecase.bad-block", "a block that is bad is dropped, and ends the reading", kBadBlockRule,
     [](Host& host) {
         ExpectBlocks(host, {{kGood + "{\nid=2\n", 1, 0, 0},
                             {kGood + "{\nid\n}\n" + kGood, 1, 0, 0},
                             {"{\nid=1\n\n}\n" + kGood, 0, 0, 0}});
     }},
    {"usecase.blank-lines", "a blank line behind a block ends the reading, and so do two", kBadBlockRule,
     [](Host& host) {
         ExpectBlocks(host,
                      {{kGood + "\n" + kGood, 1, 0, 0}, {"a\n\n" + kGood, 1, 0, 0}, {"a\n\n\n" + kGood, 0, 0, 0}});
     }},
    {"usecase.rubbish-between", "lines between blocks are passed over", kBadBlockRule,
     [](Host& host) {
         ExpectBlocks(host, {{"a\n}\n=\n" + kGood + "$/\n" + kGood, 2, 0, 0}});
     }},
    {"usecase.open-formula", "a formula that is not closed runs on, and takes the block with it", kBadBlockRule,
     [](Host& host) {
         ExpectBlocks(host, {{"{\n/$\nname=f\n}\n" + kGood, 0, 0, 0},
                             {kGood + "{\n/$\n}\n" + kGood, 1, 0, 0},
                             {"{\n/$\n=\n}\n" + kGood + "$/\n}\n", 1, 0, 0}});
     }},
    {"usecase.longest-line", "a record reads lines of 255 characters, and drops a block with a longer one",
     kBlockLimitRule,
     [](Host& host) {
         const std::string name = "name=" + std::string(250, 'x');
         ExpectBlocks(host, {{"{\n" + name + "\n}\n", 1, 0, 0}, {"{\n" + name + "x\n}\n" + kGood, 0, 0, 0}});
     }},
    {"usecase.long-name", "a longer name is cut when it is written, and the block stays whole", kBlockLimitRule,
     [](Host& host) {
         const Subject subject(host);
         UsecaseInfoIF* const info = subject.Sc().GetAUsecaseInfo();
         info->SetModuleName(std::string(5000, 'x').c_str());
         subject.Sc().AddUsecase(info);
         ExpectPart("the block", TextOf(subject.Sc()), "\nname=" + std::string(121, 'x') + "\njobid=-1\n");
         Expect("the name itself", std::string(subject.Sc().GetUsecase(0)->GetModuleName()).size(), std::size_t{5000});
     }},
    {"usecase.line-breaks-in-names", "a name can't break out of its line", kBlockLimitRule,
     [](Host& host) {
         const Subject subject(host);
         UsecaseInfoIF* const info = subject.Sc().GetAUsecaseInfo();
         info->SetModuleName("a\n}\n{\ntype=CPT");
         subject.Sc().AddUsecase(info);
         const Subject another(host, "another");
         another.LoadText(subject.Text());
         Expect("the number of CPT use cases", another.Cpt().GetNumUsecases(), 0U);
         Expect("the name", std::string(another.Sc().GetUsecase(0)->GetModuleName()), "a } { type=CPT");
     }},
    {"usecase.many", "a thousand use cases come back from a capture, in their order", kLayoutRule,
     [](Host& host) {
         std::string blocks;
         for (int i = 0; i < 1000; ++i) {
             blocks += JobBlock(i);
         }
         const Subject subject(host);
         Read(subject.Sc(), blocks);
         const Subject another(host, "another");
         Expect("loading them", another.LoadText(subject.Text()), true);
         Expect("what came back", TextOf(another.Sc()), blocks);
     }},
};

}  // namespace

std::span<const Question> UsecaseQuestions() { return kUsecaseTable; }

}  // namespace stmdcm::validate
