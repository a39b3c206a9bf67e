// The suite's start on the fake host, and the memory that runs out.

#include "reference_host/Startup.h"

#include <cstdlib>
#include <new>

#include "tests/c_interface/Faults.h"
#include "tests/unit/FakeHost.h"

namespace refhost {

namespace {
bool Started(const std::wstring& how, std::wstring& error) {
  Fake().Note("start-suite", how);
  if (how != L"bad") return true;
  error = L"h\u00f6st.json: key \"realm\" is missing";
  return false;
}
}  // namespace

bool Start(std::wstring& error) { return Started(L"itself", error); }
bool StartFromFile(const std::wstring& file, std::wstring& error) { return Started(file, error); }
bool StartFromText(const std::string& json, std::wstring& error) {
  return Started(ZLT::String::UTF8ToUTF16(json), error);
}

}  // namespace refhost

thread_local int allocationsLeft = -1;

// Every form of new in the program ends in the first of these.
void* operator new(std::size_t size) {
  if (allocationsLeft == 0) {
    allocationsLeft = -1;
    throw std::bad_alloc();
  }
  if (allocationsLeft > 0) --allocationsLeft;
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
