#include <dlfcn.h>

#include "tests/sim/LiveTest.h"

namespace Zu::Wep::Trace {
namespace {

class ScenarioTest : public LiveTest {
  protected:
    ScenarioTest() : m_library(::dlopen(STMDCM_SIMULATOR, RTLD_NOW)) {}
    ~ScenarioTest() override { ::dlclose(m_library); }

    /// What making a factory fails with, without the directory of the scenario. `shown`: as standard error has it,
    /// where that is not the same.
    std::string Refusal(const std::string& shown = "") {
        testing::internal::CaptureStderr();
        std::string message;
        try {
            const auto create = reinterpret_cast<CTraceFactory* (*)()>(::dlsym(m_library, "CreateTraceFactory"));
            const auto destroy = reinterpret_cast<void (*)(CTraceFactory*)>(::dlsym(m_library, "DestroyTraceFactory"));
            destroy(create());
        } catch (const Vorn::vornError& error) {
            message = error.what();
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  message.empty() ? "" : "libTraceFactory: " + (shown.empty() ? message : shown) + "\n");
        return message.starts_with(m_home / "") ? message.substr((m_home / "").size()) : message;
    }

    void* m_library;
};

TEST_F(ScenarioTest, FaultsAreToldByFileLineAndField) {
    const std::string cpu = "{\n\"cpus\": [{\"name\": \"a\",\n";
    const std::pair<std::string, const char*> cases[] = {
        {"{\"cpus\": []}", ""},
        {"{\"delay_ms\": 3\n,\"cpus\": [],\n\"cpu\": 1}", "3: cpu: unknown field"},
        {"{\n}", "1: lacks the field \"cpus\""},
        {"{\"cpus\": [\n{\"object_file\": \"x\"}]}", "2: cpus[0]: lacks the field \"name\""},
        {"{\"cpus\": [{\"name\":\"a\"},\n{\"name\":\n\"a\"}]}", "2: cpus[1].name: names a CPU that is there already"},
        {"{\"cpus\": [{\"name\": \"\"}]}", "1: cpus[0].name: is empty"},
        {"{\"cpus\": [{\"name\": \"a\\u0000\"}]}", "1: cpus[0].name: holds a zero byte"},
        {cpu + "\"name\": \"b\"}]}", "3: cpus[0].name: stands here twice"},
        {cpu + "\"object_file\": 1}]}", "3: cpus[0].object_file: has to be a text"},
        {cpu + "\"attributes\": {\n\"TWP Source\": {\"type\": 2147483648}}}]}",
         "4: cpus[0].attributes[\"TWP Source\"].type: has to be an integer from -2147483648 to 2147483647"},
        {cpu + "\"attributes\": {\"X\": {\"type\": \"Flag\"}}}]}",
         "3: cpus[0].attributes.X.type: has to be \"flag\", \"integer\", \"double\" or a 32-bit integer"},
        {cpu + "\"driver_fails\": {\"with\": \"int\", \"times\": 0}}]}",
         "3: cpus[0].driver_fails.times: has to be an integer from 1 to 1000000"},
        {"{\"cpus\": [], \"factory_fails\": {\"times\": 1}}", "1: factory_fails.times: unknown field"},
        {"{\"delay_ms\": 1.5,\n\"cpus\": []}", "1: delay_ms: has to be an integer from 0 to 60000"},
        {"{\n\"cpus\": [\n\n}",
         "4: not JSON: syntax error while parsing value - unexpected '}'; expected '[', '{', or a literal"},
        {"\n" + std::string(100'000, '['), "2: nested too deep"},
    };
    for (const auto& [text, message] : cases) {
        Write("target.json", text);
        EXPECT_EQ(Refusal(), *message == '\0' ? "" : std::string("target.json:") + message) << text.substr(0, 200);
    }
}

TEST_F(ScenarioTest, NoFile) {
    EXPECT_EQ(Refusal(), "target.json: No such file or directory");
    // No name commands the terminal.
    ::setenv("STMDCM_SCENARIO", "/none\x1b[2J\n\x9b", 1);
    EXPECT_EQ(Refusal("/none\\x1b[2J\\x0a\\x9b: No such file or directory"),
              "/none\x1b[2J\n\x9b: No such file or directory");
    ::setenv("STMDCM_SCENARIO", "", 1);
    EXPECT_EQ(Refusal(), "STMDCM_SCENARIO names no scenario file");
}

TEST_F(ScenarioTest, TheLibraryExportsTwoFunctions) {
    const std::string list = m_home / "list";
    ASSERT_EQ(std::system(("nm -D --defined-only " STMDCM_SIMULATOR " | cut -c 18- >" + list).c_str()), 0);
    EXPECT_EQ(ReadWhole(list), "T CreateTraceFactory\nT DestroyTraceFactory\n");
}

}  // namespace
}  // namespace Zu::Wep::Trace
