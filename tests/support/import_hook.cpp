#include "support/import_hook.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>

namespace support {
namespace {

/// A function that is looked up by name. Callers get `jump`, which jumps to `target`.
struct LateFunction {
  std::string name;
  void* target;
  void* jump;
};
std::deque<LateFunction> late_functions;  // a deque, because `jump` has their addresses

/// The libraries whose functions the program looks up by name.
constexpr const wchar_t* kLateLibraries[] = {L"comctl32", L"comdlg32", L"ole32",
                                             L"uxtheme",  L"version",  L"wininet"};

/// "jmp [target]".
void* MakeJump(void** target) {
  static_assert(sizeof(void*) == 4, "the instruction takes an absolute address of 32 bits");
  auto* code = static_cast<unsigned char*>(VirtualAlloc(nullptr, 6, MEM_COMMIT, PAGE_EXECUTE_READWRITE));
  code[0] = 0xFF, code[1] = 0x25;
  std::memcpy(code + 2, &target, sizeof target);
  return code;
}

FARPROC WINAPI LookUp(HMODULE module, LPCSTR name);
const auto system_look_up = reinterpret_cast<decltype(&LookUp)>(
    ExchangeImport(FindImport("GetProcAddress"), reinterpret_cast<void*>(&LookUp)));

LateFunction* FindLate(HMODULE module, std::string_view name) {
  for (LateFunction& known : late_functions) {
    if (known.name == name) return &known;
  }
  const auto found = reinterpret_cast<void*>(system_look_up(module, std::string(name).c_str()));
  if (found == nullptr) return nullptr;
  LateFunction& late = late_functions.emplace_back(std::string(name), found, nullptr);
  late.jump = MakeJump(&late.target);
  return &late;
}

/// Replaces GetProcAddress in the import table.
FARPROC WINAPI LookUp(HMODULE module, LPCSTR name) {
  const LateFunction* late = FindLate(module, name);
  return late == nullptr ? nullptr : reinterpret_cast<FARPROC>(late->jump);
}

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
    const auto* name = At<IMAGE_THUNK_DATA>(base, dll->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(base, dll->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
      std::string function = IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)
                                 ? "#" + std::to_string(IMAGE_ORDINAL(name->u1.Ordinal))
                                 : At<IMAGE_IMPORT_BY_NAME>(base, name->u1.AddressOfData)->Name;
      slots.push_back(
          {At<char>(base, dll->Name), std::move(function), reinterpret_cast<void**>(&slot->u1.Function)});
    }
  }
  return slots;
}

std::vector<ImportSlot> LateImports() {
  std::vector<ImportSlot> slots;
  for (LateFunction& late : late_functions) slots.push_back({"", late.name, &late.target});
  return slots;
}

void** FindImport(std::string_view name) {
  for (const ImportSlot& slot : AllImports()) {
    if (slot.name == name) return slot.address;
  }
  for (const wchar_t* library : kLateLibraries) {
    if (LateFunction* late = FindLate(LoadLibraryW(library), name)) return &late->target;
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
