#pragma once

#include <array>
#include <sstream>
#include <string>

#include "trace/usecase/CTUsecaseRecord.h"
#include "trace/usecase/PMIUsecaseRecord.h"
#include "trace/usecase/UsecaseRecord.h"

namespace Zu::Wep::Trace {

template <class Record>
std::string Export(const Record& record) {
    std::string text;
    record.SaveAllRecords(text);
    return text;
}

/// The three records of a manager, each reading the same text.
struct Records {
    UsecaseRecord sc;
    CTUsecaseRecord cpt;
    PMIUsecaseRecord pmi;

    Records() = default;
    explicit Records(const std::string& text) {
        Read(sc, text);
        Read(cpt, text);
        Read(pmi, text);
    }

    template <class Record>
    static void Read(Record& record, const std::string& text) {
        std::istringstream in(text);
        record.RetrieveAllRecords(in);
    }

    std::array<unsigned, 3> Counts() const { return {sc.GetNumUsecases(), cpt.GetNumUsecases(), pmi.GetNumUsecases()}; }
    std::string Text() const { return Export(sc) + Export(cpt) + Export(pmi); }
};

}  // namespace Zu::Wep::Trace
