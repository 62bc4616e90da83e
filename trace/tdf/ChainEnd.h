#pragma once

// Where the chain of sections ends, and what of it is mended before something is appended, as docs/tdf.md, "Saving",
// tells. Takes no lock: that is the caller's.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "trace/format/SectionScanner.h"

namespace Zu::Wep::Trace {

/// Whether the file's lock is held: without it another may be writing what looks broken, so no length is mended. Names
/// are: what they bring in force is stored by then, and a save behind one must not come in force with its other half.
enum class ChainLock { Held, NotHeld };

struct FieldWrite {
    std::uint64_t offset = 0;
    std::string bytes;
};

/// Where an appended section goes, once what is to be written before is written.
struct ChainEnd {
    std::uint64_t offset = 0;  ///< behind the end of the file where the last section is; in front of a tail of zeros
    bool reachable = false;    ///< whether a search comes to a section there
    std::uint64_t lastSection = 0;    ///< what a search finds behind this one now is none, once the chain is mended
    std::vector<FieldWrite> names;    ///< saves interrupted in their last step get their name
    std::vector<FieldWrite> lengths;  ///< the last section gets one that reaches to `offset`; one at most
    ScanStop stop = ScanStop::None;   ///< why and where a search ends now; ReadError: nothing else is known
    std::uint64_t stopOffset = 0;
};

ChainEnd FindChainEnd(SectionSource& source, std::uint64_t fileSize, ChainLock lock);

/// Writes and syncs; `errno` tells a failure.
bool WriteFields(const ZU_WEP::PosixFile& file, std::span<const FieldWrite> fields);

/// Mends the chain: every field.
bool MendChain(const ZU_WEP::PosixFile& file, const ChainEnd& end);

}  // namespace Zu::Wep::Trace
