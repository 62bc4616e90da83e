// Reading and writing 20,000 statistics-counter use cases, against readers and writers of other formats that keep, or
// write, the same values.

#include <benchmark/benchmark.h>
#include <ini.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <charconv>
#include <cstdlib>
#include <sstream>

#include "bench/Ratios.h"
#include "bench/UsecaseTexts.h"
#include "trace/usecase/UsecaseRecord.h"

namespace {

using namespace stmdcm_bench;

constexpr std::size_t kCount = 20'000;

void Require(bool condition, benchmark::State& state) {
    if (!condition) {
        state.SkipWithError("not every use case was read");
    }
}

void ReadOurs(benchmark::State& state) {
    const std::string text = UsecaseText(kCount);
    std::istringstream in(text);
    for (auto _ : state) {
        in.clear();
        in.seekg(0);
        Zu::Wep::Trace::UsecaseRecord record;
        record.RetrieveAllRecords(in);
        Require(record.GetNumUsecases() == kCount, state);
    }
}

/// Where in a document a value stands.
enum class Within { Usecase, Counter, Formula };

class UsecaseHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, UsecaseHandler> {
  public:
    std::vector<PlainUsecase> usecases;

    bool StartObject() {
        if (m_depth == 0) {
            usecases.emplace_back();
        } else if (m_within == Within::Counter) {
            usecases.back().counters.emplace_back();
        } else {
            usecases.back().formulas.emplace_back();
        }
        ++m_depth;
        return true;
    }
    bool EndObject(rapidjson::SizeType) { return --m_depth >= 0; }
    bool EndArray(rapidjson::SizeType) {
        m_within = Within::Usecase;
        return true;
    }
    bool Key(const char* text, rapidjson::SizeType size, bool) {
        m_key = {text, size};
        m_within = m_key == "counters" ? Within::Counter : m_key == "formulas" ? Within::Formula : m_within;
        return true;
    }
    bool String(const char* text, rapidjson::SizeType size, bool) {
        PlainUsecase& usecase = usecases.back();
        std::string* target = nullptr;
        if (m_within == Within::Counter) {
            target = &usecase.counters.back().text;
        } else if (m_within == Within::Formula) {
            PlainFormula& formula = usecase.formulas.back();
            target = m_key == "name" ? &formula.name : m_key == "formula" ? &formula.formula : &formula.unit;
        } else {
            target = m_key == "name" ? &usecase.name : &usecase.probe;
        }
        target->assign(text, size);
        return true;
    }
    bool Bool(bool value) {
        usecases.back().suppress = value;
        return true;
    }
    bool Uint(unsigned value) {
        PlainUsecase& usecase = usecases.back();
        if (m_within == Within::Counter) {
            usecase.counters.back().number = value;
        } else if (m_within == Within::Formula) {
            usecase.formulas.back().ofmask = value;
        } else if (m_key == "id") {
            usecase.id = value;
        } else if (m_key == "sw") {
            usecase.sw = value;
        } else {
            usecase.jobid = static_cast<std::int32_t>(value);
        }
        return true;
    }

