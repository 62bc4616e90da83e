#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <sstream>
#include <string>
#include <vector>

namespace Zu::Wep::Trace {

class BlockLines;
class BlockWriteReporter;
class TextReporter;
struct BlockText;

/// What the three records share: the array of use cases and every operation on it. `RecordIF` is the kind's record
/// interface, `Info` its use case. The array is the only field; elements are only ever copy-constructed, never
/// assigned. The bodies are in the library (UsecaseRecordBody.h): hosts call through the table.
template <class RecordIF, class Info>
class UsecaseRecordBase : public RecordIF {
  public:
    using Interface = typename RecordIF::UsecaseInterface;

    unsigned int GetNumUsecases() const override;
    void RemoveUsecase(int job) override;
    void CleaupUsecases(bool keepThoseWithJob) override;
    void AddUsecase(const Interface* usecase) override;
    Interface* GetUsecase(unsigned int index) override;
    Interface* GetAUsecaseInfo() override;
    int SaveAllRecords(std::string& out) const override;
    int RetrieveAllRecords(std::istringstream& in) override;

    /// Replaces the use cases by those of a text.
    void Read(const BlockText& blocks, TextReporter* reporter);
    /// `SaveAllRecords`, telling a reporter what does not read back as it was.
    void Save(std::string& out, BlockWriteReporter& reporter) const;

    const std::vector<Info>& Usecases() const { return m_usecases; }
    void CopyFrom(const UsecaseRecordBase& other);

  protected:
    template <class Predicate>
    void KeepOnly(Predicate keep);

    std::vector<Info> m_usecases;

  private:
    void Retrieve(BlockLines& in);

    static Info s_shared;
};

}  // namespace Zu::Wep::Trace
