#pragma once

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "trace/usecase/BlockReader.h"

namespace Zu::Wep::Trace {

/// What the three records share: the array of use cases and every operation on it. `RecordIF` is the kind's record
/// interface, `Info` its use case. The array is the only field; elements are only ever copy-constructed, never
/// assigned.
template <class RecordIF, class Info>
class UsecaseRecordBase : public RecordIF {
  public:
    using Interface = typename RecordIF::UsecaseInterface;

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

    int SaveAllRecords(std::string& out) const override {
        int result = 0;
        for (const Info& usecase : m_usecases) {
            result = usecase.DoExport(out);  // Hosts get the last one's result (docs/host-guide.md).
        }
        return result;
    }

    int RetrieveAllRecords(std::istringstream& in) override {
        std::string line;
        do {
            Info usecase;
            const int result = usecase.DoImport(line.c_str(), in);
            if (result < 0) {
                break;
            }
            if (result == 0) {
                m_usecases.push_back(std::move(usecase));
            }
        } while (ReadBlockLine(line, in));
        return 0;
    }

  protected:
    /// All stay where they are when memory runs out.
    template <class Predicate>
    void KeepOnly(Predicate keep) {
        std::vector<Info> kept;
        std::copy_if(m_usecases.begin(), m_usecases.end(), std::back_inserter(kept), keep);
        m_usecases.swap(kept);
    }

    std::vector<Info> m_usecases;
};

}  // namespace Zu::Wep::Trace
