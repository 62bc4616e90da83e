#include "bench/UsecaseTexts.h"

#include <fmt/format.h>

#include <iterator>

namespace stmdcm_bench {

PlainUsecase UsecaseNumber(std::size_t n) {
    const auto number = static_cast<std::uint32_t>(n);
    PlainUsecase usecase{number,
                         fmt::format("module{}", n),
                         static_cast<std::int32_t>(n % 7),
                         fmt::format("EMIF_{}", n % 4),
                         1000 + number % 100,
                         n % 2 == 0,
                         {},
                         {}};
    for (std::uint32_t i = 0; i < kCountersEach; ++i) {
        usecase.counters.push_back({i, fmt::format("{}:latency:{}:0x{:08x}", i, n % 16, n)});
    }
    usecase.formulas.push_back({fmt::format("load{}", n % 8), "#0:10/#1:20", "bytes/s", 15});
    return usecase;
}

std::string UsecaseText(std::size_t count) {
    std::string out;
    for (std::size_t n = 0; n < count; ++n) {
        const PlainUsecase u = UsecaseNumber(n);
        fmt::format_to(std::back_inserter(out), "{{\nid={}\nname={}\njobid={}\nprobe={}\nsw={}\nsuppress={}\n", u.id,
                       u.name, u.jobid, u.probe, u.sw, u.suppress ? 1 : 0);
        for (const PlainCounter& each : u.counters) {
            fmt::format_to(std::back_inserter(out), "#{}={}\n", each.number, each.text);
        }
        for (const PlainFormula& each : u.formulas) {
            fmt::format_to(std::back_inserter(out), "/$\nname={}\nformula={}\nunit={}\nofmask={}\n$/\n", each.name,
                           each.formula, each.unit, each.ofmask);
        }
        out += "}\n";
    }
    return out;
}

std::string UsecaseJson(std::size_t count) {
    std::string out = "[";
    for (std::size_t n = 0; n < count; ++n) {
        const PlainUsecase u = UsecaseNumber(n);
        fmt::format_to(std::back_inserter(out),
                       R"({}{{"id":{},"name":"{}","jobid":{},"probe":"{}","sw":{},"suppress":{},"counters":[)",
                       n == 0 ? "" : ",", u.id, u.name, u.jobid, u.probe, u.sw, u.suppress);
        for (const PlainCounter& each : u.counters) {
            fmt::format_to(std::back_inserter(out), R"({}{{"number":{},"text":"{}"}})", each.number == 0 ? "" : ",",
                           each.number, each.text);
        }
        const PlainFormula& f = u.formulas.front();
        fmt::format_to(std::back_inserter(out),
                       R"(],"formulas":[{{"name":"{}","formula":"{}","unit":"{}","ofmask":{}}}]}})", f.name, f.formula,
                       f.unit, f.ofmask);
    }
    return out += ']';
}

std::string UsecaseIni(std::size_t count) {
    std::string out;
    for (std::size_t n = 0; n < count; ++n) {
        const PlainUsecase u = UsecaseNumber(n);
        fmt::format_to(std::back_inserter(out), "[{}]\nid={}\nname={}\njobid={}\nprobe={}\nsw={}\nsuppress={}\n", n,
                       u.id, u.name, u.jobid, u.probe, u.sw, u.suppress ? 1 : 0);
        for (const PlainCounter& each : u.counters) {
            fmt::format_to(std::back_inserter(out), "c{}={}\n", each.number, each.text);
        }
        const PlainFormula& f = u.formulas.front();
        fmt::format_to(std::back_inserter(out), "fname={}\nfformula={}\nfunit={}\nfofmask={}\n", f.name, f.formula,
                       f.unit, f.ofmask);
    }
    return out;
}

}  // namespace stmdcm_bench
