#pragma once

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/tool/TextLines.h"
#include "tests/tool/ToolRun.h"

namespace stmdcm {

/// A user who works with captures and settings files, in the temporary directory.
class ConfigurationRun : public ToolRun {
  protected:
    using Json = nlohmann::json;

    static std::string Sample(const std::string& name) { return STMDCM_TEST_DATA "/" + name; }
    std::string Path(const std::string& name) const { return (Temporary() / name).string(); }

    std::string Write(const std::string& name, const std::string& content) const {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }
    static std::string Content(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    Json RunJson(const std::string& arguments) const { return Json::parse(Run(arguments + " --json").out); }
    /// Of a capture or a settings file.
    Json Configuration(const std::string& path) const { return RunJson("show " + path).at("configuration"); }

    /// One clear sentence or several, and the right status.
    void ExpectTold(const std::string& arguments, int status, const std::string& sentence) const {
        SCOPED_TRACE(arguments);
        const Result result = Run(arguments);
        EXPECT_EQ(result.status, status) << result.error;
        EXPECT_NE(result.error.find(sentence), std::string::npos) << result.error;
        EXPECT_TRUE(!sentence.empty() || result.error.empty()) << result.error;
    }
};

/// A command line and what the user is told.
struct ToldCase {
    std::string arguments;
    int status;
    const char* sentence;  ///< empty: nothing is said
};

}  // namespace stmdcm
