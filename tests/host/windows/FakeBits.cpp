#include "tests/host/windows/FakeBits.h"

#include <sddl.h>

#include <algorithm>
#include <cwchar>

#include "tests/host/windows/TestMachine.h"

namespace {

HRESULT GiveText(const std::wstring& text, LPWSTR* told) {
  *told = static_cast<LPWSTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
  std::wmemcpy(*told, text.c_str(), text.size() + 1);
  return S_OK;
}

std::wstring OwnSid() {
  HANDLE token = nullptr;
  OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
  BYTE memory[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, memory, sizeof memory, &size);
  CloseHandle(token);
  wchar_t* text = nullptr;
  ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(memory)->User.Sid, &text);
  const std::wstring sid = text;
  LocalFree(text);
  return sid;
}

/// A list that gives its elements one by one.
template <typename List, typename Element>
class Enumeration final : public LastingObject<List> {
 public:
  Enumeration(std::vector<Element*> elements, HRESULT end) : _left(std::move(elements)), _end(end) {
    std::reverse(_left.begin(), _left.end());
  }

  HRESULT STDMETHODCALLTYPE Next(ULONG, Element** element, ULONG*) override {
    if (_left.empty()) return _end;
    *element = _left.back();
    _left.pop_back();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reset() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(List**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCount(ULONG*) override { return E_NOTIMPL; }

 private:
  std::vector<Element*> _left;
  HRESULT _end;
};

}  // namespace

HRESULT FakeBitsFile::GetRemoteName(LPWSTR* name) { return GiveText(url, name); }

HRESULT FakeBitsFile::GetLocalName(LPWSTR* name) { return GiveText(path, name); }

HRESULT FakeBitsFile::GetProgress(BG_FILE_PROGRESS* told) {
  *told = progress;
  return progressResult;
}

HRESULT FakeBitsFile::SetRemoteName(LPCWSTR name) {
  url = name;
  return S_OK;
}

class FakeBitsJob::Options final : public LastingObject<IBackgroundCopyJobHttpOptions> {
 public:
  explicit Options(FakeBitsJob& job) : _job(job) {}

