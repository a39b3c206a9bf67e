#include "reference_host/package/CabinetWriter.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <fci.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include "reference_host/base/Handle.h"
#include "reference_host/files/LongPath.h"

namespace refhost {

namespace {

/// The packer's disk: its sources, its temporary files and the cabinet. Neither a name nor a byte
/// that it writes reaches a real one.
struct Disk {
  std::map<std::string, std::string> files;
  std::map<std::string, std::wstring> real;  ///< sources that are read from where they are
  CabinetTime time = CabinetTime::Now;
  unsigned int temporary = 0;
};

struct Stream {
  std::string& bytes;
  std::size_t position = 0;
  Handle file{};  ///< a source's; else the bytes count
};

constexpr char CabinetName[] = "bundle.cab";

Stream& AsStream(INT_PTR handle) { return *reinterpret_cast<Stream*>(handle); }

void* DIAMONDAPI Allocate(ULONG size) { return ::operator new(size, std::nothrow); }
void DIAMONDAPI Free(void* memory) { ::operator delete(memory); }

INT_PTR DIAMONDAPI Open(char* name, int, int, int*, void* disk) try {
  return reinterpret_cast<INT_PTR>(new Stream{static_cast<Disk*>(disk)->files[name]});
} catch (const std::bad_alloc&) {
  return -1;
}

UINT DIAMONDAPI Read(INT_PTR handle, void* buffer, UINT length, int*, void*) {
  Stream& stream = AsStream(handle);
  DWORD read = 0;
  if (stream.file) {
    return ReadFile(stream.file.Get(), buffer, length, &read, nullptr) ? read : UINT(-1);
  }
  if (stream.position >= stream.bytes.size()) return 0;
  const std::size_t count = stream.bytes.copy(static_cast<char*>(buffer), length, stream.position);
  stream.position += count;
  return static_cast<UINT>(count);
}

UINT DIAMONDAPI Write(INT_PTR handle, void* buffer, UINT length, int*, void*) try {
  Stream& stream = AsStream(handle);
  if (stream.position > stream.bytes.size()) stream.bytes.resize(stream.position);
  const std::size_t replaced = std::min<std::size_t>(length, stream.bytes.size() - stream.position);
  stream.bytes.replace(stream.position, replaced, static_cast<char*>(buffer), length);
  stream.position += length;
  return length;
} catch (const std::bad_alloc&) {
  return static_cast<UINT>(-1);
}

int DIAMONDAPI Close(INT_PTR handle, int*, void*) {
  delete &AsStream(handle);
  return 0;
}

__LONG32 DIAMONDAPI Seek(INT_PTR handle, __LONG32 distance, int origin, int*, void*) {
  Stream& stream = AsStream(handle);
  std::size_t base = 0;
  if (origin == SEEK_CUR) base = stream.position;
  if (origin == SEEK_END) base = stream.bytes.size();
  stream.position = base + static_cast<std::size_t>(std::ptrdiff_t{distance});
  return static_cast<__LONG32>(stream.position);
}

int DIAMONDAPI Delete(char* name, int*, void* disk) {
  static_cast<Disk*>(disk)->files.erase(name);
  return 0;
}

BOOL DIAMONDAPI NameTemporary(char* name, int length, void* disk) {
  const unsigned int number = ++static_cast<Disk*>(disk)->temporary;
  return std::snprintf(name, static_cast<std::size_t>(length), "%u.tmp", number) < length;
}

bool TellTime(CabinetTime wanted, USHORT* date, USHORT* time) {
  constexpr USHORT FirstOfJanuary1980 = 1 << 5 | 1;
  *date = FirstOfJanuary1980;
  *time = 0;
  SYSTEMTIME now{};
  FILETIME stamp{};
  GetLocalTime(&now);
  return wanted == CabinetTime::None ||
         (SystemTimeToFileTime(&now, &stamp) && FileTimeToDosDateTime(&stamp, date, time));
}

bool IsAscii(const std::string& name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return c >= 0; });
}

/// @return a stream of the packer's disk that reads the real file, -1 when that cannot be opened.
INT_PTR OpenReal(const std::wstring& path, std::string& unused) {
  Handle file(CreateFileW(LongPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                          OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!file) return -1;
  return reinterpret_cast<INT_PTR>(new (std::nothrow) Stream{unused, 0, std::move(file)});
}

INT_PTR DIAMONDAPI OpenSource(char* name, USHORT* date, USHORT* time, USHORT* attributes,
                              int* error, void* opaque) {
  Disk& disk = *static_cast<Disk*>(opaque);
  if (!TellTime(disk.time, date, time)) return -1;
  *attributes = IsAscii(name) ? 0 : _A_NAME_IS_UTF;
  const auto real = disk.real.find(name);
  return real == disk.real.end() ? Open(name, 0, 0, error, opaque)
                                 : OpenReal(real->second, disk.files[name]);
}

int DIAMONDAPI Placed(PCCAB, char*, __LONG32, BOOL, void*) { return 0; }
__LONG32 DIAMONDAPI Status(UINT, ULONG, ULONG, void*) { return 0; }
BOOL DIAMONDAPI NextCabinet(PCCAB, ULONG, void*) { return FALSE; }

struct Destroyer {
  void operator()(void* packer) const { FCIDestroy(packer); }
};

void Require(BOOL done, const ERF& error) {
  if (done) return;
  throw std::runtime_error("the files cannot be packed, error " + std::to_string(error.erfOper));
}

}  // namespace

std::string MakeCabinet(const std::vector<CabinetSource>& files, CabinetTime time) {
  Disk disk;
  disk.time = time;
  ERF error{};
  CCAB cabinet{};
  cabinet.cb = CB_MAX_DISK;
  cabinet.cbFolderThresh = CB_MAX_DISK;
  std::copy(std::begin(CabinetName), std::end(CabinetName), cabinet.szCab);
  const std::unique_ptr<void, Destroyer> packer(FCICreate(&error, Placed, Allocate, Free, Open,
                                                          Read, Write, Close, Seek, Delete,
                                                          NameTemporary, &cabinet, &disk));
  Require(packer != nullptr, error);
  for (const CabinetSource& file : files) {
    disk.files[file.name] = file.bytes;
    if (!file.file.empty()) disk.real[file.name] = file.file;
    std::string name = file.name;
    Require(FCIAddFile(packer.get(), name.data(), name.data(), FALSE, NextCabinet, Status,
                       OpenSource, tcompTYPE_MSZIP),
            error);
  }
  Require(FCIFlushCabinet(packer.get(), FALSE, NextCabinet, Status), error);
  return std::move(disk.files[CabinetName]);
}

}  // namespace refhost
