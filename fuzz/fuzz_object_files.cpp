// Any bytes as the entries of a capture's object files: what is read is what stands there, and no entry is passed over.

#include "fuzz/Support.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "trace/format/ObjectFileSection.h"

using namespace Zu::Wep::Trace;
using namespace stmdcm;
using stmdcm_fuzz::Require;

namespace {

/// Found without the reader: two zero bytes with a time stamp behind them.
bool HoldsAnEntry(std::string_view bytes) {
    const std::size_t name = bytes.find('\0');
    const std::size_t path = name == std::string_view::npos ? name : bytes.find('\0', name + 1);
    return path != std::string_view::npos && bytes.size() - path > sizeof(std::int64_t);
}

void CheckFindings(const std::string& payload, bool isWhole) {
    Findings findings;
    std::vector<ObjectFile> parsed;
    Require(ParseObjectFiles(payload, parsed) == isWhole, "both readers find the same end");
    const std::vector<ObjectFile> files = ReadObjectFiles(payload, {}, findings);
    Require(files.size() == parsed.size(), "both readers find the same entries");
    Require(findings.Count(Kind("O-TRUNCATED")) == (isWhole ? 0 : 1), "a payload that is not filled is told");
    std::size_t withoutPath = 0;
    for (const ObjectFile& file : files) {
        withoutPath += file.path.empty() ? 1 : 0;
    }
    Require(findings.Count(Kind("O-EMPTY-PATH")) == withoutPath, "each entry without a path is told");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string payload = stmdcm_fuzz::Text(data, size);
    std::string rewritten;
    const bool isWhole =
        ReadObjectFileEntries(payload, [&](std::string_view name, std::string_view path, std::int64_t timeStamp) {
            AppendObjectFileEntry(rewritten, {std::string(name), std::string(path), timeStamp});
        });
    Require(payload.starts_with(rewritten), "entries are written as they were read");
    Require(isWhole == (rewritten.size() == payload.size()), "whole when nothing is left over");
    Require(!HoldsAnEntry(std::string_view(payload).substr(rewritten.size())), "no whole entry is dropped");
    CheckFindings(payload, isWhole);
    return 0;
}
