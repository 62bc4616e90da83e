// A host that calls everything the headers for hosts offer, and links with nothing but the dynamic loader: however it
// is compiled, with run-time type information and exceptions or without. Usage: every_call libStmDCM.so CAPTURE.tdf

#include <dlfcn.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <type_traits>

#include "host/CTraceFactory.h"
#include "trace/dcm/DeviceConfigManager.h"
#include "trace/dcm/PropertyNames.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"
#include "trace/tdf/TDFHandler.h"

using namespace Zu::Wep::Trace;

namespace {

static_assert(!std::is_constructible_v<ConfigPropertyValue, double>, "a real would count by half of its bytes");
static_assert(!std::is_constructible_v<ConfigPropertyValue, const char*>, "no property is a text");

int failures = 0;

void Expect(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "every_call: not so: %s\n", what);
        ++failures;
    }
}

class Events final : public CDeviceConfigEvents {};

class Identifier final : public CDeviceIdentifier {
  public:
    virtual ~Identifier() = default;
    bool SaveToFile(const std::string&, eTraceDataFileType) override { return true; }
    bool LoadFromFile(const std::string&, eTraceDataFileType) override { return true; }
};

template <class Record>
void CallRecord(Record* record, const char* source) {
    record->CleaupUsecases(false);
    for (unsigned number = 0; number < 3; ++number) {
        auto* usecase = record->GetAUsecaseInfo();
        usecase->SetModuleId(number);
        usecase->SetModuleName(source);
        usecase->SetProbeName("probe");
        usecase->SetSampleWindow(64);
        usecase->SetJobNum(-1);
        record->AddUsecase(usecase);
    }
    std::string text;
    Expect(record->GetNumUsecases() == 3 && record->SaveAllRecords(text) == 0, "use cases are added and saved");
    auto* first = record->GetUsecase(0);
    Expect(first != nullptr && first->GetSampleWindow() == 64 && first->GetModuleName() == std::string(source) &&
               first->GetJobNum() == -1 && (first->GetModuleId() == 0 || first->GetProbeName() == nullptr),
           "a use case is what was added");
    record->CleaupUsecases(false);
    std::istringstream in(text);
    Expect(record->RetrieveAllRecords(in) == 0 && record->GetNumUsecases() == 3, "use cases are read again");
    record->RemoveUsecase(-1);
    Expect(record->GetNumUsecases() == 0, "use cases are removed");
}

void CallStm(StmDeviceConfigManagerIF& stm) {
    for (const PropertyDescription& property : kPropertyDescriptions) {
        ConfigPropertyValue one(1), yes(true), read;
        ConfigPropertyValue& wanted = property.type == ConfigPropertyValue::Boolean ? yes : one;
        Expect(stm.SetSTMProperty(property.name, wanted) && stm.GetProperty(property.name, read) &&
                   read.type == property.type && read.value.integer == 1,
               property.name);
    }
    CallRecord(stm.GetPMIUsecaseRecord(), "PMI");
    CallRecord(stm.GetUsecaseRecord(), "sc");
    CallRecord(stm.GetCTUsecaseRecord(), "cpt");
    auto* sc = stm.GetUsecaseRecord()->GetAUsecaseInfo();
    const _CounterLineInfo counter{3, "reads"};
    sc->SetSuppress(true);
    sc->AddCounter(&counter);
    sc->AddFormula("f", "#3:2", "MB/s", 1);
    Expect(sc->GetSuppress() && sc->GetNumCounters() == 1 && sc->GetNumFormulars() == 1 &&
               sc->GetCounterInfo(0)->text == "reads" && sc->GetFormula(0)->unit == "MB/s",
           "counters and formulas are kept");
    auto* cpt = stm.GetCTUsecaseRecord()->GetAUsecaseInfo();
    cpt->SetDataOptions(CT_DATA_OPTION_0, true);
    cpt->SetClockRate(5);
    cpt->SetDividFactor(6);
    cpt->SetModuleMode(7);
    Expect(cpt->IsOptionEnabled(CT_DATA_OPTION_0) && cpt->GetClockRate() == 5 && cpt->GetDividFactor() == 6 &&
               cpt->GetModuleMode() == 7,
           "a CPT use case keeps its fields");
    stm.SaveAllConfiguration();
    stm.RetrieveAllConfiguration();
}

template <class Function>
Function* Symbol(void* library, const char* name) {
    return reinterpret_cast<Function*>(dlvsym(library, name, STMDCM_INTERFACE_VERSION));
}

}  // namespace

int main(int argc, char** argv) {
    void* library = argc == 3 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (library == nullptr) {
        std::fprintf(stderr, "every_call: %s\n", argc == 3 ? dlerror() : "usage: every_call libStmDCM.so CAPTURE.tdf");
        return 1;
    }
    auto* create = Symbol<decltype(CreateDeviceConfigManager)>(library, "CreateDeviceConfigManager");
    auto* destroy = Symbol<decltype(DestroyDeviceConfigManager)>(library, "DestroyDeviceConfigManager");
    Expect(dlvsym(library, "CreateDeviceConfigManager", "STMDCM_0") == nullptr, "another version is refused");
    CPUInfo cpu{"Core_0", 7, 0, 8};
    Identifier identifier;
    Events events;
    auto* manager = static_cast<CDeviceConfigManager*>(create(&cpu, &identifier));
    manager->RegisterEventHandler(&events);
#if defined(__GXX_RTTI)
    Expect(dynamic_cast<StmDeviceConfigManagerIF*>(manager) != nullptr, "a manager is an StmDeviceConfigManagerIF");
    Expect(dynamic_cast<Events*>(static_cast<CDeviceConfigEvents*>(&events)) != nullptr, "the handler is the host's");
#endif
    int device = 0, core = 0;
    std::string name, file;
    Expect(manager->GetInfo(device, core, name) && device == 7 && core == 8 && name == "Core_0", "GetInfo");
    Expect(manager->LoadConfiguration(argv[2], TRACE_DATA_FILE_TDF), "the capture loads");
    Expect(!manager->LoadConfigurationLive(), "there is no live system");
    Expect(manager->SaveConfiguration("every_call", TRACE_DATA_FILE_LIVE), "settings are saved");
    Expect(!manager->GetObjectFile("~", file), "there is no image of that name");
    Expect(manager->GetLastError().empty(), "GetLastError is empty");
    CallStm(static_cast<StmDeviceConfigManagerIF&>(*manager));
    destroy(manager);
    Expect(dlclose(library) == 0, "the library is unloaded");
    return failures == 0 ? 0 : 1;
}
