#include "stmdcm/pins/SharedNotes.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

// The file is its own length, then the notes, each behind its length: one that a killed process has not left whole is
// behind the end. A lock on the first byte is one on all of them, one on any other byte is the turn for a subject.
// These locks belong to a process (fcntl(2)), as no lock does that a fork hands on.

constexpr std::uint64_t kNotes = sizeof(std::uint64_t);

void Lock(const ZU_WEP::PosixFile& file, std::uint64_t place, short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(place);
    lock.l_len = 1;
    while (::fcntl(file.Descriptor(), F_SETLKW, &lock) == -1 && errno == EINTR) {
    }
}

std::string_view BytesOf(const std::uint64_t& number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

bool ReadNumber(const ZU_WEP::PosixFile& file, std::uint64_t offset, std::uint64_t& number) {
    return file.ReadAt(offset, &number, sizeof number) == sizeof number;
}

}  // namespace

SharedNotes::Turn::Turn(const SharedNotes& notes, std::uint64_t subject)
    : m_file(notes.m_file), m_place(1 + subject % (std::numeric_limits<off_t>::max() - 2)) {
    Lock(m_file, m_place, F_WRLCK);
}

SharedNotes::Turn::~Turn() { Lock(m_file, m_place, F_UNLCK); }

SharedNotes::SharedNotes() : m_file(ZU_WEP::PosixFile::InMemory("notes")), m_end(kNotes) {
    if (!m_file.IsOpen() || !m_file.WriteAt(0, {BytesOf(kNotes)})) {
        const int error = errno;
        throw Failure(fmt::format("several processes can't share what they find: {}", ZU_WEP::ErrnoText(error)));
    }
}

void SharedNotes::Leave(std::string_view note) {
    Lock(m_file, 0, F_WRLCK);
    Read();
    const std::uint64_t size = note.size();
    const std::uint64_t end = m_end + sizeof size + size;
    if (m_file.WriteAt(m_end, {BytesOf(size), note}) && m_file.WriteAt(0, {BytesOf(end)})) {
        m_end = end;
    }
    Lock(m_file, 0, F_UNLCK);
}

std::vector<std::string> SharedNotes::Take() {
    Lock(m_file, 0, F_RDLCK);
    Read();
    Lock(m_file, 0, F_UNLCK);
    return std::exchange(m_notes, {});
}

void SharedNotes::Read() {
    std::uint64_t end = 0;
    std::uint64_t size = 0;
    if (!ReadNumber(m_file, 0, end)) {
        return;
    }
    while (m_end < end && ReadNumber(m_file, m_end, size)) {
        std::string note(size, '\0');
        if (m_file.ReadAt(m_end + sizeof size, note.data(), size) != size) {
            return;
        }
        m_notes.push_back(std::move(note));
        m_end += sizeof size + size;
    }
}

}  // namespace stmdcm
