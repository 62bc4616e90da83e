// The input makes up a configuration, which is written as a settings text and read back: it is the same unless the
// writer tells that it cut something.

#include <algorithm>
#include <string_view>

#include "fuzz/Support.h"
#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "trace/format/BlockReader.h"
#include "trace/format/BlockWriter.h"
#include "trace/format/StmPropertyTable.h"

using namespace Zu::Wep::Trace;
using namespace stmdcm;
using stmdcm_fuzz::Require;

namespace {

/// Takes values off the front of the input; behind its end everything is 0 or empty.
class Input {
  public:
    explicit Input(std::string_view rest) : m_rest(rest) {}

    bool IsAtEnd() const { return m_rest.empty(); }
    std::size_t Below(std::size_t end) { return Number(1) % end; }
    std::uint32_t Number(std::size_t bytes = 4) {
        std::uint32_t number = 0;
        for (const char byte : Take(bytes)) {
            number = number << 8 | static_cast<unsigned char>(byte);
        }
        return number;
    }
    /// One that can be read back but for its length and line feeds.
    std::string Text() {
        const std::string_view text = Take(Below(160));
        return std::string(StripBlockLine(text.substr(0, text.find('\0'))));
    }

  private:
    std::string_view Take(std::size_t count) {
        const std::string_view taken = m_rest.substr(0, count);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

    std::string_view m_rest;
};

template <class Usecase>
Usecase Make(Input& input) {
    Usecase usecase;
    usecase.SetModuleId(input.Number());
    usecase.SetModuleName(input.Text().c_str());
    usecase.SetProbeName(input.Text().c_str());
    usecase.SetSampleWindow(input.Number());
    usecase.SetJobNum(static_cast<int>(input.Number()));
    return usecase;
}

void AddSc(Input& input, UsecaseRecord& record) {
    UsecaseInfo usecase = Make<UsecaseInfo>(input);
    usecase.SetSuppress(input.Below(2) != 0);
    for (std::size_t count = input.Below(4); count > 0; --count) {
        const _CounterLineInfo counter{input.Number(), input.Text()};
        usecase.AddCounter(&counter);
    }
    for (std::size_t count = input.Below(4); count > 0; --count) {
        const std::string name = input.Text(), formula = input.Text(), unit = input.Text();
        usecase.AddFormula(name.c_str(), formula.c_str(), unit.c_str(), input.Number());
    }
    record.AddUsecase(&usecase);
}

void AddCpt(Input& input, CTUsecaseRecord& record) {
    CTUsecaseInfo usecase = Make<CTUsecaseInfo>(input);
    usecase.SetClockRate(input.Number());
    usecase.SetDividFactor(input.Number());
    usecase.SetModuleMode(input.Number());
    usecase.SetDataOptions(static_cast<eCTDataOption>(input.Below(CT_DATA_OPTION_LAST + 1)), input.Below(2) != 0);
    record.AddUsecase(&usecase);
}

void MakeUp(Input& input, Settings& settings) {
    for (std::size_t count = input.Below(8); count > 0; --count) {
        const std::size_t row = input.Below(kStmProperties.size());
        SetNumber(settings.properties, kStmProperties[row], static_cast<std::int32_t>(input.Number()));
    }
    while (!input.IsAtEnd()) {
        switch (input.Below(3)) {
            case 0:
                AddSc(input, settings.sc);
                break;
            case 1:
                AddCpt(input, settings.cpt);
                break;
            default:
                const PMIUsecaseInfo usecase = Make<PMIUsecaseInfo>(input);
                settings.pmi.AddUsecase(&usecase);
        }
    }
}

struct ChangeCounter final : BlockWriteReporter {
    void OnValueCut(std::string_view /*key*/, std::size_t /*length*/) override { ++count; }
    void OnLineFeed(std::string_view /*key*/) override { ++count; }
    std::size_t count = 0;
};

struct Written {
    explicit Written(Settings& settings) {
        AppendPropertyLines(settings.properties, text);
        settings.ForEach([&](const auto& record) { record.Save(text, changes); });
        Fill(configuration, settings);
    }
    std::string text;
    ChangeCounter changes;
    Configuration configuration;
};

/// A line of it that is a brace can only be one of its own.
std::size_t BlockCount(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find("\n{\n", at)) != std::string_view::npos; ++at) {
        ++count;
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = stmdcm_fuzz::Text(data, size);
    Input input(bytes);
    Settings made;
    MakeUp(input, made);
    const Written first(made);
    Require(BlockCount(first.text) == first.configuration.UsecaseCount(), "a block for each use case");
    for (const LineLimits& limits : {LineLimits{}, kFileLineLimits}) {
        Settings read;
        const bool isClean = read.Read(first.text, limits);
        Require(isClean == (first.configuration.UsecaseCount() > 0), "clean, but for the line feed behind properties");
        const Written second(read);
        Require(Compare(first.configuration, second.configuration).empty() == (first.changes.count == 0),
                "it is the same, or the writer has told");
        Require(second.changes.count == 0 && second.text == first.text, "it is written the same way again");
    }
    return 0;
}
