#include "stmdcm/validate/ElfSymbols.h"

#include <fcntl.h>
#include <gelf.h>
#include <libelf.h>

#include <memory>

#include "source_utilities/PosixFile.h"

namespace stmdcm::validate {

namespace {

bool IsExported(const GElf_Sym& symbol) {
    // What stands for a symbol version is absolute, and no name that anybody looks up.
    return symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS && GELF_ST_BIND(symbol.st_info) != STB_LOCAL;
}

void AddTable(Elf* elf, Elf_Scn* section, const GElf_Shdr& header, std::vector<std::string>& names) {
    Elf_Data* const data = elf_getdata(section, nullptr);
    GElf_Sym symbol;
    for (int i = 0; data != nullptr && gelf_getsym(data, i, &symbol) != nullptr; ++i) {
        const char* const name = elf_strptr(elf, header.sh_link, symbol.st_name);
        if (name != nullptr && IsExported(symbol)) {
            names.emplace_back(name);
        }
    }
}

}  // namespace

std::vector<std::string> ExportedSymbols(const std::string& path) {
    std::vector<std::string> names;
    elf_version(EV_CURRENT);
    const auto file = ZU_WEP::PosixFile::Open(path.c_str(), O_RDONLY);
    const std::unique_ptr<Elf, decltype(&elf_end)> elf(elf_begin(file.Descriptor(), ELF_C_READ, nullptr), &elf_end);
    GElf_Shdr header;
    for (Elf_Scn* section = nullptr; elf && (section = elf_nextscn(elf.get(), section)) != nullptr;) {
        if (gelf_getshdr(section, &header) != nullptr && header.sh_type == SHT_DYNSYM) {
            AddTable(elf.get(), section, header, names);
        }
    }
    return names;
}

}  // namespace stmdcm::validate
