#include "stmdcm/recover/RecoveryWriter.h"

#include "stmdcm/recover/HeaderRules.h"
#include "trace/format/SectionLayout.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

class PieceWriter {
  public:
    PieceWriter(const CaptureFile& from, Payloads payloads, ByteSink& to, const OnCopied& onCopied)
        : m_from(from), m_rules(from), m_payloads(payloads), m_to(to), m_onCopied(onCopied) {}

    void Copy(std::uint64_t offset, std::uint64_t length) {
        CopyRange(m_from, offset, length, m_to, [&](std::uint64_t count) { m_onCopied(m_done + count); });
        m_done += length;
    }

    void CopySections(const RecoveryPlan::Extent& extent) {
        std::uint64_t offset = extent.offset;
        const std::uint64_t end = extent.offset + extent.length;
        while (m_payloads != Payloads::All && offset < end) {
            const auto section = m_rules.HeaderAt(offset);
            if (!section || section->IsTooShort() || section->End() > end) {
                break;  // the file has been changed meanwhile
            }
            Copy(offset, SectionHeader::kSize);
            CopyBehindHeader(*section, section->End());
            offset = section->End();
        }
        Copy(offset, end - offset);
    }

    void CopyBehindHeader(const Section& section, std::uint64_t end) {
        const std::uint64_t begin = section.offset + SectionHeader::kSize;
        if (m_payloads == Payloads::All || IsOfConfiguration(section)) {
            Copy(begin, end - begin);
            return;
        }
        Copy(begin, section.nameLength);
        m_to.WriteZeros(end - section.PayloadOffset());
        m_done += end - section.PayloadOffset();
    }

  private:
    bool IsOfConfiguration(const Section& section) const { return IsWantedName(ComparedName(m_rules.NameOf(section))); }

    const CaptureFile& m_from;
    HeaderRules m_rules;
    Payloads m_payloads;
    ByteSink& m_to;
    const OnCopied& m_onCopied;
    std::uint64_t m_done = 0;
};

}  // namespace

void WriteRecovery(const CaptureFile& from, const RecoveryPlan& plan, Payloads payloads, ByteSink& to,
                   const OnCopied& onCopied) {
    PieceWriter writer(from, payloads, to, onCopied);
    to.Write(kTDFIdentifier);
    for (const RecoveryPlan::Extent& extent : plan.whole) {
        writer.CopySections(extent);
    }
    for (const auto& [section, length] : plan.repaired) {
        to.Write(EncodeSectionHeader({length, section.version, section.nameLength}));
        writer.CopyBehindHeader(section, section.offset + length);
    }
    for (const RecoveryPlan::Extent& extent : plan.overLimit) {
        // No search passes them, so check looks into them for sections that are lost.
        writer.Copy(extent.offset, extent.length);
    }
}

}  // namespace stmdcm