  HRESULT STDMETHODCALLTYPE SetClientCertificateByID(BG_CERT_STORE_LOCATION, LPCWSTR,
                                                     BYTE*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetClientCertificateByName(BG_CERT_STORE_LOCATION, LPCWSTR,
                                                       LPCWSTR) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE RemoveClientCertificate() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetClientCertificate(BG_CERT_STORE_LOCATION*, LPWSTR*, BYTE**,
                                                 LPWSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetCustomHeaders(LPCWSTR text) override {
    _job.headers.reset();
    if (text != nullptr) _job.headers = text;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetCustomHeaders(LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetSecurityFlags(ULONG flags) override {
    if (SUCCEEDED(_job.flagsResult)) _job.securityFlags = flags;
    return _job.flagsResult;
  }
  HRESULT STDMETHODCALLTYPE GetSecurityFlags(ULONG*) override { return E_NOTIMPL; }

 private:
  FakeBitsJob& _job;
};

class FakeBitsJob::Error final : public LastingObject<IBackgroundCopyError> {
 public:
  explicit Error(FakeBitsJob& job) : _job(job) {}

  HRESULT STDMETHODCALLTYPE GetError(BG_ERROR_CONTEXT* context, HRESULT* code) override {
    *context = _job._context;
    *code = _job._code;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetFile(IBackgroundCopyFile** file) override {
    *file = _job.files.at(_job._failed).get();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetErrorDescription(DWORD, LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetErrorContextDescription(DWORD, LPWSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetProtocol(LPWSTR*) override { return E_NOTIMPL; }

 private:
  FakeBitsJob& _job;
};

class FakeBitsJob::Files final {
 public:
  explicit Files(std::vector<IBackgroundCopyFile*> files, HRESULT end)
      : list(std::move(files), end) {}

  Enumeration<IEnumBackgroundCopyFiles, IBackgroundCopyFile> list;
};

FakeBitsJob::FakeBitsJob(std::wstring jobName)
    : name(std::move(jobName)),
      owner(OwnSid()),
      _options(std::make_shared<Options>(*this)),
      _error(std::make_shared<Error>(*this)) {}

FakeBitsFile& FakeBitsJob::Add(const std::wstring& url, const std::wstring& path) {
  return *files.emplace_back(std::make_unique<FakeBitsFile>(url, path));
}

void FakeBitsJob::Arrive() {
  for (const auto& file : files) {
    const std::uint64_t size = file->body.size();
    file->progress = {size, size, TRUE};
  }
  state = BG_JOB_STATE_TRANSFERRED;
}

void FakeBitsJob::Fail(BG_ERROR_CONTEXT context, HRESULT code, std::size_t file) {
  _failed = file;
  _context = context;
  _code = code;
  state = BG_JOB_STATE_ERROR;
}

void* FakeBitsJob::Part(REFIID id) {
  return IsEqualIID(id, IID_IBackgroundCopyJobHttpOptions) ? _options.get() : nullptr;
}

HRESULT FakeBitsJob::AddFile(LPCWSTR url, LPCWSTR path) {
  Add(url, path);
  return S_OK;
}

HRESULT FakeBitsJob::EnumFiles(IEnumBackgroundCopyFiles** list) {
  std::vector<IBackgroundCopyFile*> all;
  for (const auto& file : files) all.push_back(file.get());
  *list = &_lists.emplace_back(std::make_shared<Files>(std::move(all), nextResult))->list;
  return S_OK;
}

HRESULT FakeBitsJob::Suspend() {
  if (SUCCEEDED(suspendResult)) state = BG_JOB_STATE_SUSPENDED;
  return suspendResult;
}

HRESULT FakeBitsJob::Resume() {
  ++resumed;
  state = BG_JOB_STATE_TRANSFERRING;
  if (onResume) onResume(*this);
  return S_OK;
}

HRESULT FakeBitsJob::Cancel() {
  APTTYPE type{};
  APTTYPEQUALIFIER qualifier{};
  cancelledInApartment =
      CoGetApartmentType(&type, &qualifier) == S_OK && qualifier != APTTYPEQUALIFIER_IMPLICIT_MTA;
  cancelled = true;
  state = BG_JOB_STATE_CANCELLED;
  return S_OK;
}

HRESULT FakeBitsJob::Complete() {
  HRESULT result = S_OK;
  if (!completeResults.empty()) {
    result = completeResults.front();
    completeResults.pop_front();
  }
  if (FAILED(result)) return result;
  for (const auto& file : files) {
    if (file->progress.Completed) TestMachine::WriteFile(file->path, file->body);
  }
  state = BG_JOB_STATE_ACKNOWLEDGED;
  if (onComplete) onComplete(*this);
  return result;
}

HRESULT FakeBitsJob::GetId(GUID* id) {
  *id = GUID{0xFACE, 0, 0, {}};
  return S_OK;
}

HRESULT FakeBitsJob::GetState(BG_JOB_STATE* told) {
  if (onState) onState(*this);
  *told = state;
  return S_OK;
}

HRESULT FakeBitsJob::GetError(IBackgroundCopyError** error) {
  *error = _error.get();
  return S_OK;
}

HRESULT FakeBitsJob::GetOwner(LPWSTR* sid) { return GiveText(owner, sid); }

HRESULT FakeBitsJob::GetDisplayName(LPWSTR* told) { return GiveText(name, told); }

class FakeBits::Manager final : public LastingObject<IBackgroundCopyManager> {
 public:
  /// What COM asks for the service.
  class Factory final : public LastingObject<IClassFactory> {
   public:
    explicit Factory(Manager& manager) : _manager(manager) {}
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
      return _manager.QueryInterface(id, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

   private:
    Manager& _manager;
  };

  explicit Manager(FakeBits& bits) : _bits(bits) {
    // The test's own thread is to have no COM, like a host's.
    CoIncrementMTAUsage(&_usage);
    CoRegisterClassObject(CLSID_BackgroundCopyManager, &_factory, CLSCTX_LOCAL_SERVER,
                          REGCLS_MULTIPLEUSE, &_cookie);
  }
  ~Manager() {
    CoRevokeClassObject(_cookie);
    CoDecrementMTAUsage(_usage);
  }

  HRESULT STDMETHODCALLTYPE CreateJob(LPCWSTR name, BG_JOB_TYPE, GUID* id,
                                      IBackgroundCopyJob** job) override {
    FakeBitsJob& made = _bits.Leave(name);
    if (_bits.onMake) _bits.onMake(made);
    *job = &made;
    return made.GetId(id);
  }
  HRESULT STDMETHODCALLTYPE GetJob(REFGUID, IBackgroundCopyJob**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumJobs(DWORD, IEnumBackgroundCopyJobs** list) override {
    std::vector<IBackgroundCopyJob*> all;
    for (const auto& job : _bits.jobs) all.push_back(job.get());
    *list = _lists.emplace_back(std::make_unique<Jobs>(std::move(all), S_FALSE)).get();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetErrorDescription(HRESULT, DWORD, LPWSTR*) override {
    return E_NOTIMPL;
  }

 private:
  using Jobs = Enumeration<IEnumBackgroundCopyJobs, IBackgroundCopyJob>;

  FakeBits& _bits;
  Factory _factory{*this};
  CO_MTA_USAGE_COOKIE _usage = nullptr;
  DWORD _cookie = 0;
  std::vector<std::unique_ptr<Jobs>> _lists;
};

FakeBits::FakeBits() : _manager(std::make_unique<Manager>(*this)) {}

FakeBits::~FakeBits() = default;

FakeBitsJob& FakeBits::Leave(const std::wstring& name) {
  return *jobs.emplace_back(std::make_unique<FakeBitsJob>(name));
}
