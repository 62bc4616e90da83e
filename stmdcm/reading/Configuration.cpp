#include "stmdcm/reading/Configuration.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/pins/ImageExaminer.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

std::vector<Counter> CountersOf(UsecaseInfoIF& usecase) {
    std::vector<Counter> counters;
    for (unsigned i = 0; i < usecase.GetNumCounters(); ++i) {
        const _CounterLineInfo& counter = *usecase.GetCounterInfo(i);
        counters.push_back({counter.number, counter.text});
    }
    return counters;
}

std::vector<Formula> FormulasOf(UsecaseInfoIF& usecase) {
    std::vector<Formula> formulas;
    for (unsigned i = 0; i < usecase.GetNumFormulars(); ++i) {
        const FormulaInfo& formula = *usecase.GetFormula(i);
        formulas.push_back({formula.name, formula.formula, formula.unit, formula.tagNumber, formula.ofmask});
    }
    return formulas;
}

std::uint32_t DataOptionsOf(const CTUsecaseInfoIF& usecase) {
    std::uint32_t options = 0;
    for (std::uint32_t bit = 0; bit <= CT_DATA_OPTION_LAST; ++bit) {
        options |= std::uint32_t{usecase.IsOptionEnabled(static_cast<eCTDataOption>(bit))} << bit;
    }
    return options;
}

std::string MonitorUsecase::Key() const { return fmt::format("job {}, module {}", job, moduleId); }

void ObjectFile::LookAtDisk() {
    struct stat info {};
    const bool isThere = ::stat(path.c_str(), &info) == 0;
    modified = isThere ? std::optional<std::int64_t>(info.st_mtime) : std::nullopt;
    const bool isGone = !modified && (errno == ENOENT || errno == ENOTDIR);
    diskError = modified || isGone ? 0 : errno;
    isRegular = !isThere || S_ISREG(info.st_mode);
    match.reset();
}

void ObjectFile::HoldAgainstPin(ImageExaminer& examiner) {
    if (pin && modified) {
        match = examiner.Compare(path, *pin);
    }
}

ObjectFile::State ObjectFile::DiskState() const {
    if (!modified || !isRegular) {
        return diskError == 0 && isRegular ? State::Missing : State::Unknown;
    }
    if (match) {
        constexpr State kOfMatch[] = {State::Captured, State::OtherContent, State::OtherImage};
        return kOfMatch[static_cast<std::size_t>(*match)];
    }
    return *modified == recorded ? State::Present : State::Changed;
}

const char* ObjectFile::DiskStateName() const {
    constexpr const char* kNames[] = {
        "same time, not proven",        "changed",      "missing", "unknown", "as captured",
        "same build-id, other content", "another image"};
    return kNames[static_cast<std::size_t>(DiskState())];
}

std::string ObjectFile::WhyUnknown() const {
    return isRegular ? fmt::format("it can't be looked at: {}", ZU_WEP::ErrnoText(diskError))
                     : std::string(kNoRegularFile);
}

}  // namespace stmdcm
