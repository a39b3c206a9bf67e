#include "tests/host/windows/FakeImport.h"

#include <stdexcept>
#include <string>

namespace {

/// @return the place in the table of imports that the reference host calls through.
void** PlaceOf(const char* dll, const char* function) {
  auto* base = reinterpret_cast<char*>(GetModuleHandleW(L"TolmarReferenceHost.dll"));
  const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const DWORD at =
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (auto* from = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + at); from->Name != 0;
       ++from) {
    if (_stricmp(base + from->Name, dll) != 0) continue;
    const auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + from->OriginalFirstThunk);
    auto* places = reinterpret_cast<IMAGE_THUNK_DATA*>(base + from->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++places) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
      const auto* import = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      if (std::string(function) == reinterpret_cast<const char*>(import->Name)) {
        return reinterpret_cast<void**>(&places->u1.Function);
      }
    }
  }
  throw std::runtime_error(std::string("not imported: ") + function);
}

}  // namespace

FakeImport::FakeImport(const char* dll, const char* function, void* fake)
    : _place(PlaceOf(dll, function)), _genuine(*_place) {
  Put(fake);
}

FakeImport::~FakeImport() { Put(_genuine); }

void FakeImport::Put(void* function) {
  DWORD before = 0;
  VirtualProtect(_place, sizeof *_place, PAGE_READWRITE, &before);
  *_place = function;
  VirtualProtect(_place, sizeof *_place, before, &before);
}
