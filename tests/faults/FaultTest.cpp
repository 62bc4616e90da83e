#include "tests/faults/FaultTest.h"

#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

#include "tests/faults/DiskRecording.h"
#include "tests/support/SectionList.h"
#include "trace/format/StmSections.h"

namespace stmdcm_test {

namespace {

constexpr char kDoesNotLoad[] = "does not load";

}  // namespace

std::string BareCapture() {
    return "TDF2" + stmdcm::MakeSection("TRACE0", 1, "trace") +
           stmdcm::MakeSection(Zu::Wep::Trace::kDeviceSectionName, 1, "STM_ATB_Id=7\n");
}

bool IsSoak() {
    const char* soak = std::getenv("STMDCM_SOAK");
    return soak != nullptr && *soak != '\0';
}

void FaultTest::Prepare(std::vector<std::string> command, Snapshot files, std::string changed) {
    m_command = std::move(command);
    m_before = std::move(files);
    m_changed = std::move(changed);
    m_whole = RunAnew({});
    m_after = m_machine.Files();
    if (!m_changed.empty()) {
        m_newMeaning = Meaning(m_changed, m_after[m_changed]);
        m_machine.Reset(m_before);
        m_oldMeaning = Meaning(m_changed, m_before[m_changed]);
        ASSERT_NE(m_oldMeaning, m_newMeaning) << m_whole.out << m_whole.error;
    }
}

FaultResult FaultTest::RunAnew(const FaultPlan& plan) const {
    m_machine.Reset(m_before);
    return m_machine.Run(m_command, plan);
}

/// What a user reads in a file, or why not.
std::string FaultTest::Meaning(const std::string& name, const std::string& bytes) {
    const auto known = m_meanings.find(bytes);
    if (known != m_meanings.end()) {
        return known->second;
    }
    const FaultResult shown = m_machine.Run({STMDCM_TOOL, "show", name, "--json"});
    const bool isLoaded = shown.out.find("\"loaded\": true") != std::string::npos;
    return m_meanings[bytes] = isLoaded ? std::to_string(shown.status) + shown.out : kDoesNotLoad;
}

bool FaultTest::IsChanged() { return Meaning(m_changed, m_machine.Files()[m_changed]) == m_newMeaning; }

std::string FaultTest::WhatIsWrongWith(const std::string& name, const std::string& bytes) {
    if (Holds(m_before, name, bytes) || Holds(m_after, name, bytes)) {
        return "";
    }
    if (name != m_changed) {
        return name + " is neither as before nor as after";
    }
    const bool isKnown = m_meanings.contains(bytes);
    const std::string meaning = Meaning(name, bytes);
    if (meaning != m_oldMeaning && meaning != m_newMeaning) {
        return name + " reads neither as before nor as after: " + meaning.substr(0, 400);
    }
    const std::string stopped = isKnown ? "" : WhatStopsWorkOn(name);
    return stopped.empty() ? "" : name + ": " + stopped;
}

std::string FaultTest::WhatStopsWorkOn(const std::string& name) {
    if (Meaning(name, m_machine.Files()[name]) == kDoesNotLoad) {
        m_machine.Run(m_command);
    }
    const FaultResult first = m_machine.Run({STMDCM_TOOL, "set", name, "STM_ATB_Id=77"});
    const FaultResult second = m_machine.Run({STMDCM_TOOL, "set", name, "STM_ATB_Id=78"});
    return second.out.find("77  ->  78") != std::string::npos ? "" : first.error + second.error;
}

/// A run that was killed, or whose every call fails, can't clean up.
std::string FaultTest::WhatIsWrongWithFiles(bool mayClean) {
    const Snapshot files = m_machine.Files(), left = m_machine.Left();
    if (m_isTidy && mayClean && !left.empty()) {
        return "left behind: " + left.begin()->first;
    }
    for (const auto& [name, bytes] : files) {
        const bool isTemporary = name.find(".stmdcm-") != name.npos;
        const std::string wrong = isTemporary && !mayClean ? "" : WhatIsWrongWith(name, bytes);
        if (!wrong.empty()) {
            return wrong;
        }
    }
    for (const auto& [name, bytes] : m_before) {
        if (!files.contains(name)) {
            return name + " is gone";
        }
    }
    return "";
}

void FaultTest::Try(FaultPlan plan, unsigned step, unsigned all) {
    plan.n = ~0U;
    const unsigned calls = RunAnew(plan).calls;
    for (plan.n = all > 0 ? 1 : 1 + step / 2; plan.n <= calls; plan.n += plan.n < all ? 1 : step) {
        const FaultResult result = RunAnew(plan);
        const bool isWhole = result == m_whole && m_machine.Files() == m_after;
        std::string wrong = isWhole ? "" : Judge(result, plan);
        if (wrong.empty() && !m_mayChangeFiles) {
            wrong = WhatIsWrongWithFiles(plan.mode != "kill" && !plan.onwards);
        }
        if (!wrong.empty() && m_told.insert(wrong + result.hit.substr(0, result.hit.find(' '))).second) {
            ADD_FAILURE() << wrong << "\n  " << plan.mode << " " << plan.n << " of " << calls << ": "
                          << std::strerror(plan.error) << (plan.onwards ? " onwards" : "") << " at " << result.hit
                          << "\n  ended " << result.status << ", printed: " << result.out.substr(0, 400)
                          << "\n  said: " << result.error;
        }
    }
}

void FaultTest::LosePower() {
    std::mt19937 random(1);
    const unsigned subsets = IsSoak() ? 20'000 : 200;
    const std::string capture = m_changed.empty() ? "" : m_before[m_changed];
    if (!capture.starts_with(Zu::Wep::Trace::kTDFIdentifier)) {
        return LosePowerDuring(subsets, random);
    }
    constexpr unsigned kPlaces = 16;  // of the file's end, at and around a sector's
    const std::size_t header = stmdcm::MakeSection("PAD", 1, "").size();
    const unsigned step = FaultStep(3);
    for (unsigned place = 0; place < kPlaces && !HasFatalFailure(); place += step) {
        const std::size_t padding = 1024 - 14 + place - (capture.size() + header) % 512;
        m_before[m_changed] = capture;
        m_before[m_changed].insert(Zu::Wep::Trace::kFirstSectionOffset,
                                   stmdcm::MakeSection("PAD", 1, std::string(padding, 'p')));
        Prepare(m_command, m_before, m_changed);
        LosePowerDuring(subsets * step / kPlaces, random);
    }
}

void FaultTest::LosePowerDuring(unsigned subsets, std::mt19937& random) {
    const DiskRecording disk(m_machine, m_before, m_command);
    std::set<std::size_t> tried;
    const auto lose = [&](std::size_t changes, unsigned lucky) {
        const Snapshot files = disk.After(changes, lucky, random);
        std::size_t hash = 0;
        for (const auto& [name, bytes] : files) {
            hash = hash * 31 + std::hash<std::string>()(name) + std::hash<std::string>()(bytes);
        }
        if (tried.insert(hash).second) {
            m_machine.Reset(files);
            const std::string wrong = WhatIsWrongWithFiles(false);
            EXPECT_TRUE(wrong.empty()) << wrong << "\n  after " << changes << " of " << disk.Changes() << " changes";
        }
    };
    for (std::size_t changes = 0; changes <= disk.Changes(); ++changes) {
        lose(changes, 0);
        lose(changes, 100);
    }
    for (unsigned subset = 0; subset < subsets; ++subset) {
        lose(random() % (disk.Changes() + 1), 50);
    }
    m_machine.Reset(disk.After(disk.Changes(), 0, random));
    EXPECT_TRUE(m_machine.Files() == m_after || IsChanged()) << "what was told to be done is lost";
}

}  // namespace stmdcm_test
