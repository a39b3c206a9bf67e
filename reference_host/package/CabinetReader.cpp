#include "reference_host/package/CabinetReader.h"

// Behind windows.h, whose types it needs.
#include <fcntl.h>
#include <fdi.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>

#include "host/common/FileSystem.h"
#include "host/common/Text.h"
#include "reference_host/base/Handle.h"
#include "reference_host/package/PackageFault.h"

namespace refhost {

namespace {

/// How much of the cabinet is read at a time. The decoder asks for some bytes and some kilobytes in
/// turns, and under Wine each read at a place is a message to another process.
constexpr std::uint32_t AheadBytes = 1 << 18;

/// What the decoder reads from or writes to: a place in the one open cabinet, or a new file.
struct Stream {
  const CabinetFile* cabinet = nullptr;
  std::unique_ptr<char[]> ahead;  ///< of the cabinet, from `aheadStart` on
  std::uint64_t aheadStart = 0;
  std::uint32_t aheadLength = 0;
  Handle output;
  std::uint64_t position = 0;
  std::uint64_t room = 0;  ///< bytes that may still be written
  std::string name;        ///< of the member that is written
};

/// The decoder opens "the file" by itself, with nothing but a name: it gets this thread's cabinet.
thread_local const CabinetFile* t_cabinet = nullptr;
/// Takes why a write has failed, which the decoder does not tell apart from a corrupt cabinet. Not
/// the text itself: MinGW frees a thread's variables before it calls their destructors.
thread_local std::string* t_writeFault = nullptr;

Stream* AsStream(INT_PTR handle) { return reinterpret_cast<Stream*>(handle); }

INT_PTR AsHandle(std::unique_ptr<Stream> stream) {
  return reinterpret_cast<INT_PTR>(stream.release());
}

void* DIAMONDAPI Allocate(ULONG size) { return ::operator new(size, std::nothrow); }
void DIAMONDAPI Free(void* memory) { ::operator delete(memory); }

INT_PTR DIAMONDAPI Open(char*, int, int) {
  std::unique_ptr<Stream> stream(new (std::nothrow) Stream);
  if (!stream) return -1;
  stream->cabinet = t_cabinet;
  stream->ahead.reset(new (std::nothrow) char[AheadBytes]);
  return stream->ahead ? AsHandle(std::move(stream)) : -1;
}

/// @return what was read ahead from the stream's position on; empty at the end of the cabinet.
std::string_view Ahead(Stream& stream) {
  const bool has = stream.position >= stream.aheadStart &&
                   stream.position < stream.aheadStart + stream.aheadLength;
  if (!has) {
    stream.aheadStart = stream.position;
    stream.aheadLength = stream.cabinet->ReadAt(stream.position, stream.ahead.get(), AheadBytes);
  }
  const auto skipped = static_cast<std::size_t>(stream.position - stream.aheadStart);
  return {stream.ahead.get() + skipped, stream.aheadLength - skipped};
}

UINT DIAMONDAPI Read(INT_PTR handle, void* buffer, UINT length) {
  Stream* stream = AsStream(handle);
  if (stream->cabinet == nullptr) return static_cast<UINT>(-1);
  UINT done = 0;
  while (done < length && !stream->cabinet->IsToStop()) {
    const std::string_view ahead = Ahead(*stream).substr(0, length - done);
    if (ahead.empty()) break;
    std::copy(ahead.begin(), ahead.end(), static_cast<char*>(buffer) + done);
    done += static_cast<UINT>(ahead.size());
    stream->position += ahead.size();
  }
  return done;
}

UINT DIAMONDAPI Write(INT_PTR handle, void* buffer, UINT length) {
  Stream* stream = AsStream(handle);
  DWORD written = 0;
  if (length > stream->room) return static_cast<UINT>(-1);
  if (!WriteFile(stream->output.Get(), buffer, length, &written, nullptr)) {
    *t_writeFault = "cannot write " + stream->name + ", error " + std::to_string(GetLastError());
    return static_cast<UINT>(-1);
  }
  stream->room -= written;
  return written;
}

int DIAMONDAPI Close(INT_PTR handle) {
  delete AsStream(handle);
  return 0;
}

long DIAMONDAPI Seek(INT_PTR handle, long distance, int origin) {
  Stream* stream = AsStream(handle);
  if (stream->cabinet == nullptr) return -1;
  std::uint64_t base = 0;
  if (origin == SEEK_CUR) base = stream->position;
  if (origin == SEEK_END) base = stream->cabinet->Size();
  stream->position = base + static_cast<std::uint64_t>(std::int64_t{distance});
  return static_cast<long>(stream->position);
}

std::wstring NameOf(const FDINOTIFICATION& notice) {
  if ((notice.attribs & _A_NAME_IS_UTF) != 0) return ZLT::String::UTF8ToUTF16(notice.psz1);
  std::wstring name(std::char_traits<char>::length(notice.psz1), L'\0');
  const int length = static_cast<int>(name.size());
  name.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_ACP, 0, notice.psz1, length, name.data(), length)));
  return name;
}

