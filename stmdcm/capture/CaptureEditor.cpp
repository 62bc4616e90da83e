#include "stmdcm/capture/CaptureEditor.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/ChangeNumber.h"
#include "trace/format/RetiredSection.h"
#include "trace/tdf/AppendAt.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// Tells a file that can't be edited at all from one that can't be written.
const std::string& CheckedPath(const std::string& path) {
    const CaptureFile file(path);
    return path;
}

}  // namespace

CaptureEditor::CaptureEditor(const std::string& path, ChangeMode mode)
    : m_mode(mode),
      m_file(CheckedPath(path)),
      m_fileSize(m_file.File().Size().value_or(0)),
      m_end(FindEnd()),
      m_container(path) {
    RequireReachableEnd();
    EndInterruptedSaves();
}

/// They get their names before anything else, since these decide which sections are read.
void CaptureEditor::EndInterruptedSaves() {
    if (m_end.names.empty()) {
        return;
    }
    if (m_mode != ChangeMode::Write) {
        throw Failure(m_file.Path(),
                      "an interrupted save in the file is to be ended first, which decides what the file holds; a "
                      "change that is not a dry run does that");
    }
    if (!WriteFields(m_file.File(), m_end.names)) {
        const int error = errno;
        throw Failure(m_file.Path(),
                      fmt::format("an interrupted save in the file can't be ended: {}; the configuration "
                                  "before it is in force, or its own",
                                  ZU_WEP::ErrnoText(error)));
    }
    m_container = Container(m_file.Path());
}

/// The end as it is to be.
ChainEnd CaptureEditor::FindEnd() const {
    FileSectionSource source(m_file.File());
    const ChainEnd end = FindChainEnd(source, m_fileSize, ChainLock::Held);
    if (end.stop == ScanStop::ReadError) {
        const int error = errno;
        throw Failure(m_file.Path(),
                      fmt::format("the file can't be read at offset {}: {}", end.stopOffset, ZU_WEP::ErrnoText(error)))
            .At(end.stopOffset);
    }
    return end;
}

CaptureEditor::Plan CaptureEditor::Prepare(const std::vector<NewSection>& sections, ChangeMark mark) const {
    mark.number = mark.number == 0 ? NextChangeNumber(m_container) : mark.number;
    Plan plan;
    for (const NewSection& section : sections) {
        const std::vector<const Section*> old = InUse(section);
        if (old.empty()) {  // Nothing hides the new section while it is written, so it begins as a retired one.
            plan.switches.push_back({m_end.offset + plan.size, section.version, section.name});
        }
        // The oldest, which is the one that is read, goes last: the others must not come up in its place.
        for (auto each = old.rbegin(); each != old.rend(); ++each) {
            plan.switches.push_back({(*each)->offset, RetiredVersion(**each, mark), section.name});
        }
        plan.sections.push_back(Encode(section, old.empty() ? NeverInForce(section.version) : section.version));
        plan.size += plan.sections.back().start.size() + section.payload.size();
    }
    if (m_end.offset > kMaxFileSize || plan.size > kMaxFileSize - m_end.offset) {
        throw Failure(m_file.Path(), fmt::format("the capture would grow past 4 GiB; {}", WhatIsChanged()));
    }
    return plan;
}

bool CaptureEditor::Replace(const std::vector<NewSection>& sections, ChangeMark mark) {
    const Plan plan = Prepare(sections, mark);
    if (m_mode == ChangeMode::Write) {
        Write(plan);
    }
    return m_mode == ChangeMode::Write;
}

void CaptureEditor::Write(const Plan& plan) {
    Append(plan);
    std::string before;
    for (std::size_t i = 0; i < plan.switches.size(); ++i) {
        before = i > 0 && plan.switches[i].name != plan.switches[i - 1].name ? plan.switches[i - 1].name : before;
        Switch(plan.switches[i], before);
    }
    if (!m_file.Close()) {
        throw Failure(m_file.Path(),
                      fmt::format("the capture was changed, but the system reports an error on closing it: {}",
                                  ZU_WEP::ErrnoText(errno)));
    }
}

