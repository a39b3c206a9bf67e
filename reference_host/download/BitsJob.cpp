#include "reference_host/download/BitsJob.h"

#include <bits2_0.h>
#include <bits2_5.h>

#include "reference_host/base/Url.h"
#include "reference_host/download/BitsLimits.h"
#include "reference_host/wine/Workarounds.h"

namespace refhost {

namespace {

/// The shortest that BITS takes, in seconds.
constexpr ULONG MinRetryDelay = 5;
/// A transport error ends the job at once instead of leaving it pending for days: how often to try
/// again is decided where the whole download is looked after.
constexpr ULONG NoProgressTimeout = 0;
/// The headers hold a token; they must not follow a redirection to another host.
constexpr ULONG RefuseRedirections = 0x0200;

std::wstring LocalNameOf(IBackgroundCopyFile& file) {
  ComText name;
  file.GetLocalName(name.Out());
  return name.Text();
}

}  // namespace

HRESULT BitsJob::Connect(Manager& manager) {
  const auto connect = [&manager] {
    return CoCreateInstance(CLSID_BackgroundCopyManager, nullptr, CLSCTX_LOCAL_SERVER,
                            IID_PPV_ARGS(manager.ReleaseAndGetAddressOf()));
  };
  const HRESULT result = wine::IsInForce() ? wine::ConnectAgain(connect) : connect();
  if (SUCCEEDED(result)) AllowImpersonation(manager);
  return result;
}

std::unique_ptr<BitsJob> BitsJob::Make(const Manager& manager, const BitsOrder& order,
                                       HRESULT& result) {
  GUID id{};
  ComPtr<IBackgroundCopyJob> job;
  result = manager->CreateJob(order.name.c_str(), BG_JOB_TYPE_DOWNLOAD, &id, &job);
  if (FAILED(result)) return nullptr;
  AllowImpersonation(job);
  std::unique_ptr<BitsJob> made(new BitsJob(job));
  result = made->Set(order);
  if (SUCCEEDED(result)) result = made->Add(order);
  return SUCCEEDED(result) ? std::move(made) : nullptr;
}

std::unique_ptr<BitsJob> BitsJob::Take(const ComPtr<IBackgroundCopyJob>& job) {
  AllowImpersonation(job);
  std::unique_ptr<BitsJob> taken(new BitsJob(job));
  if (SUCCEEDED(taken->LookUpFiles())) return taken;
  taken->_over = true;
  return nullptr;
}

HRESULT BitsJob::Set(const BitsOrder& order) {
  HRESULT result = _job->SetPriority(order.priority);
  if (SUCCEEDED(result) && !order.proxy.empty()) {
    result =
        _job->SetProxySettings(BG_JOB_PROXY_USAGE_OVERRIDE, order.proxy.c_str(), LoopbackHosts);
  }
  if (FAILED(result)) return result;
  _job->SetNoProgressTimeout(NoProgressTimeout);
  _job->SetMinimumRetryDelay(MinRetryDelay);
  return SetHttp(HeadersForBits(order.headers).c_str());
}

/// @param headers in, null takes away those that are there.
HRESULT BitsJob::SetHttp(const wchar_t* headers) {
  ComPtr<IBackgroundCopyJobHttpOptions> options;
  HRESULT result = _job.As(&options);
  if (FAILED(result)) return result;
  AllowImpersonation(options);
  // First: no job may have the token that would carry it after a redirection.
  result = options->SetSecurityFlags(RefuseRedirections);
  return SUCCEEDED(result) ? options->SetCustomHeaders(headers) : result;
}

HRESULT BitsJob::Add(const BitsOrder& order) {
  for (const BitsFile& file : order.files) {
    const HRESULT result = _job->AddFile(file.url.c_str(), file.localPath.c_str());
    if (FAILED(result)) return result;
  }
  const HRESULT result = LookUpFiles();
  if (FAILED(result)) return result;
  return _files.size() == order.files.size() ? S_OK : E_UNEXPECTED;
}

HRESULT BitsJob::LookUpFiles() {
  ComPtr<IEnumBackgroundCopyFiles> files;
  HRESULT result = _job->EnumFiles(&files);
  if (FAILED(result)) return result;
  ComPtr<IBackgroundCopyFile> file;
  while ((result = files->Next(1, file.ReleaseAndGetAddressOf(), nullptr)) == S_OK) {
    AllowImpersonation(file);
    _files.push_back({file, LocalNameOf(*file.Get())});
  }
  return result;
}

BitsJob::~BitsJob() {
  if (!_over) CancelJob(_job);
}

GUID BitsJob::Id() const {
  GUID id{};
  _job->GetId(&id);
  return id;
}

HRESULT BitsJob::State(BG_JOB_STATE& state) const {
  state = BG_JOB_STATE_CANCELLED;
  return _job->GetState(&state);
}

std::vector<BitsFile> BitsJob::Files() const {
  std::vector<BitsFile> files;
  for (const File& file : _files) {
    ComText url;
    file.object->GetRemoteName(url.Out());
    files.push_back({url.Text(), file.localPath});
  }
  return files;
}

HRESULT BitsJob::Progress(std::vector<BitsProgress>& all) const {
  for (const File& file : _files) {
    BG_FILE_PROGRESS progress{};
    const HRESULT result = file.object->GetProgress(&progress);
    if (FAILED(result)) return result;
    BitsProgress& one = all.emplace_back();
    one.localPath = file.localPath;
    one.transferred = progress.BytesTransferred;
    if (progress.BytesTotal != BG_SIZE_UNKNOWN) one.total = progress.BytesTotal;
    one.completed = progress.Completed;
  }
  return S_OK;
}

BitsFailure BitsJob::Failure() const {
  BitsFailure failure;
  ComPtr<IBackgroundCopyError> error;
  const HRESULT result = _job->GetError(&error);
  if (FAILED(result) || FAILED(error->GetError(&failure.context, &failure.code))) {
    failure.context = BG_ERROR_CONTEXT_UNKNOWN;
    failure.code = FAILED(result) ? result : E_FAIL;
    failure.description = L"the transfer failed and BITS does not say why";
    return failure;
  }
  ComPtr<IBackgroundCopyFile> file;
  if (SUCCEEDED(error->GetFile(&file)) && file) failure.localPath = LocalNameOf(*file.Get());
  ComText description;
  error->GetErrorDescription(LANGIDFROMLCID(GetThreadLocale()), description.Out());
  failure.description = description.Text();
  if (failure.description.empty()) {
    failure.description = FailureWith(failure.context, failure.code).description;
  }
  return failure;
}

bool BitsJob::Redirect(const BitsOrder& order, const std::vector<BitsFile>& files) {
  if (FAILED(_job->Suspend()) || FAILED(Set(order))) return false;
  for (const BitsFile& file : files) {
    if (!Rename(file)) return false;
  }
  return true;
}

bool BitsJob::Rename(const BitsFile& file) {
  for (const File& one : _files) {
    if (one.localPath != file.localPath) continue;
    ComPtr<IBackgroundCopyFile2> renamable;
    return SUCCEEDED(one.object.As(&renamable)) &&
           SUCCEEDED(renamable->SetRemoteName(file.url.c_str()));
  }
  return false;
}

bool BitsJob::Resume() { return SUCCEEDED(_job->Resume()); }

HRESULT BitsJob::Complete() {
  const HRESULT result = _job->Complete();
  _over = _over || SUCCEEDED(result);
  return result;
}

bool BitsJob::Keep() {
  BG_JOB_STATE state;
  if (FAILED(State(state))) return false;
  // A job that has all its bytes rests anyway.
  if (state != BG_JOB_STATE_TRANSFERRED) {
    const HRESULT result = _job->Suspend();
    if (wine::CannotRest(result)) return _over = true;
    if (FAILED(result)) return false;
  }
  return _over = SUCCEEDED(SetHttp(nullptr));
}

void CancelJob(const ComPtr<IBackgroundCopyJob>& job) {
  if (wine::IsInForce()) {
    wine::CancelAside(job);
  } else {
    job->Cancel();
  }
}

}  // namespace refhost
