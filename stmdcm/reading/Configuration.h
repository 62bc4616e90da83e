#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "stmdcm/pins/ImageIdentity.h"
#include "stmdcm/reading/Field.h"
#include "trace/format/UsecaseKind.h"
#include "trace/usecase/CTUsecaseInfoIF.h"
#include "trace/usecase/UsecaseInfoIF.h"

namespace stmdcm {

class ImageExaminer;

// A configuration as plain values. Each item lists its fields once, in `Visit` or `Walk`; reading, showing, JSON and
// comparing all go through that list. `Key` says which item of another configuration is the same one.

struct Property {
    std::string name;
    bool isFlag = false;
    Unit unit = Unit::None;
    std::int32_t value = 0;  ///< flags are 0 or 1
    std::int32_t defaultValue = 0;

    bool IsAtDefault() const { return value == defaultValue; }
};

struct Counter {
    std::uint32_t number = 0;
    std::string text;

    auto operator<=>(const Counter&) const = default;  // NOLINT(modernize-use-nullptr): not a pointer

    template <class Visitor>
    void Visit(Visitor&& visit) const {
        visit(Field{"number"}, number);
        visit(Field{"text"}, text);
    }
};

struct Formula {
    std::string name;
    std::string formula;
    std::string unit;
    std::uint32_t tagNumber = 0;
    std::uint32_t outputMask = 0;

    auto operator<=>(const Formula&) const = default;  // NOLINT(modernize-use-nullptr): not a pointer

    template <class Visitor>
    void Visit(Visitor&& visit) const {
        visit(Field{"name"}, name);
        visit(Field{"formula"}, formula);
        visit(Field{"unit"}, unit);
        // The plug-in computes it when it reads a formula's text, and not when a host adds the formula.
        visit(Field{"tag_number", Unit::None, true}, tagNumber);
        visit(Field{"output_mask", Unit::Mask}, outputMask);
    }
};

std::vector<Counter> CountersOf(Zu::Wep::Trace::UsecaseInfoIF& usecase);
std::vector<Formula> FormulasOf(Zu::Wep::Trace::UsecaseInfoIF& usecase);
std::uint32_t DataOptionsOf(const Zu::Wep::Trace::CTUsecaseInfoIF& usecase);

// A use case lists its fields for `visit(field, value, getter)`: how it is called, what it is, and where a use case of
// the plug-in has it.

/// What SC and CPT use cases have in common.
struct MonitorUsecase {
    std::int32_t job = -1;  ///< negative: none
    std::uint32_t moduleId = 0;
    std::string moduleName;
    std::string probe;
    std::uint32_t sampleWindow = 0;

    std::string Key() const;
    auto operator<=>(const MonitorUsecase&) const = default;  // NOLINT(modernize-use-nullptr): not a pointer

    template <class Self, class Visitor>
    static void Walk(Self& self, Visitor&& visit) {
        visit(Field{"job", Unit::Job}, self.job, &Zu::Wep::Trace::UsecaseInfoIFBase::GetJobNum);
        visit(Field{"module_id"}, self.moduleId, &Zu::Wep::Trace::UsecaseInfoIFBase::GetModuleId);
        visit(Field{"name"}, self.moduleName, &Zu::Wep::Trace::UsecaseInfoIFBase::GetModuleName);
        visit(Field{"probe"}, self.probe, &Zu::Wep::Trace::UsecaseInfoIFBase::GetProbeName);
        visit(Field{"sample_window"}, self.sampleWindow, &Zu::Wep::Trace::UsecaseInfoIFBase::GetSampleWindow);
    }
};

struct ScUsecase : MonitorUsecase {
    bool suppress = false;
    std::vector<Counter> counters;
    std::vector<Formula> formulas;

    auto operator<=>(const ScUsecase&) const = default;  // NOLINT(modernize-use-nullptr): not a pointer

    template <class Self, class Visitor>
    static void Walk(Self& self, Visitor&& visit) {
        MonitorUsecase::Walk(self, visit);
        visit(Field{"suppress"}, self.suppress, &Zu::Wep::Trace::UsecaseInfoIF::GetSuppress);
        visit(Field{"counters"}, self.counters, CountersOf);
        visit(Field{"formulas"}, self.formulas, FormulasOf);
    }
};

struct CptUsecase : MonitorUsecase {
    std::uint32_t clockRate = 0;
    std::uint32_t divideFactor = 0;
    std::uint32_t mode = 0;
    std::uint32_t dataOptions = 0;

    auto operator<=>(const CptUsecase&) const = default;  // NOLINT(modernize-use-nullptr): not a pointer