void CaptureEditor::RequireReachableEnd() const {
    const std::uint64_t checkedEnd = m_end.lastSection + (m_end.lengths.empty() ? 1 : 0);
    for (const Section& section : m_container.Sections()) {
        // What follows a short one overlaps it, so a write may not mean what it should.
        if (section.IsTooShort() && section.offset < checkedEnd) {
            throw Failure(
                m_file.Path(),
                fmt::format(
                    "the length of the section at offset {} is wrong; nothing was changed; run stmdcm recover first",
                    section.offset))
                .At(section.offset);
        }
    }
    if (m_container.HasMore()) {
        throw Failure(m_file.Path(),
                      fmt::format("there are more than {} sections, so what would stand behind them could "
                                  "not be found; nothing was changed",
                                  Container::kMaxSections));
    }
    if (!m_end.reachable && m_container.Stop() == ScanStop::Wrap) {
        throw Failure(m_file.Path(),
                      "the capture reaches past 4 GiB, so nothing behind it could be found; nothing was changed")
            .At(m_container.StopOffset());
    }
    if (!m_end.reachable) {
        throw Failure(
            m_file.Path(),
            fmt::format(
                "the row of sections is broken at offset {} ({}), so nothing behind it could be found; nothing was "
                "changed; run stmdcm recover first",
                m_container.StopOffset(), ScanStopText(m_container.Stop())))
            .At(m_container.StopOffset());
    }
}

/// All that a search would find if those in front of them were not there.
std::vector<const Section*> CaptureEditor::InUse(const NewSection& section) const {
    std::vector<const Section*> found;
    for (const Section& each : m_container.Sections()) {
        if (each.offset > m_end.lastSection || (each.use != SectionUse::Read && each.use != SectionUse::Shadowed) ||
            each.version != section.version || !m_container.HasName(each, section.name)) {
            continue;
        }
        if (each.use == SectionUse::Read && m_container.IsTorn(each)) {
            throw Failure(m_file.Path(),
                          fmt::format("the end of the file cuts section {} off; {}; run stmdcm recover first",
                                      section.name, WhatIsChanged()))
                .At(each.offset);
        }
        found.push_back(&each);
    }
    return found;
}

CaptureEditor::HiddenSection CaptureEditor::Encode(const NewSection& section, std::uint32_t version) const {
    const std::uint64_t length = SectionHeader::kSize + section.name.size() + section.payload.size();
    if (length > kMaxSectionLength) {
        throw Failure(m_file.Path(), fmt::format("the new section {} would be over 128 MiB, which no reader passes; {}",
                                                 section.name, WhatIsChanged()));
    }
    return {EncodeSectionStart(static_cast<std::uint32_t>(length), section.name, version), section.payload};
}

void CaptureEditor::Append(const Plan& plan) {
    if (m_file.File().Size() != m_fileSize) {
        throw Failure(
            m_file.Path(),
            fmt::format("another program has written to the file meanwhile; {}; please try again", WhatIsChanged()));
    }
    bool isDone = MendChain(m_file.File(), m_end);
    std::uint64_t mendedSize = m_fileSize;
    for (const FieldWrite& field : m_end.lengths) {
        mendedSize = std::max(mendedSize, field.offset + field.bytes.size());
    }
    std::uint64_t written = 0;
    for (const auto& [start, payload] : plan.sections) {
        const std::uint64_t end = m_end.offset + written;
        const std::uint64_t fileSize = written == 0 ? mendedSize : std::max(mendedSize, end);
        isDone = isDone && AppendAt(m_file.File(), fileSize, end, {start, payload}) == AppendResult::Done;
        if (!isDone) {
            const int error = errno;
            if (written > 0) {
                CutBack(m_file.File(), mendedSize, m_end.offset, written);
            }
            throw Failure(m_file.Path(),
                          fmt::format("the file can't be written: {}; {}", ZU_WEP::ErrnoText(error), WhatIsChanged()));
        }
        written += start.size() + payload.size();
    }
}

const char* CaptureEditor::WhatIsChanged() const {
    return m_end.names.empty() ? "nothing was changed"
                               : "an interrupted save in it was ended, nothing else was changed";
}

/// Synced one by one, so that no loss of power can let a later one hold without the earlier ones.
void CaptureEditor::Switch(const VersionWrite& write, const std::string& before) {
    const std::string version = EncodeSectionVersion(write.version);
    if (!m_file.File().WriteAt(write.sectionOffset + SectionHeader::kVersionOffset, {version}) ||
        !m_file.File().SyncData()) {
        // Nothing is taken back: after a failed write nobody knows which of the sections is read.
        const int error = errno;
        throw Failure(
            m_file.Path(),
            fmt::format("putting the new {} in force failed: {}; the old one or the new one is in force, whole{}: "
                        "stmdcm history tells",
                        write.name, ZU_WEP::ErrnoText(error),
                        before.empty() ? "" : fmt::format(", and the new {} is", before)));
    }
}

}  // namespace stmdcm