  private:
    Within m_within = Within::Usecase;
    int m_depth = 0;
    std::string_view m_key;
};

void ReadRapidJson(benchmark::State& state) {
    const std::string text = UsecaseJson(kCount);
    for (auto _ : state) {
        std::string changed = text;  // in place: what an istringstream's copy is to ours
        UsecaseHandler handler;
        rapidjson::InsituStringStream stream(changed.data());
        rapidjson::Reader().Parse<rapidjson::kParseInsituFlag>(stream, handler);
        Require(handler.usecases.size() == kCount, state);
    }
}

PlainUsecase FromObject(simdjson::ondemand::object object) {
    PlainUsecase usecase;
    usecase.id = static_cast<std::uint32_t>(std::uint64_t{object["id"]});
    usecase.name = std::string_view{object["name"]};
    usecase.jobid = static_cast<std::int32_t>(std::int64_t{object["jobid"]});
    usecase.probe = std::string_view{object["probe"]};
    usecase.sw = static_cast<std::uint32_t>(std::uint64_t{object["sw"]});
    usecase.suppress = object["suppress"];
    for (simdjson::ondemand::object each : object["counters"]) {
        const auto number = static_cast<std::uint32_t>(std::uint64_t{each["number"]});
        usecase.counters.push_back({number, std::string(std::string_view{each["text"]})});
    }
    for (simdjson::ondemand::object each : object["formulas"]) {
        PlainFormula formula;
        formula.name = std::string_view{each["name"]};
        formula.formula = std::string_view{each["formula"]};
        formula.unit = std::string_view{each["unit"]};
        formula.ofmask = static_cast<std::uint32_t>(std::uint64_t{each["ofmask"]});
        usecase.formulas.push_back(std::move(formula));
    }
    return usecase;
}

void ReadSimdjson(benchmark::State& state) {
    const simdjson::padded_string text(UsecaseJson(kCount));
    simdjson::ondemand::parser parser;
    for (auto _ : state) {
        std::vector<PlainUsecase> usecases;
        simdjson::ondemand::document document = parser.iterate(text);
        for (simdjson::ondemand::object each : document.get_array()) {
            usecases.push_back(FromObject(each));
        }
        Require(usecases.size() == kCount, state);
    }
}

std::uint32_t Number(std::string_view text) {
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

int TakeIniValue(void* user, const char* section, const char* nameText, const char* value) {
    auto& usecases = *static_cast<std::vector<PlainUsecase>*>(user);
    const std::string_view name = nameText;
    if (Number(section) == usecases.size()) {
        usecases.emplace_back();
    }
    PlainUsecase& usecase = usecases.back();
    if (name == "id") {
        usecase.id = Number(value);
    } else if (name == "name") {
        usecase.name = value;
    } else if (name == "jobid") {
        usecase.jobid = static_cast<std::int32_t>(Number(value));
    } else if (name == "probe") {
        usecase.probe = value;
    } else if (name == "sw") {
        usecase.sw = Number(value);
    } else if (name == "suppress") {
        usecase.suppress = *value == '1';
    } else if (name.starts_with('c')) {
        usecase.counters.push_back({Number(name.substr(1)), value});
    } else if (name == "fname") {
        usecase.formulas.push_back({value, {}, {}, 0});
    } else if (name == "fformula") {
        usecase.formulas.back().formula = value;
    } else if (name == "funit") {
        usecase.formulas.back().unit = value;
    } else {
        usecase.formulas.back().ofmask = Number(value);
    }
    return 1;
}

void ReadIni(benchmark::State& state) {
    const std::string text = UsecaseIni(kCount);
    for (auto _ : state) {
        std::vector<PlainUsecase> usecases;
        ini_parse_string(text.c_str(), TakeIniValue, &usecases);
        Require(usecases.size() == kCount, state);
    }
}

void WriteOurs(benchmark::State& state) {
    std::istringstream in(UsecaseText(kCount));
    Zu::Wep::Trace::UsecaseRecord record;
    record.RetrieveAllRecords(in);
    for (auto _ : state) {
        std::string out;
        record.SaveAllRecords(out);
        benchmark::DoNotOptimize(out.data());
    }
}

void WriteUsecase(rapidjson::Writer<rapidjson::StringBuffer>& writer, const PlainUsecase& usecase) {
    const auto string = [&](const char* key, const std::string& value) {
        writer.Key(key);
        writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    };
    writer.StartObject();
    writer.Key("id");
    writer.Uint(usecase.id);
    string("name", usecase.name);
    writer.Key("jobid");
    writer.Int(usecase.jobid);
    string("probe", usecase.probe);
    writer.Key("sw");
    writer.Uint(usecase.sw);
    writer.Key("suppress");
    writer.Bool(usecase.suppress);
    writer.Key("counters");
    writer.StartArray();
    for (const PlainCounter& counter : usecase.counters) {
        writer.StartObject();
        writer.Key("number");
        writer.Uint(counter.number);
        string("text", counter.text);
        writer.EndObject();
    }
    writer.EndArray();
    writer.Key("formulas");
    writer.StartArray();
    for (const PlainFormula& formula : usecase.formulas) {
        writer.StartObject();
        string("name", formula.name);
        string("formula", formula.formula);
        string("unit", formula.unit);
        writer.Key("ofmask");
        writer.Uint(formula.ofmask);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
}

void WriteRapidJson(benchmark::State& state) {
    std::vector<PlainUsecase> usecases;
    for (std::size_t n = 0; n < kCount; ++n) {
        usecases.push_back(UsecaseNumber(n));
    }
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        writer.StartArray();
        for (const PlainUsecase& usecase : usecases) {
            WriteUsecase(writer, usecase);
        }
        writer.EndArray();
        benchmark::DoNotOptimize(buffer.GetString());
    }
}

const Family kRead{"read 20,000 use cases",
                   {{"ours", ReadOurs},
                    {"RapidJSON, in place", ReadRapidJson},
                    {"simdjson, on demand", ReadSimdjson},
                    {"inih", ReadIni}},
                   {{"RapidJSON, in place", 0.65}}};
const Family kWrite{"write 20,000 use cases",
                    {{"ours", WriteOurs}, {"RapidJSON, Writer", WriteRapidJson}},
                    {{"RapidJSON, Writer", 0.5}}};

}  // namespace
