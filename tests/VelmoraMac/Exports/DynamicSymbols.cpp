#include "DynamicSymbols.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <elf.h>

namespace velmora::test {

namespace {

class ElfImage {
public:
    explicit ElfImage(const std::filesystem::path& file)
    {
        std::ifstream stream(file, std::ios::binary);
        if (!stream)
            throw std::runtime_error("cannot read " + file.string());
        m_bytes.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
        const auto header = at<Elf64_Ehdr>(0);
        if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB)
            throw std::runtime_error(file.string() + " is not a 64-bit little-endian ELF file");
        if (header.e_shentsize != sizeof(Elf64_Shdr))
            throw std::runtime_error("unexpected section header size");
        for (std::size_t index = 0; index < header.e_shnum; ++index)
            m_sections.push_back(at<Elf64_Shdr>(header.e_shoff + index * sizeof(Elf64_Shdr)));
    }

    // Copied out, since the file's bytes need not be aligned for T.
    template <typename T>
    [[nodiscard]] T at(std::size_t offset) const
    {
        if (offset > m_bytes.size() || m_bytes.size() - offset < sizeof(T))
            throw std::runtime_error("ELF structure outside the file");
        T value{};
        std::memcpy(&value, m_bytes.data() + offset, sizeof(T));
        return value;
    }

    [[nodiscard]] const std::vector<Elf64_Shdr>& sections() const { return m_sections; }

    [[nodiscard]] const Elf64_Shdr& section(std::size_t index) const
    {
        if (index >= m_sections.size())
            throw std::runtime_error("section index outside the table");
        return m_sections[index];
    }

    // The NUL-terminated string at `offset` of string table `table`.
    [[nodiscard]] std::string string(const Elf64_Shdr& table, std::size_t offset) const
    {
        if (offset >= table.sh_size || table.sh_offset > m_bytes.size() || m_bytes.size() - table.sh_offset < table.sh_size)
            throw std::runtime_error("string outside its table");
        const std::string_view rest(m_bytes.data() + table.sh_offset + offset, table.sh_size - offset);
        const std::size_t end = rest.find('\0');
        if (end == std::string_view::npos)
            throw std::runtime_error("unterminated string");
        return std::string(rest.substr(0, end));
    }

private:
    std::vector<char> m_bytes;
    std::vector<Elf64_Shdr> m_sections;
};

} // namespace

DynamicSymbols DynamicSymbols::read(const std::filesystem::path& file)
{
    const ElfImage image(file);
    DynamicSymbols result;
    for (const Elf64_Shdr& section : image.sections()) {
        if (section.sh_type == SHT_DYNSYM) {
            const Elf64_Shdr& names = image.section(section.sh_link);
            for (std::size_t offset = 0; offset + sizeof(Elf64_Sym) <= section.sh_size; offset += sizeof(Elf64_Sym)) {
                const auto symbol = image.at<Elf64_Sym>(section.sh_offset + offset);
                const unsigned binding = ELF64_ST_BIND(symbol.st_info);
                if (binding != STB_GLOBAL && binding != STB_WEAK && binding != STB_GNU_UNIQUE)
                    continue;
                if (symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS)
                    result.defined.insert(image.string(names, symbol.st_name));
            }
        } else if (section.sh_type == SHT_DYNAMIC) {
            const Elf64_Shdr& names = image.section(section.sh_link);
            for (std::size_t offset = 0; offset + sizeof(Elf64_Dyn) <= section.sh_size; offset += sizeof(Elf64_Dyn)) {
                const auto entry = image.at<Elf64_Dyn>(section.sh_offset + offset);
                if (entry.d_tag == DT_NULL)
                    break;
                if (entry.d_tag == DT_SONAME)
                    result.soname = image.string(names, entry.d_un.d_val);
            }
        }
    }
    return result;
}

} // namespace velmora::test
