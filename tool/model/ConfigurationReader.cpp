#include "tool/model/ConfigurationReader.h"

#include <cstdlib>
#include <sstream>
#include <string_view>

#include "tool/plugin/Manager.h"
#include "trace/dcm/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

Unit UnitOf(const StmProperty& property) {
    if (property.conversion == TextConversion::Clock) {
        return Unit::Hertz;
    }
    return std::string_view(property.name).starts_with("HEAD_Pointer_") ? Unit::Address : Unit::None;
}

namespace {

std::vector<Property> ReadProperties(const Manager& manager) {
    const StmProperties defaults;
    std::vector<Property> properties;
    for (const StmProperty& row : kStmProperties) {
        const bool isFlag = row.flag != nullptr;
        properties.push_back({row.name, isFlag, UnitOf(row), manager.Property(row.name),
                              isFlag ? std::int32_t{defaults.*row.flag} : defaults.*row.integer});
    }
    return properties;
}

/// The fields that SC and CPT use cases share.
template <class Usecase>
Usecase ReadCommon(const UsecaseInfoIFBase& info) {
    Usecase usecase;
    usecase.job = info.GetJobNum();
    usecase.moduleId = info.GetModuleId();
    usecase.moduleName = info.GetModuleName();
    usecase.probe = info.GetProbeName();
    usecase.sampleWindow = info.GetSampleWindow();
    return usecase;
}

ScUsecase ReadSc(UsecaseInfoIF& info) {
    auto usecase = ReadCommon<ScUsecase>(info);
    usecase.suppress = info.GetSuppress();
    for (unsigned i = 0; i < info.GetNumCounters(); ++i) {
        const _CounterLineInfo& counter = *info.GetCounterInfo(i);
        usecase.counters.push_back({counter.number, counter.text});
    }
    for (unsigned i = 0; i < info.GetNumFormulars(); ++i) {
        const FormulaInfo& formula = *info.GetFormula(i);
        usecase.formulas.push_back({formula.name, formula.formula, formula.unit, formula.tagNumber, formula.ofmask});
    }
    return usecase;
}

CptUsecase ReadCpt(CTUsecaseInfoIF& info) {
    auto usecase = ReadCommon<CptUsecase>(info);
    usecase.clockRate = info.GetClockRate();
    usecase.divideFactor = info.GetDividFactor();
    usecase.mode = info.GetModuleMode();
    for (std::uint32_t bit = 0; bit <= CT_DATA_OPTION_LAST; ++bit) {
        usecase.dataOptions |= std::uint32_t{info.IsOptionEnabled(static_cast<eCTDataOption>(bit))} << bit;
    }
    return usecase;
}

template <class Usecase, class Record, class Read>
std::vector<Usecase> ReadRecord(Record& record, Read read) {
    std::vector<Usecase> usecases;
    for (unsigned i = 0; i < record.GetNumUsecases(); ++i) {
        usecases.push_back(read(*record.GetUsecase(i)));
    }
    return usecases;
}

/// GetUsecase of this record gives the first use case of each of three names, and the record may hold others. Its text
/// (docs/use-case-blocks.md) has them all.
std::vector<PmiUsecase> ReadPmiRecord(const PMIUsecaseRecordIF& record) {
    constexpr std::string_view kName = "name=";
    constexpr std::string_view kWindow = "sw=";
    std::string text;
    record.SaveAllRecords(text);
    std::istringstream in(text);
    std::vector<PmiUsecase> usecases;
    for (std::string line; std::getline(in, line);) {
        if (line == "{") {
            usecases.emplace_back();
        } else if (line.starts_with(kName)) {
            usecases.back().source = line.substr(kName.size());
        } else if (line.starts_with(kWindow)) {
            // Written as a signed number.
            usecases.back().sampleWindow = static_cast<std::uint32_t>(std::atol(line.c_str() + kWindow.size()));
        }
    }
    return usecases;
}

}  // namespace

Configuration ReadConfiguration(const Manager& manager) {
    Configuration configuration;
    configuration.properties = ReadProperties(manager);
    configuration.sc = ReadRecord<ScUsecase>(manager.ScRecord(), ReadSc);
    configuration.cpt = ReadRecord<CptUsecase>(manager.CptRecord(), ReadCpt);
    configuration.pmi = ReadPmiRecord(manager.PmiRecord());
    return configuration;
}

}  // namespace stmdcm
