#include "sim/ScenarioReader.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <set>

#include "host/CChannelDriver.h"
#include "host/vorn/vornError.h"
#include "sim/JsonNode.h"
#include "sim/ScenarioPlace.h"
#include "sim/StdioFile.h"
#include "source_utilities/ErrnoText.h"

namespace stmdcm_sim {

namespace {

using Zu::Wep::Trace::ChannelAttribute;
using Zu::Wep::Vorn::vornError;

constexpr std::int64_t kLongestDelay = 60'000;
constexpr std::int64_t kMostFailures = 1'000'000;

[[noreturn]] void RefuseFile(const std::string& path) {
    throw vornError(path + ": " + ZU_WEP::ErrnoText(errno), vornError::Severity_Error);
}

/// What is a pipe would be waited for, and a device read for ever.
void RequireFile(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) {
        throw vornError(path + ": this is not a regular file", vornError::Severity_Error);
    }
}

std::string ReadFile(const std::string& path) {
    RequireFile(path);
    const StdioFile file = OpenStdioFile(path, "r");
    if (file == nullptr) {
        RefuseFile(path);
    }
    std::string text;
    std::array<char, 4096> block{};
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
        text.append(block.data(), count);
    }
    if (std::ferror(file.get()) != 0) {
        RefuseFile(path);
    }
    return text;
}

/// How many calls an element of an array is for: of the last one, all that come.
std::int64_t TimesOf(const ScenarioPlace& element, bool isLast) {
    const std::optional<ScenarioPlace> times = element.Find("times");
    return times ? times->Integer(1, kMostFailures) : isLast ? Failure::kAlways : 1;
}

/// One step of a failure.
Failure::Step ReadStep(const ScenarioPlace& place, bool isLast) {
    constexpr std::array kinds = {Failure::Kind::VornError, Failure::Kind::StdException, Failure::Kind::Integer,
                                  Failure::Kind::Nothing, Failure::Kind::None};
    const std::size_t kind = place.Need("with").Choice({"vornError", "std", "int", "nothing", "none"},
                                                       R"(has to be "vornError", "std", "int", "nothing" or "none")");
    const std::optional<ScenarioPlace> message = place.Find("message");
    return {kinds.at(kind), TimesOf(place, isLast), message ? std::optional(message->Text()) : std::nullopt};
}

/// What `place` holds under `key`, if anything. `counted`: the failure may end after a number of calls.
Failure ReadFailure(const ScenarioPlace& place, std::string_view key, bool counted = true) {
    const std::optional<ScenarioPlace> failure = place.Find(key);
    if (!failure) {
        return {};
    }
    Failure read;
    if (!counted) {
        failure->AllowOnly({"with", "message"});
        read.Add(ReadStep(*failure, true));
        return read;
    }
    const std::vector<ScenarioPlace> steps = failure->IsArray() ? failure->Elements() : std::vector{*failure};
    for (const ScenarioPlace& step : steps) {
        step.AllowOnly({"with", "message", "times"});
        read.Add(ReadStep(step, &step == &steps.back()));
    }
    return read;
}

std::int32_t ReadType(const ScenarioPlace& place) {
    if (place.IsInteger()) {
        return static_cast<std::int32_t>(place.Integer(INT32_MIN, INT32_MAX));
    }
    constexpr std::array types = {ChannelAttribute::Flag, ChannelAttribute::Integer, ChannelAttribute::Double};
    return types.at(
        place.Choice({"flag", "integer", "double"}, R"(has to be "flag", "integer", "double" or a 32-bit integer)"));
}

AttributeAnswer ReadAnswer(const ScenarioPlace& place) {
    AttributeAnswer answer;
    if (const auto type = place.Find("type")) {
        answer.type = ReadType(*type);
    }
    if (const auto text = place.Find("text")) {
        answer.isTextNull = text->IsNull();
        answer.text = answer.isTextNull ? std::nullopt : std::optional(text->Text());
    }
    answer.failure = ReadFailure(place, "fails");
    return answer;
}

