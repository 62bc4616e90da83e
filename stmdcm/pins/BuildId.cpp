#include "stmdcm/pins/BuildId.h"

#include <gelf.h>
#include <libelf.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace stmdcm {

namespace {

using ElfHandle = std::unique_ptr<Elf, decltype(&elf_end)>;

constexpr std::string_view kOwner{ELF_NOTE_GNU, sizeof ELF_NOTE_GNU};
/// Notes are small: what states to be larger is none.
constexpr std::uint64_t kMaxNotesSize = 1 << 20;
constexpr std::uint64_t kWideAlignment = 8;

/// The build-id among the notes in that range of the file.
std::string FindIn(Elf* elf, std::uint64_t offset, std::uint64_t size, std::uint64_t alignment) {
    if (size > kMaxNotesSize) {
        return {};
    }
    Elf_Data* const data = elf_getdata_rawchunk(elf, static_cast<std::int64_t>(offset), size,
                                                alignment == kWideAlignment ? ELF_T_NHDR8 : ELF_T_NHDR);
    GElf_Nhdr note;
    std::size_t name = 0;
    std::size_t description = 0;
    for (std::size_t next = 0; data != nullptr && (next = gelf_getnote(data, next, &note, &name, &description)) > 0;) {
        const std::string_view bytes(static_cast<const char*>(data->d_buf), data->d_size);
        if (note.n_type == NT_GNU_BUILD_ID && bytes.substr(name, note.n_namesz) == kOwner &&
            note.n_descsz <= kMaxBuildIdLength) {
            return std::string(bytes.substr(description, note.n_descsz));
        }
    }
    return {};
}

/// A linked image has its notes in segments.
std::string FindInSegments(Elf* elf) {
    std::size_t count = 0;
    std::string found;
    if (elf_getphdrnum(elf, &count) != 0) {
        return found;
    }
    GElf_Phdr segment;
    for (std::size_t i = 0; i < count && found.empty(); ++i) {
        if (gelf_getphdr(elf, static_cast<int>(i), &segment) != nullptr && segment.p_type == PT_NOTE) {
            found = FindIn(elf, segment.p_offset, segment.p_filesz, segment.p_align);
        }
    }
    return found;
}

/// One that a linker script gave no such segment has them in sections alone.
std::string FindInSections(Elf* elf) {
    std::string found;
    GElf_Shdr header;
    for (Elf_Scn* section = nullptr; found.empty() && (section = elf_nextscn(elf, section)) != nullptr;) {
        if (gelf_getshdr(section, &header) != nullptr && header.sh_type == SHT_NOTE) {
            found = FindIn(elf, header.sh_offset, header.sh_size, header.sh_addralign);
        }
    }
    return found;
}

}  // namespace

std::string ReadBuildId(int descriptor) {
    elf_version(EV_CURRENT);
    const ElfHandle elf(elf_begin(descriptor, ELF_C_READ, nullptr), &elf_end);
    if (!elf || elf_kind(elf.get()) != ELF_K_ELF) {
        return {};
    }
    std::string found = FindInSegments(elf.get());
    return found.empty() ? FindInSections(elf.get()) : found;
}

}  // namespace stmdcm
