#pragma once

#include <windows.h>

/// Puts a function of the test in the place of one that the reference host imports from a DLL of
/// the system, as long as the object lives. For what no machine does on demand.
class FakeImport {
 public:
  /// @param dll in, as "winhttp.dll". @param function in, its name. @param fake in, a function of
  /// the same type. @throws std::runtime_error when the reference host does not import it.
  FakeImport(const char* dll, const char* function, void* fake);
  ~FakeImport();
  FakeImport(const FakeImport&) = delete;
  FakeImport& operator=(const FakeImport&) = delete;

 private:
  void Put(void* function);

  void** _place;
  void* _genuine;
};