    template <class Self, class Visitor>
    static void Walk(Self& self, Visitor&& visit) {
        MonitorUsecase::Walk(self, visit);
        visit(Field{"clock_rate", Unit::Hertz}, self.clockRate, &Zu::Wep::Trace::CTUsecaseInfoIF::GetClockRate);
        visit(Field{"divide_factor"}, self.divideFactor, &Zu::Wep::Trace::CTUsecaseInfoIF::GetDividFactor);
        visit(Field{"mode"}, self.mode, &Zu::Wep::Trace::CTUsecaseInfoIF::GetModuleMode);
        visit(Field{"data_options", Unit::Mask}, self.dataOptions, DataOptionsOf);
    }
};

struct PmiUsecase {
    std::string source;  ///< "PMI", "CMI0" or "CMI1", though nothing enforces it
    std::uint32_t sampleWindow = 0;

    std::string Key() const { return source; }
    auto operator<=>(const PmiUsecase&) const = default;  // NOLINT(modernize-use-nullptr): not a pointer

    template <class Self, class Visitor>
    static void Walk(Self& self, Visitor&& visit) {
        visit(Field{"source"}, self.source, &Zu::Wep::Trace::UsecaseInfoIFBase::GetModuleName);
        visit(Field{"sample_window"}, self.sampleWindow, &Zu::Wep::Trace::UsecaseInfoIFBase::GetSampleWindow);
    }
};

/// `visit(field, value)` for each field of an item.
template <class Item, class Visitor>
void VisitFields(const Item& item, Visitor&& visit) {
    if constexpr (requires { item.Visit(visit); }) {
        item.Visit(visit);
    } else {
        Item::Walk(item, [&](const Field& field, const auto& value, const auto&) { visit(field, value); });
    }
}

/// An object (program) file as recorded, and how it is now.
struct ObjectFile {
    enum class State {
        Present,  ///< a file of the recorded time, as any may be
        Changed,
        Missing,
        Unknown,       ///< it can't be looked at, or is no regular file
        Captured,      ///< by its pin, whatever its time is
        OtherContent,  ///< of the build-id of its pin, but not that image
        OtherImage     ///< not that of its pin
    };

    std::string name;  ///< of the CPU or application
    std::string path;
    std::int64_t recorded = 0;                  ///< modification time
    std::optional<std::int64_t> modified = {};  ///< of the file on disk, nothing where there is none
    int diskError = 0;                          ///< the `errno` that tells why it can't be looked at
    bool isRegular = true;                      ///< false: something else is there, which is no image
    std::optional<ImageIdentity> pin = {};      ///< the image that was captured, where the capture has it pinned
    std::optional<PinMatch> match = {};         ///< what the file is to its pin; nothing: nobody has asked

    /// Sets `modified`, `diskError` and `isRegular`, and forgets `match`.
    void LookAtDisk();
    /// Sets `match`, where there is a pin and a file. Throws Failure for one that can't be read.
    void HoldAgainstPin(ImageExaminer& examiner);
    /// It is what was captured, as far as is known.
    bool IsPresent() const { return DiskState() == State::Present || DiskState() == State::Captured; }
    /// There is a file, whichever it is.
    bool IsThere() const { return DiskState() != State::Missing && DiskState() != State::Unknown; }
    State DiskState() const;
    const char* DiskStateName() const;
    /// Why the state is Unknown: a clause.
    std::string WhyUnknown() const;
    std::string Key() const { return name; }

    template <class Visitor>
    void Visit(Visitor&& visit) const {
        visit(Field{"name"}, name);
        visit(Field{"path"}, path);
        visit(Field{"recorded", Unit::UnixTime}, recorded);
        visit(Field{"state", Unit::None, true}, std::string(DiskStateName()));
        visit(Field{"modified", Unit::UnixTime, true}, modified);
    }
};

struct Configuration {
    std::vector<Property> properties;  ///< all of them, in the order of the settings text
    std::vector<ScUsecase> sc;
    std::vector<CptUsecase> cpt;
    std::vector<PmiUsecase> pmi;
    std::vector<ObjectFile> objectFiles;

    /// Calls `visit(kind, list)` with the member that holds the use cases of each kind.
    template <class Visitor>
    static void ForEachKind(Visitor&& visit) {
        visit(Zu::Wep::Trace::UsecaseKind::Sc, &Configuration::sc);
        visit(Zu::Wep::Trace::UsecaseKind::Cpt, &Configuration::cpt);
        visit(Zu::Wep::Trace::UsecaseKind::Pmi, &Configuration::pmi);
    }
    std::size_t UsecaseCount() const {
        std::size_t count = 0;
        ForEachKind([&](auto /*kind*/, auto list) { count += (this->*list).size(); });
        return count;
    }
    /// What a settings file, and the plug-in's interfaces, can tell of it.
    Configuration WithoutObjectFiles() const {
        Configuration others = *this;
        others.objectFiles.clear();
        return others;
    }
};

}  // namespace stmdcm
