#include "trace/tdf/ChainEnd.h"

#include <algorithm>
#include <array>
#include <optional>

#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"
#include "trace/format/UnfinishedSection.h"
#include "trace/tdf/AppendAt.h"

namespace Zu::Wep::Trace {

namespace {

/// Of our sections, with their names.
constexpr std::uint64_t kLongestStart = SectionHeader::kSize + kStmSection.name.size();

bool IsOurs(std::string_view name) {
    return name == kCommonSection.name || name == kStmSection.name || IsUnfinishedName(name);
}

/// What is kept of each section on the way, and no string: a walk passes 100,000 of them.
struct Passed {
    std::uint64_t offset;
    std::uint64_t payloadOffset;
    std::uint32_t length;
    bool isOurs;
    bool isUnfinished;
};

/// How the header of an STMDECODERINFO goes on behind its length.
std::string StmStart() {
    return EncodeSectionStart(0, kStmSection.name, kStmSection.version).substr(SectionHeader::kLengthSize);
}

class EndFinder {
  public:
    EndFinder(SectionSource& source, std::uint64_t fileSize, ChainLock lock)
        : m_source(source), m_fileSize(fileSize), m_mends(lock == ChainLock::Held) {}

    ChainEnd Find() {
        Walk();
        if (EndBehindOurs()) {
            return std::move(m_end);
        }
        if (m_end.stop == ScanStop::EndOfFile) {
            EndAt(m_end.stopOffset);
        } else if (m_end.stop != ScanStop::ReadError && !EndAtZeros() && !EndBehindTorn() && !EndOverLostSector()) {
            m_end.offset = m_fileSize;
        }
        return std::move(m_end);
    }

  private:
    void Walk() {
        SectionScanner scanner(m_source);
        for (SectionInfo section; scanner.Next(section);) {
            if (m_isPending && section.Has(kStmSection) && IsWholeList(m_last->payloadOffset, section.offset)) {
                m_end.names.push_back({m_last->offset + SectionHeader::kSize, std::string(kCommonSection.name)});
            }
            const bool isOurs = IsOurs(section.name);
            const bool isUnfinished = isOurs && IsUnfinishedName(section.name);
            m_isPending = isUnfinished && section.version == kCommonSectionVersion;
            m_beforeLast = m_last;
            m_last = {section.offset, section.payloadOffset, section.length, isOurs, isUnfinished};
        }
        m_end.stop = m_end.stop == ScanStop::ReadError ? m_end.stop : scanner.Stop();
        m_end.stopOffset = scanner.StopOffset();
        m_end.lastSection = m_last ? m_last->offset : 0;
    }

    /// The bytes from `begin` to `end`; zeros behind the end of the file.
    std::string Bytes(std::uint64_t begin, std::uint64_t end) {
        std::string bytes(end - std::min(begin, end), '\0');
        Read(begin, bytes.data(), bytes.size());
        return bytes;
    }

    /// Whether these are a list of object files up to its end, and not one with the other section of its save behind,
    /// or with the zeros that a save begins with.
    bool IsWholeList(std::uint64_t begin, std::uint64_t end) {
        const std::string bytes = Bytes(begin, end);
        bool hasBlank = false;
        const auto note = [&](std::string_view name, std::string_view fileName, std::int64_t) {
            hasBlank = hasBlank || (name.empty() && fileName.empty());
        };
        return ReadObjectFileEntries(bytes, note) && !hasBlank && bytes.find(StmStart()) == bytes.npos;
    }

    /// Whether between `begin` and `end` an STMDECODERINFO stands that reaches to `end`: the back of a save.
    bool HoldsBackOfSave(std::uint64_t begin, std::uint64_t end) {
        const std::string bytes = Bytes(begin, end), start = StmStart();
        for (auto at = bytes.find(start); at != bytes.npos; at = bytes.find(start, at + 1)) {
            const std::size_t header = at - SectionHeader::kLengthSize;
            if (at >= SectionHeader::kLengthSize &&
                DecodeSectionLength(bytes.data() + header) == bytes.size() - header) {
                return true;
            }
        }
        return false;
    }

