#include "test_support/ElfFile.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <elf.h>

namespace {

template <class Record>
std::vector<Record> ReadRecords(const std::string& bytes, std::size_t offset, std::size_t count) {
    if (offset > bytes.size() || count > (bytes.size() - offset) / sizeof(Record)) {
        throw std::runtime_error("the library file is cut short");
    }
    std::vector<Record> records(count);
    if (count > 0) {
        std::memcpy(records.data(), bytes.data() + offset, count * sizeof(Record));
    }
    return records;
}

template <class Record>
std::vector<Record> ReadSection(const std::string& bytes, const Elf64_Shdr& section) {
    return ReadRecords<Record>(bytes, section.sh_offset, section.sh_size / sizeof(Record));
}

}  // namespace

ElfFile ElfFile::Read(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const Elf64_Ehdr header = ReadRecords<Elf64_Ehdr>(bytes, 0, 1).front();
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64) {
        throw std::runtime_error("no 64-bit library: " + path);
    }

    ElfFile file;
    for (const Elf64_Phdr& segment : ReadRecords<Elf64_Phdr>(bytes, header.e_phoff, header.e_phnum)) {
        if (segment.p_type == PT_GNU_STACK) {
            file.hasExecutableStack = (segment.p_flags & PF_X) != 0;
        }
        file.hasReadOnlyRelocated |= segment.p_type == PT_GNU_RELRO;
    }
    const std::vector<Elf64_Shdr> sections = ReadRecords<Elf64_Shdr>(bytes, header.e_shoff, header.e_shnum);
    for (const Elf64_Shdr& section : sections) {
        if (section.sh_type != SHT_DYNSYM && section.sh_type != SHT_DYNAMIC) {
            continue;
        }
        const std::size_t names = sections.at(section.sh_link).sh_offset;
        const auto nameAt = [&bytes, names](std::size_t at) { return std::string(&bytes.at(names + at)); };
        if (section.sh_type == SHT_DYNAMIC) {
            for (const Elf64_Dyn& entry : ReadSection<Elf64_Dyn>(bytes, section)) {
                if (entry.d_tag == DT_NEEDED) {
                    file.neededLibraries.push_back(nameAt(entry.d_un.d_val));
                }
                file.isBoundAtLoad |= entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_BIND_NOW) != 0;
            }
            continue;
        }
        for (const Elf64_Sym& symbol : ReadSection<Elf64_Sym>(bytes, section)) {
            const unsigned int binding = symbol.st_info >> 4U;
            if (symbol.st_shndx == SHN_UNDEF || binding == STB_LOCAL) {
                continue;
            }
            file.exportedSymbols.push_back(nameAt(symbol.st_name));
            if (binding == STB_GNU_UNIQUE) {
                file.uniqueSymbols.push_back(nameAt(symbol.st_name));
            }
        }
    }
    std::sort(file.exportedSymbols.begin(), file.exportedSymbols.end());
    return file;
}
