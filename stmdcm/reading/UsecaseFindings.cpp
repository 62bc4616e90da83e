#include "stmdcm/reading/UsecaseFindings.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "stmdcm/reading/ConfigurationReader.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kBothRemoved[] = "both are kept, and removing a job removes both";
constexpr char kFirstGiven[] = "both are kept, and asked for its source a reader gives the first";

class UsecaseCheck {
  public:
    UsecaseCheck(const BlockFindings& read, const Place& place, Findings& findings)
        : m_read(read), m_place(place), m_findings(findings) {}

    /// `keyWord` says what a key is.
    template <class Item>
    void TellTwins(UsecaseKind kind, const std::vector<Item>& items, const char* keyWord, const char* effect) {
        const auto isLess = [&](std::size_t left, std::size_t right) { return items[left] < items[right]; };
        std::set<std::size_t, decltype(isLess)> different(isLess);
        std::map<std::string, std::size_t> first;
        for (std::size_t i = 0; i < items.size(); ++i) {
            const auto [same, isNewItem] = different.insert(i);
            const auto [known, isNewKey] = first.emplace(items[i].Key(), i);
            if (!isNewKey) {
                Add(isNewItem ? Kind("U-DUPLICATE") : Kind("U-IDENTICAL"), kind, i,
                    fmt::format("{} {} use case of {}{} stands on line {} already", isNewItem ? "a" : "the same",
                                NamesOf(kind).name, keyWord, *keyWord == '\0' ? known->first : Quoted(known->first),
                                LineOf(kind, isNewItem ? known->second : *same)),
                    effect);
            }
        }
    }

    void TellUncounted(const std::vector<ScUsecase>& usecases) {
        for (std::size_t i = 0; i < usecases.size(); ++i) {
            if (usecases[i].counters.empty()) {
                Add(Kind("U-NO-COUNTER"), UsecaseKind::Sc, i,
                    fmt::format("the SC use case of {} has no counter", usecases[i].Key()),
                    "it is kept, and counts nothing");
            }
        }
    }

    void TellSources(const std::vector<PmiUsecase>& usecases) {
        for (std::size_t i = 0; i < usecases.size(); ++i) {
            if (std::find(kSourceNames.begin(), kSourceNames.end(), usecases[i].source) == kSourceNames.end()) {
                Add(Kind("U-SOURCE"), UsecaseKind::Pmi, i,
                    fmt::format("{} is no PMI/CMI source", Quoted(usecases[i].source)),
                    "kept, but no host can ask for it");
            }
        }
    }

  private:
    std::size_t LineOf(UsecaseKind kind, std::size_t index) const { return m_read.Of(kind).openers[index]; }

    void Add(const FindingKind& id, UsecaseKind kind, std::size_t index, std::string what, const char* effect) {
        m_findings.Add(id, m_place.AtLine(LineOf(kind, index)), std::move(what), effect);
    }

    const BlockFindings& m_read;
    const Place& m_place;
    Findings& m_findings;
};

}  // namespace

void TellUsecases(const Configuration& configuration, const BlockFindings& read, const Place& place,
                  Findings& findings) {
    UsecaseCheck check(read, place, findings);
    check.TellTwins(UsecaseKind::Sc, configuration.sc, "", kBothRemoved);
    check.TellTwins(UsecaseKind::Cpt, configuration.cpt, "", kBothRemoved);
    check.TellTwins(UsecaseKind::Pmi, configuration.pmi, "source ", kFirstGiven);
    check.TellUncounted(configuration.sc);
    check.TellSources(configuration.pmi);
}

}  // namespace stmdcm
