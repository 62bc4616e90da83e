#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include "trace/usecase/CTUsecaseRecord.h"
#include "trace/usecase/PMIUsecaseRecord.h"
#include "trace/usecase/UsecaseRecord.h"

namespace Zu::Wep::Trace {

struct BlockText;
class TextReporter;

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
    void CopyFrom(const UsecaseRecords& others);

    /// Replaces the use cases by those of a text, which every record reads for itself.
    void Read(const BlockText& blocks, TextReporter* reporter);
};

}  // namespace Zu::Wep::Trace
