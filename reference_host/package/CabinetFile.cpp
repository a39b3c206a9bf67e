#include "reference_host/package/CabinetFile.h"

#include <stdexcept>

#include "reference_host/files/LongPath.h"

namespace refhost {

CabinetFile::CabinetFile(const std::wstring& path)
    : _path(path),
      _file(CreateFileW(LongPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
  if (!_file) {
    throw std::runtime_error("the package cannot be opened, error " +
                             std::to_string(GetLastError()));
  }
  ReadHeader();
}

void CabinetFile::ReadHeader() {
  LARGE_INTEGER size{};
  GetFileSizeEx(_file.Get(), &size);
  _size = static_cast<std::uint64_t>(size.QuadPart);
  std::uint8_t bytes[CabinetHeaderBytes];
  const std::uint32_t length = ReadAt(0, bytes, sizeof(bytes));
  const std::string fault = ParseCabinetHeader({bytes, length}, _size, _header);
  if (!fault.empty()) throw std::runtime_error("the package cannot be read: " + fault);
}

std::uint32_t CabinetFile::ReadAt(std::uint64_t offset, void* buffer, std::uint32_t length) const {
  // Whatever is done with a package reads it piece by piece: here all of it can be stopped.
  if (IsToStop()) return 0;
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  DWORD read = 0;
  return ReadFile(_file.Get(), buffer, length, &read, &place) ? read : 0;
}

}  // namespace refhost
