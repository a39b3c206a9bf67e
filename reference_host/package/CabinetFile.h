#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "reference_host/base/Handle.h"
#include "reference_host/base/RunningWork.h"
#include "reference_host/package/CabinetHeader.h"

namespace refhost {

/// A package, opened once for everything that is done with it. As long as the object lives nobody
/// can write, replace or delete the file: what was checked is what is unpacked.
class CabinetFile {
 public:
  /// @throws std::runtime_error when the file cannot be opened or is not one whole cabinet.
  explicit CabinetFile(const std::wstring& path);

  /// Reads at a place, independent of any other reader of this object.
  /// @return the number of bytes read, less than `length` at the end of the file, on an error, or
  /// when the suite was told to stop.
  std::uint32_t ReadAt(std::uint64_t offset, void* buffer, std::uint32_t length) const;

  /// @return true when the suite was told to stop since the package was opened.
  bool IsToStop() const { return _work.IsToStop(); }

  const std::wstring& Path() const { return _path; }
  HANDLE File() const { return _file.Get(); }
  std::uint64_t Size() const { return _size; }
  const CabinetHeader& Header() const { return _header; }

 private:
  void ReadHeader();

  RunningWork _work;
  std::wstring _path;
  Handle _file;
  std::uint64_t _size = 0;
  CabinetHeader _header;
};

}  // namespace refhost
