#pragma once

#include <windows.h>
// Behind windows.h, whose types they need.
#include <bits.h>
#include <bits2_0.h>
#include <bits2_5.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Reference counts of objects that live as long as the test.
template <typename Interface>
class LastingObject : public Interface {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    *object = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, __uuidof(Interface)) ? this : Part(id);
    return *object == nullptr ? E_NOINTERFACE : S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

 protected:
  ~LastingObject() = default;

 private:
  /// @return another interface of the object, null for none.
  virtual void* Part(REFIID) { return nullptr; }
};

/// One file of a job.
class FakeBitsFile final : public LastingObject<IBackgroundCopyFile2> {
 public:
  FakeBitsFile(std::wstring from, std::wstring to) : url(std::move(from)), path(std::move(to)) {}

  HRESULT STDMETHODCALLTYPE GetRemoteName(LPWSTR* name) override;
  HRESULT STDMETHODCALLTYPE GetLocalName(LPWSTR* name) override;
  HRESULT STDMETHODCALLTYPE GetProgress(BG_FILE_PROGRESS* told) override;
  HRESULT STDMETHODCALLTYPE GetFileRanges(DWORD*, BG_FILE_RANGE**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetRemoteName(LPCWSTR name) override;

  std::wstring url;
  std::wstring path;
  std::string body;  ///< what comes
  BG_FILE_PROGRESS progress{0, 0, FALSE};
  HRESULT progressResult = S_OK;

 private:
  void* Part(REFIID id) override {
    return IsEqualIID(id, IID_IBackgroundCopyFile) ? static_cast<IBackgroundCopyFile*>(this)
                                                   : nullptr;
  }
};

/// A job as Windows documents it: it can be suspended, has an owner, and stays as it is when a file
/// cannot get its name. What becomes of it once it is resumed, the test says.
class FakeBitsJob final : public LastingObject<IBackgroundCopyJob> {
 public:
  explicit FakeBitsJob(std::wstring jobName);

  FakeBitsFile& Add(const std::wstring& url, const std::wstring& path);

  /// All bytes are there.
  void Arrive();
  void Fail(BG_ERROR_CONTEXT context, HRESULT code, std::size_t file = 0);

  std::wstring name;
  std::wstring owner;  ///< this process's account, unless the test says otherwise
  BG_JOB_STATE state = BG_JOB_STATE_SUSPENDED;
  std::vector<std::unique_ptr<FakeBitsFile>> files;
  std::optional<std::wstring> headers;
  ULONG securityFlags = 0;
  int resumed = 0;
  bool cancelled = false;
  bool cancelledInApartment = false;  ///< the canceller's own, not one that somebody else has
  HRESULT flagsResult = S_OK;
  HRESULT suspendResult = S_OK;
  HRESULT nextResult = S_FALSE;           ///< of the files' enumeration, at its end
  std::deque<HRESULT> completeResults{};  ///< of the first calls; then S_OK
  std::function<void(FakeBitsJob&)> onResume;
  std::function<void(FakeBitsJob&)> onState;
  std::function<void(FakeBitsJob&)> onComplete;  ///< once the files have their names

  HRESULT STDMETHODCALLTYPE AddFileSet(ULONG, BG_FILE_INFO*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE AddFile(LPCWSTR url, LPCWSTR path) override;
  HRESULT STDMETHODCALLTYPE EnumFiles(IEnumBackgroundCopyFiles** list) override;
  HRESULT STDMETHODCALLTYPE Suspend() override;
  HRESULT STDMETHODCALLTYPE Resume() override;
  HRESULT STDMETHODCALLTYPE Cancel() override;
  HRESULT STDMETHODCALLTYPE Complete() override;
  HRESULT STDMETHODCALLTYPE GetId(GUID* id) override;
  HRESULT STDMETHODCALLTYPE GetType(BG_JOB_TYPE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetProgress(BG_JOB_PROGRESS*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTimes(BG_JOB_TIMES*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetState(BG_JOB_STATE* told) override;
  HRESULT STDMETHODCALLTYPE GetError(IBackgroundCopyError** error) override;
  HRESULT STDMETHODCALLTYPE GetOwner(LPWSTR* sid) override;
  HRESULT STDMETHODCALLTYPE SetDisplayName(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetDisplayName(LPWSTR* told) override;
  HRESULT STDMETHODCALLTYPE SetDescription(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetDescription(LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetPriority(BG_JOB_PRIORITY) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetPriority(BG_JOB_PRIORITY*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetNotifyFlags(ULONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetNotifyFlags(ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetNotifyInterface(IUnknown*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetNotifyInterface(IUnknown**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetMinimumRetryDelay(ULONG) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMinimumRetryDelay(ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetNoProgressTimeout(ULONG) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetNoProgressTimeout(ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetErrorCount(ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetProxySettings(BG_JOB_PROXY_USAGE, LPCWSTR, LPCWSTR) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetProxySettings(BG_JOB_PROXY_USAGE*, LPWSTR*, LPWSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE TakeOwnership() override { return E_NOTIMPL; }

 private:
  class Options;
  class Error;
  class Files;
  void* Part(REFIID id) override;

  BG_ERROR_CONTEXT _context = BG_ERROR_CONTEXT_NONE;
  HRESULT _code = S_OK;
  std::size_t _failed = 0;
  std::shared_ptr<Options> _options;
  std::shared_ptr<Error> _error;
  std::vector<std::shared_ptr<Files>> _lists;
};

/// Stands in BITS's place in this process as long as it lives, on any thread.
class FakeBits final {
 public:
  FakeBits();
  ~FakeBits();
  FakeBits(const FakeBits&) = delete;
  FakeBits& operator=(const FakeBits&) = delete;

  /// Makes a job as an earlier download has left it.
  FakeBitsJob& Leave(const std::wstring& name);

  std::vector<std::unique_ptr<FakeBitsJob>> jobs;
  std::function<void(FakeBitsJob&)> onMake;  ///< for each new job, before its owner has it

 private:
  class Manager;
  std::unique_ptr<Manager> _manager;
};
