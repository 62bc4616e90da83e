#pragma once

#include <vector>

#include "stmdcm/explain/Explanation.h"
#include "stmdcm/explain/StatingSections.h"

namespace Zu::Wep::Trace {
struct StmProperty;
}

namespace stmdcm {

// What is stated about the things of each kind that go by a name; see Explain.

Explanation ExplainProperty(const StatingFile& file, const Zu::Wep::Trace::StmProperty& row);
std::vector<Explanation> ExplainUsecases(const StatingFile& file, const std::string& name);
std::vector<Explanation> ExplainImages(const StatingFile& file, const std::string& name);

}  // namespace stmdcm
