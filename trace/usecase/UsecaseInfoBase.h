#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "trace/format/BlockField.h"
#include "trace/usecase/UsecaseLog.h"

namespace Zu::Wep::Trace {

/// What the use cases of all kinds share: their block text (docs/use-case-blocks.md). `Info` is the kind's class, whose
/// `Fields()` is the table of its fields, `Interface` what hosts see of it.
template <class Info, class Interface>
class UsecaseInfoBase : public Interface {
  public:
    /// Appends the block. Returns 0.
    int DoExport(std::string& out) const {
        UsecaseLog log;
        Self().Export(out, log);
        return 0;
    }

    /// Reads one block into this object, which the caller has reset. `line` is the line read last: "{" means that the
    /// block is already open. Returns 0 done, 1 no block of this kind here, -1 bad block.
    int DoImport(const char* line, std::istringstream& in) {
        BlockLines lines(Info::kKind, in);
        return Self().Import(line, lines);
    }

    /// Handles one key line. Returns 0 handled or ignored, 1 no "=" in the line, -1 line too long.
    int ProccessLine(const char* line, std::istringstream& in) {
        return StoreLine(Self(), Info::Fields(), line, BlockLines(Info::kKind, in));
    }

    /// Reads up to and including the next opening line. Returns 0 found, 1 not found.
    static int SearchForNextUsecase(const char* line, std::istringstream& in) {
        BlockLines lines(Info::kKind, in);
        return SearchForNextBlock(line, lines);
    }

    /// `DoExport` and `DoImport` to and from lines, telling a reporter what they meet; of a kind that holds nothing but
    /// fields and must name its type in the first line.
    void Export(std::string& out, BlockWriteReporter& reporter) const {
        AppendBlockLine(out, kBlockOpen);
        AppendKeyLine(out, "type", NamesOf(Info::kKind).Type(), reporter);
        WriteFields(out, Self(), Info::Fields(), reporter);
        AppendBlockLine(out, kBlockClose);
    }
    int Import(std::string_view line, BlockLines& in) {
        return ReadBlock(
            line, in, [](std::string_view first) { return first == NamesOf(Info::kKind).typeLine; },
            [&](std::string_view& current) { return ToLineResult(StoreLine(Self(), Info::Fields(), current, in)); });
    }

    /// The keys that a block sets, in the order of its lines; counters and formulas apart.
    static std::vector<std::string_view> Keys() { return KeysOf(Info::Fields()); }

  protected:
    UsecaseInfoBase() = default;
    UsecaseInfoBase(const UsecaseInfoBase&) = default;
    UsecaseInfoBase& operator=(const UsecaseInfoBase&) = default;
    ~UsecaseInfoBase() = default;  // NOLINT(modernize-use-override): not every interface has a virtual one

  private:
    Info& Self() { return static_cast<Info&>(*this); }
    const Info& Self() const { return static_cast<const Info&>(*this); }
};

}  // namespace Zu::Wep::Trace
