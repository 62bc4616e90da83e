#include "tests/faults/FaultTest.h"

#include <cstdlib>
#include <cstring>
#include <utility>

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

unsigned FaultStep(unsigned usual) {
    const char* soak = std::getenv("STMDCM_SOAK");
    return soak != nullptr && *soak != '\0' ? 1 : usual;
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
    const auto before = m_before.find(name), after = m_after.find(name);
    if ((before != m_before.end() && before->second == bytes) || (after != m_after.end() && after->second == bytes)) {
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
    return isKnown || meaning == kDoesNotLoad || CanBeChanged(name) ? "" : name + " can't be changed any more";
}

/// Whether the next changes are done and found.
bool FaultTest::CanBeChanged(const std::string& name) const {
    m_machine.Run({STMDCM_TOOL, "set", name, "STM_ATB_Id=77"});
    return m_machine.Run({STMDCM_TOOL, "set", name, "STM_ATB_Id=78"}).out.find("77  ->  78") != std::string::npos;
}

/// A run that was killed, or whose every call fails, can't clean up.
std::string FaultTest::WhatIsWrongWithFiles(bool mayClean) {
    const Snapshot files = m_machine.Files(), left = m_machine.Left();
    if (m_isTidy && mayClean && !left.empty()) {
        return "left behind: " + left.begin()->first;
    }
    for (const auto& [name, bytes] : files) {
        const bool isTemporary = name.ends_with(".tmp");
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

void FaultTest::Try(FaultPlan plan, unsigned step) {
    FaultPlan counting = plan;
    counting.mode = plan.mode == "alloc" ? "alloc" : "count";
    counting.n = ~0U;
    const unsigned calls = RunAnew(counting).calls;
    for (plan.n = 1 + step / 2; plan.n <= calls; plan.n += step) {
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

}  // namespace stmdcm_test