    /// Whether the length of an unfinished section is one that a save gives it.
    bool HasItsLength(const Passed& unfinished) {
        const std::uint64_t end = unfinished.offset + unfinished.length;
        const std::uint64_t behind = end + SectionHeader::kLengthSize;
        return HoldsBackOfSave(unfinished.payloadOffset, std::max(end, unfinished.payloadOffset)) ||
               Bytes(behind, behind + StmStart().size()) == StmStart();
    }

    /// The last section in front of the place where the walk ended, where it has taken zeros for one.
    const std::optional<Passed>& LastPassed() const {
        return m_last && m_last->offset == m_end.stopOffset ? m_beforeLast : m_last;
    }

    /// Whether that place is within the header or the name of the section before: it states to end there, and what is
    /// written there would become part of them.
    bool IsWithinHeader() const { return LastPassed() && LastPassed()->payloadOffset > m_end.stopOffset; }

    void EndAt(std::uint64_t offset) {
        m_end.offset = offset;
        m_end.reachable = true;
    }

    /// The section at `offset` gets the length that reaches to `end`, unless it has it.
    void EndWithLength(std::uint64_t offset, std::uint32_t stated, std::uint64_t end) {
        const auto length = static_cast<std::uint32_t>(end - offset);
        if (length != stated) {
            m_end.lengths.push_back({offset + SectionHeader::kLengthOffset, EncodeSectionLength(length)});
        }
        m_end.lastSection = offset;
        EndAt(end);
    }

    /// One of ours that is cut off loads as far as it goes, so it gets that length; one byte of payload stays, since an
    /// empty one loads otherwise. Zeros behind an unfinished one keep it from being a whole list, which a later section
    /// would bring in force. Of a foreign one nothing is changed: what it states is there afterwards.
    bool EndBehindOurs() {
        const bool isLast = m_end.stop == ScanStop::EndOfFile || m_end.stop == ScanStop::Wrap;
        if (!m_mends || !isLast || !m_last || !m_last->isOurs || m_last->offset + m_last->length <= m_fileSize) {
            return false;
        }
        const std::uint64_t begin = m_last->payloadOffset;
        const bool isUnfinished = m_last->isUnfinished;
        std::uint64_t end = std::max(m_fileSize + (isUnfinished ? 1 : 0), begin + 1);
        end += isUnfinished && IsWholeList(begin, end) ? 1 : 0;
        EndWithLength(m_last->offset, m_last->length, end);
        return true;
    }

    /// A tail of zeros is space.
    bool EndAtZeros() {
        const bool canBe = m_end.stop == ScanStop::NoProgress || m_end.stop == ScanStop::TornHeader;
        if (!m_mends || !canBe || IsWithinHeader() || !IsZero(m_end.stopOffset, m_fileSize)) {
            return false;
        }
        m_end.lastSection = LastPassed() ? LastPassed()->offset : 0;
        EndAt(m_end.stopOffset);
        return true;
    }

    /// The stated end of a section whose header the end of the file cuts off. One that has not even its length whole
    /// gets the rest of it, so that it can be passed.
    bool EndBehindTorn() {
        if (m_end.stop != ScanStop::TornHeader) {
            return false;
        }
        std::array<char, SectionHeader::kSize> bytes{};
        const std::optional<std::size_t> count = Read(m_end.stopOffset, bytes.data(), bytes.size());
        if (!count || (*count < SectionHeader::kLengthSize && !m_mends)) {
            return false;
        }
        SectionHeader header = DecodeSectionHeader(bytes.data());
        if (*count < SectionHeader::kLengthSize && header.length < SectionHeader::kSize) {
            header.length |= std::uint32_t{1} << (8 * *count);
        }
        // Filled up with zeros, header and name must end there, too: what is put behind would become part of them.
        const bool coversName = header.length >= SectionHeader::kSize &&
                                header.nameLength <= header.length - SectionHeader::kSize &&
                                header.nameLength <= kMaxNameLength;
        if (!coversName || header.length > kMaxSectionLength || m_end.stopOffset + header.length <= m_fileSize) {
            return false;
        }
        if (*count < SectionHeader::kLengthSize) {
            m_end.lengths.push_back({m_end.stopOffset + *count, EncodeSectionLength(header.length).substr(*count)});
        }
        EndAt(m_end.stopOffset + header.length);
        return true;
    }