Sequence<AttributeAnswer> ReadAnswers(const ScenarioPlace& place) {
    Sequence<AttributeAnswer> answers;
    if (!place.IsArray()) {
        place.AllowOnly({"type", "text", "fails"});
        answers.Add(ReadAnswer(place), Failure::kAlways);
        return answers;
    }
    const std::vector<ScenarioPlace> elements = place.Elements();
    for (const ScenarioPlace& element : elements) {
        element.AllowOnly({"type", "text", "fails", "times"});
        answers.Add(ReadAnswer(element), TimesOf(element, &element == &elements.back()));
    }
    if (elements.empty()) {
        place.Refuse("is empty");
    }
    return answers;
}

Sequence<std::string> ReadObjectFiles(const ScenarioPlace& place) {
    Sequence<std::string> paths;
    for (const ScenarioPlace& path : place.IsArray() ? place.Elements() : std::vector{place}) {
        paths.Add(path.Text(), 1);
    }
    return paths;
}

Sequence<std::vector<std::string>> ReadLists(const ScenarioPlace& place) {
    Sequence<std::vector<std::string>> lists;
    for (const ScenarioPlace& list : place.Elements()) {
        std::vector<std::string> names;
        for (const ScenarioPlace& name : list.Elements()) {
            names.push_back(name.Text());
        }
        lists.Add(std::move(names), 1);
    }
    return lists;
}

ScenarioCpu ReadCpu(const ScenarioPlace& place) {
    place.AllowOnly({"name", "object_file", "object_file_fails", "driver_fails", "attributes"});
    ScenarioCpu cpu;
    cpu.name = place.Need("name").Text();
    if (cpu.name.empty()) {
        place.Need("name").Refuse("is empty");
    }
    if (const auto objectFile = place.Find("object_file")) {
        cpu.objectFiles = ReadObjectFiles(*objectFile);
    }
    cpu.objectFileFailure = ReadFailure(place, "object_file_fails");
    cpu.driverFailure = ReadFailure(place, "driver_fails");
    if (const auto attributes = place.Find("attributes")) {
        for (const ScenarioPlace& attribute : attributes->Members()) {
            cpu.attributes.emplace(attribute.Key(), ReadAnswers(attribute));
        }
    }
    return cpu;
}

std::unique_ptr<Scenario> ReadRoot(const ScenarioPlace& root) {
    root.AllowOnly(
        {"delay_ms", "factory_fails", "server_fails", "server_end_fails", "list_fails", "lists", "cpus", "remarks"});
    auto scenario = std::make_unique<Scenario>();
    if (const auto delay = root.Find("delay_ms")) {
        scenario->delay = std::chrono::milliseconds(delay->Integer(0, kLongestDelay));
    }
    scenario->factoryFailure = ReadFailure(root, "factory_fails", false);
    scenario->serverFailure = ReadFailure(root, "server_fails");
    scenario->serverEndFailure = ReadFailure(root, "server_end_fails");
    scenario->listFailure = ReadFailure(root, "list_fails");
    if (const auto remarks = root.Find("remarks")) {
        for (const ScenarioPlace& remark : remarks->Elements()) {
            remark.Text();
        }
    }
    if (const auto lists = root.Find("lists")) {
        scenario->lists = ReadLists(*lists);
    }
    std::set<std::string> names;
    for (const ScenarioPlace& place : root.Need("cpus").Elements()) {
        scenario->cpus.push_back(ReadCpu(place));
        if (!names.insert(scenario->cpus.back().name).second) {
            place.Need("name").Refuse("names a CPU that is there already");
        }
    }
    return scenario;
}

}  // namespace

std::unique_ptr<Scenario> ReadScenario(const std::string& path) {
    const std::string text = ReadFile(path);
    try {
        const JsonNode root = ParseJson(text);
        return ReadRoot(ScenarioPlace(path, root));
    } catch (const JsonError& error) {
        ScenarioPlace::Refuse(path, error.line, error.what());
    }
}

}  // namespace stmdcm_sim
