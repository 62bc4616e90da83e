#pragma once

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tool/ToolRun.h"

namespace stmdcm {

/// A command line and what the user is told.
struct ToldCase {
    std::string arguments;
    int status;
    std::string sentence;  ///< empty: nothing is said
};

/// Whether a line of `text` holds `first` and behind it `second`.
inline bool HasLineWith(const std::string& text, const std::string& first, const std::string& second) {
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        const std::size_t place = line.find(first);
        if (place != std::string::npos && line.find(second, place + first.size()) != std::string::npos) {
            return true;
        }
    }
    return false;
}

/// A user who works with captures and settings files, in the temporary directory.
class ConfigurationRun : public ToolRun {
  protected:
    using Json = nlohmann::json;

    static std::string Sample(const std::string& name) { return STMDCM_TEST_DATA "/" + name; }
    static std::string Content(const std::string& path) { return stmdcm_test::ReadWhole(path); }
    std::string Path(const std::string& name) const { return (Temporary() / name).string(); }

    std::string Write(const std::string& name, const std::string& content) const {
        stmdcm_test::WriteWhole(Path(name), content);
        return Path(name);
    }
    std::string Copy(const std::string& sample) const { return Write(sample, Content(Sample(sample))); }
    /// The document; the status is looked at where one is given.
    Json RunJson(const std::string& arguments, int status = -1) const {
        const Result result = Run("--json " + arguments);
        EXPECT_TRUE(status == -1 || result.status == status) << result.status << ": " << result.error;
        return Json::parse(result.out);
    }
    /// The documents for many files, one a line.
    std::vector<Json> RunLines(const std::string& arguments, int status) const {
        const Result result = Run("--json " + arguments);
        EXPECT_EQ(result.status, status) << result.error;
        std::vector<Json> documents;
        std::istringstream in(result.out);
        for (std::string line; std::getline(in, line);) {
            documents.push_back(Json::parse(line));
        }
        return documents;
    }
    /// Of a capture or a settings file.
    Json Configuration(const std::string& path) const { return RunJson("show " + path).at("configuration"); }

    /// One clear sentence or several, and the right status, for each command line behind `command`.
    void ExpectTold(const std::string& command, const std::vector<ToldCase>& cases) const {
        for (const auto& [arguments, status, sentence] : cases) {
            SCOPED_TRACE(command + arguments);
            const Result result = Run(command + arguments);
            EXPECT_EQ(result.status, status) << result.error;
            EXPECT_THAT(result.error, testing::HasSubstr(sentence));
            EXPECT_EQ(result.error.empty(), sentence.empty()) << result.error;
        }
    }

    /// Each item of a document's list is a line of the text, which holds the two fields in their order.
    static void ExpectShown(const std::string& text, const Json& items, const char* first, const char* second) {
        const auto word = [](const Json& value) { return value.is_string() ? value.get<std::string>() : value.dump(); };
        for (const Json& item : items) {
            EXPECT_TRUE(HasLineWith(text, word(item.at(first)), word(item.at(second)))) << item;
        }
    }
};

}  // namespace stmdcm
