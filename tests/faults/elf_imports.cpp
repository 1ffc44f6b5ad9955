#include "faults/elf_imports.h"

#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstring>
#include <vector>

#include "support/descriptors.h"

namespace rlx::testing {

namespace {

/// A record of an object file; the file's bytes have no alignment.
template <typename Record>
Record record_at(const std::string& file, std::size_t offset) {
  Record record{};
  if (offset + sizeof record > file.size()) {
    ADD_FAILURE() << "the object file is cut off";
    return record;
  }
  std::memcpy(&record, file.data() + offset, sizeof record);
  return record;
}

using Header = ElfW(Ehdr);
using Section = ElfW(Shdr);
using Symbol = ElfW(Sym);

Section section_at(const std::string& file, std::size_t index) {
  const auto header = record_at<Header>(file, 0);
  return record_at<Section>(file, header.e_shoff + index * header.e_shentsize);
}

/// Hands each symbol of the dynamic table, and its name, to a function.
template <typename Function>
void for_each_symbol(const std::string& file, Function&& take) {
  const auto header = record_at<Header>(file, 0);
  for (std::size_t index = 0; index < header.e_shnum; ++index) {
    const Section symbols = section_at(file, index);
    if (symbols.sh_type != SHT_DYNSYM) {
      continue;
    }
    const Section names = section_at(file, symbols.sh_link);
    for (std::size_t at = sizeof(Symbol); at < symbols.sh_size; at += sizeof(Symbol)) {
      const auto symbol = record_at<Symbol>(file, symbols.sh_offset + at);
      take(symbol, std::string(file.data() + names.sh_offset + symbol.st_name));
    }
  }
}

/// The binding is encoded alike in both sizes of object files.
bool is_weak(const Symbol& symbol) {
  return ELF64_ST_BIND(symbol.st_info) == STB_WEAK;
}

}  // namespace

std::set<std::string> imported_names(const std::string& program) {
  std::set<std::string> names;
  for_each_symbol(read_file(program), [&](const Symbol& symbol, const std::string& name) {
    if (symbol.st_shndx == SHN_UNDEF && !is_weak(symbol)) {
      names.insert(name);
    }
  });
  return names;
}

std::set<std::string> exported_names(const std::string& library) {
  std::set<std::string> names;
  for_each_symbol(read_file(library), [&](const Symbol& symbol, const std::string& name) {
    if (symbol.st_shndx != SHN_UNDEF) {
      names.insert(name);
    }
  });
  return names;
}

}  // namespace rlx::testing
