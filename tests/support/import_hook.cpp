#include "support/import_hook.h"

#include <cstdio>
#include <cstdlib>

namespace support {
namespace {

template <class Type>
Type* At(char* base, DWORD offset) {
  return reinterpret_cast<Type*>(base + offset);
}

}  // namespace

std::vector<ImportSlot> AllImports(HMODULE module) {
  char* const base = reinterpret_cast<char*>(module == nullptr ? GetModuleHandleW(nullptr) : module);
  const auto* dos = At<IMAGE_DOS_HEADER>(base, 0);
  const auto* headers = At<IMAGE_NT_HEADERS>(base, static_cast<DWORD>(dos->e_lfanew));
  const DWORD table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  std::vector<ImportSlot> slots;
  for (const auto* dll = At<IMAGE_IMPORT_DESCRIPTOR>(base, table); dll->Name != 0; ++dll) {
    std::string dll_name(At<char>(base, dll->Name));
    for (char& c : dll_name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    const auto* name = At<IMAGE_THUNK_DATA>(base, dll->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(base, dll->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
      std::string function = IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)
                                 ? "#" + std::to_string(IMAGE_ORDINAL(name->u1.Ordinal))
                                 : At<IMAGE_IMPORT_BY_NAME>(base, name->u1.AddressOfData)->Name;
      slots.push_back({dll_name, std::move(function), reinterpret_cast<void**>(&slot->u1.Function)});
    }
  }
  return slots;
}

void** FindImport(std::string_view name) {
  for (const ImportSlot& slot : AllImports()) {
    if (slot.name == name) return slot.address;
  }
  std::fprintf(stderr, "the program does not import %s\n", std::string(name).c_str());
  std::exit(3);
}

void* ExchangeImport(void** slot, void* function) {
  DWORD protection = 0;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
  void* const previous = InterlockedExchangePointer(slot, function);
  VirtualProtect(slot, sizeof *slot, protection, &protection);
  return previous;
}

}  // namespace support
