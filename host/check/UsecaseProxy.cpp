#include "host/check/UsecaseProxy.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>

#include "host/check/Kept.h"

namespace stmdcm_check {

using namespace Zu::Wep::Trace;

namespace {

struct KnownUsecases {
    std::mutex lock;
    std::map<const void*, KnownUsecase*> all;
    std::vector<const ScUsecaseProxy*> sc;
};

/// As long as the outputs, see Output.cpp. Addresses are of kept objects, so none comes twice.
KnownUsecases& Usecases() {
    static auto* const known = MakeKept<KnownUsecases>();
    return *known;
}

}  // namespace

KnownUsecase* KnownUsecase::Find(const void* address) {
    const std::lock_guard lock(Usecases().lock);
    const auto found = Usecases().all.find(address);
    return found != Usecases().all.end() ? found->second : nullptr;
}

void KnownUsecase::Register(const void* address) {
    const std::lock_guard lock(Usecases().lock);
    Usecases().all[address] = this;
}

ScUsecaseProxy::ScUsecaseProxy(UsecaseLife usecase, UsecaseInfoIF* real) : UsecaseProxy(std::move(usecase), real) {
    const std::lock_guard lock(Usecases().lock);
    Usecases().sc.push_back(this);
}

bool ScUsecaseProxy::IsOver(const _CounterLineInfo* counter) {
    const std::lock_guard lock(Usecases().lock);
    return std::any_of(Usecases().sc.begin(), Usecases().sc.end(),
                       [counter](const ScUsecaseProxy* usecase) { return usecase->m_counters.IsOver(counter); });
}

void ScUsecaseProxy::SetSuppress(bool suppress) {
    Do("SetSuppress", JsonObject().Add("suppress", suppress), [&] { Real()->SetSuppress(suppress); });
}

bool ScUsecaseProxy::GetSuppress() const {
    return Do("GetSuppress", {}, [&] { return Real()->GetSuppress(); });
}

void ScUsecaseProxy::AddCounter(const _CounterLineInfo* counter) {
    JsonObject arguments;
    if (counter == nullptr) {
        arguments.AddJson("counter", "null");
    } else {
        arguments.Add("number", counter->number).Add("text", counter->text);
    }
    const std::string objection = counter == nullptr ? "the counter is null, which it must not be"
                                  : IsOver(counter)  ? "the counter has ended, since its use case was changed"
                                                     : "";
    const auto work = [&] {
        Settle();
        const bool isNull = counter == nullptr;
        const _CounterLineInfo copy = isNull ? _CounterLineInfo() : *counter;  // may be one of those that end here
        m_counters.End();
        Real()->AddCounter(isNull ? nullptr : &copy);
    };
    Do("AddCounter", arguments, work, objection);
}

void ScUsecaseProxy::AddFormula(const char* name, const char* formula, const char* unit, unsigned int ofmask) {
    const JsonObject arguments =
        JsonObject().Add("name", name).Add("formula", formula).Add("unit", unit).Add("ofmask", ofmask);
    const auto work = [&] {
        Settle();
        Real()->AddFormula(name, formula, unit, ofmask);
        m_formulas.End();
    };
    Do("AddFormula", arguments, work, NullText({name, formula, unit}));
}

unsigned int ScUsecaseProxy::GetNumCounters() const {
    return Do("GetNumCounters", {}, [&] { return Real()->GetNumCounters(); });
}

unsigned int ScUsecaseProxy::GetNumFormulars() const {
    return Do("GetNumFormulars", {}, [&] { return Real()->GetNumFormulars(); });
}

_CounterLineInfo* ScUsecaseProxy::GetCounterInfo(unsigned int index) {
    return Do("GetCounterInfo", JsonObject().Add("index", index),
              [&] { return m_counters.Lend(Real()->GetCounterInfo(index)); });
}

FormulaInfo* ScUsecaseProxy::GetFormula(unsigned int index) {
    return Do("GetFormula", JsonObject().Add("index", index),
              [&] { return m_formulas.Lend(Real()->GetFormula(index)); });
}

void ScUsecaseProxy::Settle() {
    m_counters.Settle();
    m_formulas.Settle();
}

void ScUsecaseProxy::EndLoans() {
    m_counters.End();
    m_formulas.End();
}

void ScUsecaseProxy::TellWrittenTooLate(const std::string& when) {
    const std::lock_guard lock(Usecases().lock);
    for (const ScUsecaseProxy* usecase : Usecases().sc) {
        if (usecase->m_counters.IsWrittenTooLate() || usecase->m_formulas.IsWrittenTooLate()) {
            Tell(when + ": a counter or formula of " + usecase->life.Name() + " was written after its end");
        }
    }
}

void CptUsecaseProxy::SetDataOptions(eCTDataOption option, bool enable) {
    const JsonObject arguments = JsonObject().Add("option", std::uint32_t{option}).Add("enable", enable);
    Do("SetDataOptions", arguments, [&] { Real()->SetDataOptions(option, enable); });
}

bool CptUsecaseProxy::IsOptionEnabled(eCTDataOption option) const {
    return Do("IsOptionEnabled", JsonObject().Add("option", std::uint32_t{option}),
              [&] { return Real()->IsOptionEnabled(option); });
}

void CptUsecaseProxy::SetClockRate(unsigned int rate) {
    Do("SetClockRate", JsonObject().Add("rate", rate), [&] { Real()->SetClockRate(rate); });
}

unsigned int CptUsecaseProxy::GetClockRate() const {
    return Do("GetClockRate", {}, [&] { return Real()->GetClockRate(); });
}

void CptUsecaseProxy::SetDividFactor(unsigned int factor) {
    Do("SetDividFactor", JsonObject().Add("factor", factor), [&] { Real()->SetDividFactor(factor); });
}

unsigned int CptUsecaseProxy::GetDividFactor() const {
    return Do("GetDividFactor", {}, [&] { return Real()->GetDividFactor(); });
}

void CptUsecaseProxy::SetModuleMode(unsigned int mode) {
    Do("SetModuleMode", JsonObject().Add("mode", mode), [&] { Real()->SetModuleMode(mode); });
}

unsigned int CptUsecaseProxy::GetModuleMode() const {
    return Do("GetModuleMode", {}, [&] { return Real()->GetModuleMode(); });
}

}  // namespace stmdcm_check
