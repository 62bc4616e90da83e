#pragma once

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "trace/format/BlockReader.h"
#include "trace/format/BlockWriter.h"

namespace Zu::Wep::Trace {

/// What the three records share: the array of use cases and every operation on it. `RecordIF` is the kind's record
/// interface, `Info` its use case. The array is the only field; elements are only ever copy-constructed, never
/// assigned.
template <class RecordIF, class Info>
class UsecaseRecordBase : public RecordIF {
  public:
    using Interface = typename RecordIF::UsecaseInterface;
    static constexpr UsecaseKind kKind = Info::kKind;

    unsigned int GetNumUsecases() const override { return static_cast<unsigned int>(m_usecases.size()); }

    void RemoveUsecase(int job) override {
        KeepOnly([job](const Info& usecase) { return usecase.GetJobNum() != job; });
    }

    void CleaupUsecases(bool keepThoseWithJob) override {
        KeepOnly([keepThoseWithJob](const Info& usecase) { return keepThoseWithJob && usecase.GetJobNum() >= 0; });
    }

    void AddUsecase(const Interface* usecase) override { m_usecases.push_back(static_cast<const Info&>(*usecase)); }

    Interface* GetUsecase(unsigned int index) override {
        return index < m_usecases.size() ? &m_usecases[index] : nullptr;
    }

    Interface* GetAUsecaseInfo() override {
        s_shared.CleanUp();
        return &s_shared;
    }

    int SaveAllRecords(std::string& out) const override {
        int result = 0;
        for (const Info& usecase : m_usecases) {
            result = usecase.DoExport(out);  // Hosts get the last one's result (docs/host-guide.md).
        }
        return result;
    }

    int RetrieveAllRecords(std::istringstream& in) override {
        BlockLines lines(kKind, in);
        return Retrieve(lines);
    }

    /// `RetrieveAllRecords` out of lines.
    int Retrieve(BlockLines& in) {
        std::string_view line;
        do {
            Info usecase;
            const int result = usecase.Import(line, in);
            if (result < 0) {
                in.Tell(&TextReporter::OnBlocksEnd, BlocksEnd::BadBlock);
                return 0;
            }
            if (result == 0) {
                m_usecases.push_back(std::move(usecase));
            }
        } while (in.Next(line));
        in.Tell(&TextReporter::OnBlocksEnd, in.IsAtEnd() ? BlocksEnd::TextEnds : BlocksEnd::BlankLine);
        return 0;
    }

    /// `SaveAllRecords`, telling a reporter what does not read back as it was.
    void Save(std::string& out, BlockWriteReporter& reporter) const {
        for (const Info& usecase : m_usecases) {
            usecase.Export(out, reporter);
        }
    }

    const std::vector<Info>& Usecases() const { return m_usecases; }
    void CopyFrom(const UsecaseRecordBase& other) { std::vector<Info>(other.m_usecases).swap(m_usecases); }

  protected:
    /// All stay where they are when memory runs out.
    template <class Predicate>
    void KeepOnly(Predicate keep) {
        std::vector<Info> kept;
        std::copy_if(m_usecases.begin(), m_usecases.end(), std::back_inserter(kept), keep);
        m_usecases.swap(kept);
    }

    std::vector<Info> m_usecases;

  private:
    inline static Info s_shared;
};

}  // namespace Zu::Wep::Trace