    /// What a loss of power leaves of the fields that lie across the border of two sectors, where one was not stored:
    /// the header of a save that has only zeros yet, or the length that an unfinished section gets at last. The section
    /// gets all that is there.
    bool EndOverLostSector() {
        const auto offset = m_mends ? TornStart() : std::nullopt;
        if (!offset || m_fileSize - *offset > kMaxSectionLength) {
            return false;
        }
        EndWithLength(*offset, 0, m_fileSize);
        return true;
    }

    /// Where the section begins.
    std::optional<std::uint64_t> TornStart() {
        const std::uint64_t at = m_end.stopOffset;
        const auto& passed = LastPassed();
        const auto border = [](std::uint64_t offset) { return (offset / kSectorSize + 1) * kSectorSize; };
        if (m_end.stop == ScanStop::NoProgress && !IsWithinHeader() && border(at) - at < kLongestStart &&
            IsZero(at, border(at)) && IsZero(at + kLongestStart, m_fileSize)) {
            return at;
        }
        if (passed && passed->length < SectionHeader::kSize && IsLengthAcross(*passed) &&
            IsZero(border(passed->offset), m_fileSize)) {
            return passed->offset;
        }
        const bool isTorn = m_last && m_last->isUnfinished &&
                            (m_last->length == 0 || (IsLengthAcross(*m_last) && !HasItsLength(*m_last)));
        return isTorn ? std::optional(m_last->offset) : std::nullopt;
    }

    /// Whether its length lies in two sectors.
    static bool IsLengthAcross(const Passed& section) {
        return section.offset % kSectorSize > kSectorSize - SectionHeader::kLengthSize;
    }

    /// False on a read error, which ends everything else.
    bool IsZero(std::uint64_t begin, std::uint64_t end) {
        std::array<char, std::size_t{16} << 10> bytes;
        while ((begin = m_source.NextData(begin)) < end) {
            const auto count = Read(begin, bytes.data(), std::min<std::uint64_t>(bytes.size(), end - begin));
            if (!count || *count == 0 ||
                std::any_of(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(*count),
                            [](char byte) { return byte != 0; })) {
                return false;
            }
            begin += *count;
        }
        return true;
    }

    std::optional<std::size_t> Read(std::uint64_t offset, char* buffer, std::size_t size) {
        const auto count = m_source.ReadAt(offset, buffer, size);
        if (!count) {
            m_end.stop = ScanStop::ReadError;
        }
        return count;
    }

    SectionSource& m_source;
    std::uint64_t m_fileSize;
    bool m_mends;
    bool m_isPending = false;  ///< the last section waits for its name
    std::optional<Passed> m_last;
    std::optional<Passed> m_beforeLast;
    ChainEnd m_end;
};

}  // namespace

ChainEnd FindChainEnd(SectionSource& source, std::uint64_t fileSize, ChainLock lock) {
    return EndFinder(source, fileSize, lock).Find();
}

bool WriteFields(const ZU_WEP::PosixFile& file, std::span<const FieldWrite> fields) {
    const auto write = [&](const FieldWrite& field) { return file.WriteAt(field.offset, {field.bytes}); };
    return fields.empty() || (std::all_of(fields.begin(), fields.end(), write) && file.SyncData());
}

bool MendChain(const ZU_WEP::PosixFile& file, const ChainEnd& end) {
    return WriteFields(file, end.names) && WriteFields(file, end.lengths);
}

}  // namespace Zu::Wep::Trace
