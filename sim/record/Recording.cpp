#include "sim/record/Recording.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "host/vorn/vornError.h"
#include "sim/StdioFile.h"
#include "source_utilities/ErrnoText.h"
#include "stmdcm/reading/Escaped.h"

namespace stmdcm_sim {

namespace {

using Json = Steps::Json;

/// The calls behind the last one answer as that did.
template <class Value>
std::vector<Value> WithoutRepeatedEnd(std::vector<Value> values) {
    while (values.size() > 1 && values.back() == values[values.size() - 2]) {
        values.pop_back();
    }
    return values;
}

void AddUnlessNull(Json& object, const char* key, const Json& value) {
    if (!value.is_null()) {
        object[key] = value;
    }
}

Json ScenarioOf(const RecordedCpu& cpu) {
    Json object = {{"name", cpu.name}};
    const std::vector<std::string> paths = WithoutRepeatedEnd(cpu.objectFiles);
    if (!paths.empty()) {
        object["object_file"] = paths.size() == 1 ? Json(paths[0]) : Json(paths);
    }
    AddUnlessNull(object, "object_file_fails", cpu.objectFileFailures.Failures());
    AddUnlessNull(object, "driver_fails", cpu.driverFailures.Failures());
    for (const auto& [name, answers] : cpu.attributes) {
        object["attributes"][name] = answers.Answers();
    }
    return object;
}

/// Where a text can't stand in a scenario as it is.
bool HasOddText(const Json& value) {
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        return text.find('\0') != std::string::npos || !stmdcm::IsUtf8(text);
    }
    if (!value.is_object() && !value.is_array()) {
        return false;
    }
    return std::any_of(value.begin(), value.end(), HasOddText);
}

/// Up to the first zero byte.
void CutTexts(Json& value) {
    if (value.is_string()) {
        auto& text = value.get_ref<std::string&>();
        text.erase(std::min(text.find('\0'), text.size()));
    } else if (value.is_object() || value.is_array()) {
        std::for_each(value.begin(), value.end(), CutTexts);
    }
}

Json StepOf(const char* with, const char* message) {
    Json step = {{"with", with}};
    if (message != nullptr) {
        step["message"] = message;
    }
    return step;
}

}  // namespace

Steps& RecordedCpu::Attribute(const std::string& attribute) {
    const auto found =
        std::find_if(attributes.begin(), attributes.end(), [&](const auto& one) { return one.first == attribute; });
    return found != attributes.end() ? found->second : attributes.emplace_back(attribute, Steps()).second;
}

RecordedCpu& Recording::Cpu(const std::string& name) {
    const auto found = std::find_if(m_cpus.begin(), m_cpus.end(), [&](const auto& cpu) { return cpu.name == name; });
    if (found != m_cpus.end()) {
        return *found;
    }
    m_cpus.emplace_back();
    m_cpus.back().name = name;
    return m_cpus.back();
}

void Recording::AddList(const std::vector<std::string>& names) {
    std::for_each(names.begin(), names.end(), [this](const std::string& name) { Cpu(name); });
    m_lists.push_back(names);
}

/// In the order of the first list; those that are in none behind them.
std::vector<const RecordedCpu*> Recording::ListedFirst() const {
    std::vector<const RecordedCpu*> cpus;
    const auto add = [&cpus](const RecordedCpu& cpu) {
        if (std::find(cpus.begin(), cpus.end(), &cpu) == cpus.end()) {
            cpus.push_back(&cpu);
        }
    };
    for (const std::string& name : m_lists.empty() ? std::vector<std::string>() : m_lists[0]) {
        add(*std::find_if(m_cpus.begin(), m_cpus.end(), [&](const RecordedCpu& cpu) { return cpu.name == name; }));
    }
    std::for_each(m_cpus.begin(), m_cpus.end(), add);
    return cpus;
}

Json Recording::Scenario() const {
    Json scenario;
    if (!factoryFailures.Failures().is_array()) {  // what a scenario says of it is for every call
        AddUnlessNull(scenario, "factory_fails", factoryFailures.Failures());
    }
    AddUnlessNull(scenario, "server_fails", serverFailures.Failures());
    AddUnlessNull(scenario, "server_end_fails", serverEndFailures.Failures());
    AddUnlessNull(scenario, "list_fails", listFailures.Failures());
    const std::vector<const RecordedCpu*> cpus = ListedFirst();
    const std::vector<std::vector<std::string>> lists = WithoutRepeatedEnd(m_lists);
    const bool areAllListed =
        lists.size() == 1 && std::equal(cpus.begin(), cpus.end(), lists[0].begin(), lists[0].end(),
                                        [](const RecordedCpu* cpu, const auto& name) { return cpu->name == name; });
    if (!lists.empty() && !areAllListed) {
        scenario["lists"] = lists;
    }
    std::set<std::string> remarks = m_remarks;
    scenario["cpus"] = Json::array();
    for (const RecordedCpu* cpu : cpus) {
        if (cpu->name.empty()) {
            remarks.insert("a CPU without a name is left out");
        } else {
            scenario["cpus"].push_back(ScenarioOf(*cpu));
        }
    }
    if (HasOddText(scenario)) {
        remarks.insert("a text that is no UTF-8, or holds a zero byte, is not as the target gave it");
        CutTexts(scenario);
    }
    if (!remarks.empty()) {
        scenario["remarks"] = remarks;
    }
    return scenario;
}

void Recording::Write(const std::string& path) const {
    const std::string text = Scenario().dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    const StdioFile file = OpenStdioFile(path, "w");
    if (file == nullptr || std::fputs(text.c_str(), file.get()) < 0 || std::fflush(file.get()) != 0) {
        std::fprintf(stderr, "libTraceFactory: %s: %s\n", stmdcm::Escaped(path).c_str(),
                     ZU_WEP::ErrnoText(errno).c_str());
    }
}

Json StepOfException() {
    try {
        throw;
    } catch (const Zu::Wep::Vorn::vornErrorIF& error) {
        return StepOf("vornError", error.what());
    } catch (const std::exception& error) {
        return StepOf("std", error.what());
    } catch (...) {
        return StepOf("int", nullptr);
    }
}

Json StepOfSuccess() { return StepOf("none", nullptr); }

Json StepOfNothing() { return StepOf("nothing", nullptr); }

}  // namespace stmdcm_sim
