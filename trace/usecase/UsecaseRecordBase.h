#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "trace/format/BlockReader.h"
#include "trace/format/BlockWriter.h"

namespace Zu::Wep::Trace {

/// What the three records share: the array of use cases and every operation on it. `RecordIF` is the kind's record
/// interface, `Info` its use case. The array is the only field; elements are only ever copy-constructed, never
/// assigned. The bodies are in the library (UsecaseRecordBody.h): hosts call through the table.
template <class RecordIF, class Info>
class UsecaseRecordBase : public RecordIF {
  public:
    using Interface = typename RecordIF::UsecaseInterface;
    static constexpr UsecaseKind kKind = Info::kKind;

    unsigned int GetNumUsecases() const override;
    void RemoveUsecase(int job) override;
    void CleaupUsecases(bool keepThoseWithJob) override;
    void AddUsecase(const Interface* usecase) override;
    Interface* GetUsecase(unsigned int index) override;
    Interface* GetAUsecaseInfo() override;
    int SaveAllRecords(std::string& out) const override;
    int RetrieveAllRecords(std::istringstream& in) override;

    /// `RetrieveAllRecords` out of lines.
    int Retrieve(BlockLines& in);
    /// `SaveAllRecords`, telling a reporter what does not read back as it was.
    void Save(std::string& out, BlockWriteReporter& reporter) const;

    const std::vector<Info>& Usecases() const { return m_usecases; }
    void CopyFrom(const UsecaseRecordBase& other);

  protected:
    template <class Predicate>
    void KeepOnly(Predicate keep);

    std::vector<Info> m_usecases;

  private:
    static Info s_shared;
};

}  // namespace Zu::Wep::Trace
