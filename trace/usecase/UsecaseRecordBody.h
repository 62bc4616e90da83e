#pragma once

// What UsecaseRecordBase.h declares; each kind's source instantiates it.

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "trace/format/BlockReader.h"
#include "trace/format/BlockWriter.h"
#include "trace/usecase/UsecaseRecordBase.h"

namespace Zu::Wep::Trace {

template <class RecordIF, class Info>
Info UsecaseRecordBase<RecordIF, Info>::s_shared;

template <class RecordIF, class Info>
unsigned int UsecaseRecordBase<RecordIF, Info>::GetNumUsecases() const {
    return static_cast<unsigned int>(m_usecases.size());
}

template <class RecordIF, class Info>
void UsecaseRecordBase<RecordIF, Info>::RemoveUsecase(int job) {
    KeepOnly([job](const Info& usecase) { return usecase.GetJobNum() != job; });
}

template <class RecordIF, class Info>
void UsecaseRecordBase<RecordIF, Info>::CleaupUsecases(bool keepThoseWithJob) {
    KeepOnly([keepThoseWithJob](const Info& usecase) { return keepThoseWithJob && usecase.GetJobNum() >= 0; });
}

template <class RecordIF, class Info>
void UsecaseRecordBase<RecordIF, Info>::AddUsecase(const Interface* usecase) {
    m_usecases.push_back(static_cast<const Info&>(*usecase));
}

template <class RecordIF, class Info>
auto UsecaseRecordBase<RecordIF, Info>::GetUsecase(unsigned int index) -> Interface* {
    return index < m_usecases.size() ? &m_usecases[index] : nullptr;
}

template <class RecordIF, class Info>
auto UsecaseRecordBase<RecordIF, Info>::GetAUsecaseInfo() -> Interface* {
    s_shared.CleanUp();
    return &s_shared;
}

template <class RecordIF, class Info>
int UsecaseRecordBase<RecordIF, Info>::SaveAllRecords(std::string& out) const {
    int result = 0;
    for (const Info& usecase : m_usecases) {
        result = usecase.DoExport(out);  // Hosts get the last one's result (docs/host-guide.md).
    }
    return result;
}

template <class RecordIF, class Info>
int UsecaseRecordBase<RecordIF, Info>::RetrieveAllRecords(std::istringstream& in) {
    BlockLines lines(Info::kKind, in);
    Retrieve(lines);
    return 0;
}

template <class RecordIF, class Info>
void UsecaseRecordBase<RecordIF, Info>::Read(const BlockText& blocks, TextReporter* reporter) {
    BlockLines lines(Info::kKind, blocks, reporter);
    CleaupUsecases(false);
    Retrieve(lines);
}

template <class RecordIF, class Info>
void UsecaseRecordBase<RecordIF, Info>::Retrieve(BlockLines& in) {
    std::string_view line;
    do {
        Info usecase;
        const int result = usecase.Import(line, in);
        if (result < 0) {
            in.Tell(&TextReporter::OnBlocksEnd, BlocksEnd::BadBlock);
            return;
        }
        if (result == 0) {
            m_usecases.push_back(std::move(usecase));
        }
    } while (in.Next(line));
    in.Tell(&TextReporter::OnBlocksEnd, in.IsAtEnd() ? BlocksEnd::TextEnds : BlocksEnd::BlankLine);
}

template <class RecordIF, class Info>
void UsecaseRecordBase<RecordIF, Info>::Save(std::string& out, BlockWriteReporter& reporter) const {
    for (const Info& usecase : m_usecases) {
        usecase.Export(out, reporter);
    }
}

template <class RecordIF, class Info>
void UsecaseRecordBase<RecordIF, Info>::CopyFrom(const UsecaseRecordBase& other) {
    std::vector<Info>(other.m_usecases).swap(m_usecases);
}

/// All stay where they are when memory runs out.
template <class RecordIF, class Info>
template <class Predicate>
void UsecaseRecordBase<RecordIF, Info>::KeepOnly(Predicate keep) {
    std::vector<Info> kept;
    std::copy_if(m_usecases.begin(), m_usecases.end(), std::back_inserter(kept), keep);
    m_usecases.swap(kept);
}

}  // namespace Zu::Wep::Trace
