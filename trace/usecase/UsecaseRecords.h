#pragma once

#include "trace/usecase/CTUsecaseRecord.h"
#include "trace/usecase/PMIUsecaseRecord.h"
#include "trace/usecase/UsecaseRecord.h"

namespace Zu::Wep::Trace {

/// The records of one configuration, a record for each kind.
struct UsecaseRecords {
    UsecaseRecord sc;
    CTUsecaseRecord cpt;
    PMIUsecaseRecord pmi;

    /// Calls `visit` with each record, in the order in which a settings text holds them.
    template <class Visit>
    void ForEach(Visit visit) {
        visit(sc);
        visit(cpt);
        visit(pmi);
    }

    /// Replaces the use cases by copies of others.
    void CopyFrom(const UsecaseRecords& others) {
        sc.CopyFrom(others.sc);
        cpt.CopyFrom(others.cpt);
        pmi.CopyFrom(others.pmi);
    }

    /// Replaces the use cases by those of a text, which every record reads for itself.
    void Read(const BlockText& blocks, TextReporter* reporter) {
        ForEach([&](auto& record) {
            BlockLines lines(record.kKind, blocks, reporter);
            record.CleaupUsecases(false);
            record.Retrieve(lines);
        });
    }
};

}  // namespace Zu::Wep::Trace
