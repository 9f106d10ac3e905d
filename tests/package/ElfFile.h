// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <elf.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <vector>

// A linked program or shared library for this machine, as the loader reads it. A value without a
// thread and without a lock.
class ElfFile {
 public:
  explicit ElfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    mBytes.resize(file ? static_cast<size_t>(file.tellg()) : 0);
    file.seekg(0);
    file.read(mBytes.data(), static_cast<std::streamsize>(mBytes.size()));
    if (!isElf()) return;
    for (size_t i = 0; i < header().e_phnum; ++i)
      mSegments.push_back(at<ElfW(Phdr)>(header().e_phoff + i * sizeof(ElfW(Phdr))));
    for (size_t i = 0; i < header().e_shnum; ++i)
      mSections.push_back(at<ElfW(Shdr)>(header().e_shoff + i * sizeof(ElfW(Shdr))));
    for (const auto& section : mSections) {
      if (section.sh_type == SHT_DYNAMIC) readEntries<ElfW(Dyn)>(section, mDynamic);
      if (section.sh_type != SHT_DYNAMIC && section.sh_type != SHT_DYNSYM) continue;
      mStrings = mSections[section.sh_link].sh_offset;
      if (section.sh_type == SHT_DYNSYM) readEntries<ElfW(Sym)>(section, mSymbols);
    }
  }

  bool isElf() const {
    return mBytes.size() > sizeof(ElfW(Ehdr)) && std::memcmp(mBytes.data(), ELFMAG, SELFMAG) == 0;
  }
  const std::string& bytes() const { return mBytes; }
  const ElfW(Ehdr) & header() const { return *reinterpret_cast<const ElfW(Ehdr)*>(mBytes.data()); }

  // The segment of this type, or null.
  const ElfW(Phdr) * segment(ElfW(Word) type) const {
    for (const auto& segment : mSegments)
      if (segment.p_type == type) return &segment;
    return nullptr;
  }
  bool hasSection(const std::string& name) const {
    for (const auto& section : mSections)
      if (mBytes.c_str() + mSections[header().e_shstrndx].sh_offset + section.sh_name == name)
        return true;
    return false;
  }
  bool isProgram() const { return segment(PT_INTERP) != nullptr; }

  bool has(ElfW(Sxword) tag) const { return entry(tag) != nullptr; }
  // 0 if there is no such entry.
  ElfW(Xword) value(ElfW(Sxword) tag) const { return has(tag) ? entry(tag)->d_un.d_val : 0; }
  std::string text(ElfW(Sxword) tag) const { return has(tag) ? string(value(tag)) : ""; }
  std::set<std::string> texts(ElfW(Sxword) tag) const {
    std::set<std::string> all;
    for (const auto& one : mDynamic)
      if (one.d_tag == tag) all.insert(string(one.d_un.d_val));
    return all;
  }

  // The symbols that others can bind to, without the names of versions, which are absolute.
  std::set<std::string> exported() const {
    std::set<std::string> names;
    for (const auto& symbol : mSymbols)
      if (symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS) names.insert(nameOf(symbol));
    return names;
  }
  std::set<std::string> imported() const {
    std::set<std::string> names;
    for (const auto& symbol : mSymbols)
      if (symbol.st_shndx == SHN_UNDEF) names.insert(nameOf(symbol));
    return names;
  }
  // The first four bytes of an exported function, in the byte order of this machine.
  uint32_t firstInstruction(const std::string& function) const {
    for (const auto& symbol : mSymbols) {
      if (nameOf(symbol) != function) continue;
      for (const auto& segment : mSegments) {
        if (segment.p_type == PT_LOAD && symbol.st_value >= segment.p_vaddr &&
            symbol.st_value < segment.p_vaddr + segment.p_filesz)
          return at<uint32_t>(segment.p_offset + symbol.st_value - segment.p_vaddr);
      }
    }
    return 0;
  }
  // Bits of the note that says which protections all code of the file supports.
  uint32_t features(uint32_t property) const {
    const ElfW(Phdr)* const note = segment(PT_GNU_PROPERTY);
    if (note == nullptr) return 0;
    const size_t align = sizeof(ElfW(Addr));
    size_t position = note->p_offset + sizeof(ElfW(Nhdr)) + 4;  // "GNU"
    while (position + 12 <= note->p_offset + note->p_filesz) {
      if (at<uint32_t>(position) == property) return at<uint32_t>(position + 8);
      position += 8 + roundUp(at<uint32_t>(position + 4), align);
    }
    return 0;
  }

  // The build id; empty if there is none.
  std::string buildId() const {
    for (const auto& segment : mSegments) {
      if (segment.p_type != PT_NOTE) continue;
      size_t position = segment.p_offset;
      while (position + sizeof(ElfW(Nhdr)) <= segment.p_offset + segment.p_filesz) {
        const auto note = at<ElfW(Nhdr)>(position);
        const size_t name = position + sizeof(note);
        const size_t content = name + roundUp(note.n_namesz, 4);
        if (note.n_type == NT_GNU_BUILD_ID && mBytes.compare(name, 4, "GNU", 4) == 0)
          return mBytes.substr(content, note.n_descsz);
        position = content + roundUp(note.n_descsz, 4);
      }
    }
    return "";
  }

 private:
  static size_t roundUp(size_t size, size_t align) { return (size + align - 1) / align * align; }
  template <class T>
  T at(size_t offset) const {
    T value = {};
    if (offset + sizeof(T) <= mBytes.size()) std::memcpy(&value, mBytes.data() + offset, sizeof(T));
    return value;
  }
  template <class T>
  void readEntries(const ElfW(Shdr) & section, std::vector<T>& entries) const {
    for (size_t i = 0; i < section.sh_size / sizeof(T); ++i)
      entries.push_back(at<T>(section.sh_offset + i * sizeof(T)));
  }
  const ElfW(Dyn) * entry(ElfW(Sxword) tag) const {
    for (const auto& one : mDynamic)
      if (one.d_tag == tag) return &one;
    return nullptr;
  }
  std::string string(size_t offset) const { return mBytes.c_str() + mStrings + offset; }
  std::string nameOf(const ElfW(Sym) & symbol) const { return string(symbol.st_name); }

  std::string mBytes;
  std::vector<ElfW(Phdr)> mSegments;
  std::vector<ElfW(Shdr)> mSections;
  std::vector<ElfW(Dyn)> mDynamic;
  std::vector<ElfW(Sym)> mSymbols;
  size_t mStrings = 0;
};
