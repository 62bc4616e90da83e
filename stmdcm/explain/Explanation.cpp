#include "stmdcm/explain/Explanation.h"

#include <fmt/format.h>

#include <iterator>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/explain/Statements.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

const char* StandingName(Standing standing) {
    constexpr const char* kNames[] = {"in force", "overridden", "not in force", "not read", "beside"};
    return kNames[static_cast<std::size_t>(standing)];
}

Explained Explain(const std::string& path, const std::string& name) {
    StatingFile file(path);
    std::vector<Explanation> found;
    if (const auto* row = Zu::Wep::Trace::FindStmProperty(name)) {
        found.push_back(ExplainProperty(file, *row));
    }
    for (auto explain : {ExplainUsecases, ExplainImages}) {
        std::vector<Explanation> more = explain(file, name);
        std::move(more.begin(), more.end(), std::back_inserter(found));
    }
    return {std::move(file.reading), std::move(found)};
}

void Explained::RequireAny(const std::string& name) const {
    if (items.empty()) {
        throw Failure(reading.path,
                      fmt::format("there is no property, use case or program image {}; stmdcm show tells what "
                                  "there is, and its use cases go by the name of the module",
                                  Quoted(name)));
    }
}

}  // namespace stmdcm
