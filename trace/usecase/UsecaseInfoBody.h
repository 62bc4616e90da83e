#pragma once

// What UsecaseInfoBase.h declares; each kind's source instantiates it, behind the table of its fields.

#include "trace/format/BlockField.h"
#include "trace/usecase/UsecaseInfoBase.h"
#include "trace/usecase/UsecaseLog.h"

namespace Zu::Wep::Trace {

template <class Info>
constexpr std::span<const BlockField<Info>> FieldsOf() {
    return UsecaseFields<Info>::kTable;
}

template <class Info, class Interface>
int UsecaseInfoBase<Info, Interface>::DoExport(std::string& out) const {
    UsecaseLog log;
    Self().Export(out, log);
    return 0;
}

template <class Info, class Interface>
int UsecaseInfoBase<Info, Interface>::DoImport(const char* line, std::istringstream& in) {
    BlockLines lines(Info::kKind, in);
    return Self().Import(line, lines);
}

template <class Info, class Interface>
int UsecaseInfoBase<Info, Interface>::ProccessLine(const char* line, std::istringstream& in) {
    return StoreLine(Self(), FieldsOf<Info>(), line, BlockLines(Info::kKind, in));
}

template <class Info, class Interface>
int UsecaseInfoBase<Info, Interface>::SearchForNextUsecase(const char* line, std::istringstream& in) {
    BlockLines lines(Info::kKind, in);
    return SearchForNextBlock(line, lines);
}

template <class Info, class Interface>
void UsecaseInfoBase<Info, Interface>::Export(std::string& out, BlockWriteReporter& reporter) const {
    AppendBlockLine(out, kBlockOpen);
    AppendKeyLine(out, "type", NamesOf(Info::kKind).Type(), reporter);
    WriteFields(out, Self(), FieldsOf<Info>(), reporter);
    AppendBlockLine(out, kBlockClose);
}

template <class Info, class Interface>
int UsecaseInfoBase<Info, Interface>::Import(std::string_view line, BlockLines& in) {
    return ReadBlock(
        line, in, [](std::string_view first) { return first == NamesOf(Info::kKind).typeLine; },
        [&](std::string_view& current) { return ToLineResult(StoreLine(Self(), FieldsOf<Info>(), current, in)); });
}

template <class Info, class Interface>
std::vector<std::string_view> UsecaseInfoBase<Info, Interface>::Keys() {
    return KeysOf(FieldsOf<Info>());
}

}  // namespace Zu::Wep::Trace