/// What is done with the members of one pass through the cabinet.
class Pass {
 public:
  virtual ~Pass() = default;
  /// @return what `fdintCOPY_FILE` is answered with: 0 to skip the member, or a stream's handle.
  virtual INT_PTR Take(CabinetMember member) = 0;

  std::string fault;  ///< why the pass was ended from this side
};

class ListingPass : public Pass {
 public:
  INT_PTR Take(CabinetMember member) override {
    members.push_back(std::move(member));
    return 0;
  }

  std::vector<CabinetMember> members;
};

class UnpackingPass : public Pass {
 public:
  explicit UnpackingPass(const std::wstring& folder) : _folder(folder) {}

  INT_PTR Take(CabinetMember member) override {
    std::replace(member.name.begin(), member.name.end(), L'/', L'\\');
    const std::wstring path = _folder + L"\\" + member.name;
    CreateFolderOf(path);
    auto stream = std::make_unique<Stream>();
    stream->room = member.size;
    stream->name = ZLT::String::UTF16ToUTF8(member.name);
    stream->output = Handle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!stream->output) {
      throw std::runtime_error("cannot create " + stream->name + ", error " +
                               std::to_string(GetLastError()));
    }
    return AsHandle(std::move(stream));
  }

 private:
  void CreateFolderOf(const std::wstring& path) {
    const std::wstring folder = path.substr(0, path.rfind(L'\\'));
    if (folder != _folder) FileSystem::createDirectory(folder, false);
  }

  std::wstring _folder;
};

INT_PTR Notice(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notice, Pass& pass) {
  switch (type) {
    case fdintCOPY_FILE:
      return pass.Take({NameOf(*notice), static_cast<std::uint32_t>(notice->cb)});
    case fdintCLOSE_FILE_INFO:
      Close(notice->hf);
      return TRUE;
    case fdintPARTIAL_FILE:
    case fdintNEXT_CABINET:
      throw std::runtime_error("it continues in another cabinet");
    default:
      return 0;
  }
}

/// The decoder is C: no exception may pass through it.
INT_PTR DIAMONDAPI OnNotice(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notice) {
  Pass& pass = *static_cast<Pass*>(notice->pv);
  try {
    return Notice(type, notice, pass);
  } catch (const std::exception& exception) {
    pass.fault = exception.what();
  } catch (...) {
    pass.fault = "unknown error";
  }
  return -1;
}

void Run(const CabinetFile& cabinet, Pass& pass) {
  ERF error{};
  const std::unique_ptr<void, decltype(&FDIDestroy)> decoder(
      FDICreate(Allocate, Free, Open, Read, Write, Close, Seek, cpuUNKNOWN, &error), FDIDestroy);
  if (!decoder) throw std::runtime_error("the cabinet decoder cannot be started");
  t_cabinet = &cabinet;
  std::string writeFault;
  t_writeFault = &writeFault;
  char name[] = "package", folder[] = "";
  const BOOL done = FDICopy(decoder.get(), name, folder, 0, OnNotice, nullptr, &pass);
  t_cabinet = nullptr;
  t_writeFault = nullptr;
  if (cabinet.IsToStop()) throw PackageFault("package.stopped", "the suite was told to stop");
  const std::string& fault = pass.fault.empty() ? writeFault : pass.fault;
  if (!fault.empty()) {
    throw PackageFault("package.not-unpacked", "the package cannot be unpacked: " + fault);
  }
  if (!done) {
    throw std::runtime_error("the package is corrupt, decoder's error " +
                             std::to_string(error.erfOper));
  }
}

}  // namespace

std::vector<CabinetMember> ListMembers(const CabinetFile& cabinet) {
  ListingPass pass;
  Run(cabinet, pass);
  return std::move(pass.members);
}

void UnpackMembers(const CabinetFile& cabinet, const std::wstring& folder) {
  UnpackingPass pass(folder);
  Run(cabinet, pass);
}

}  // namespace refhost
