#include "reference_host/download/BitsJob.h"

#include <bits2_0.h>
#include <bits2_5.h>

#include <functional>

#include "reference_host/files/PathBelow.h"
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

/// A text that COM has allocated.
class ComText {
 public:
  ComText() = default;
  ~ComText() { CoTaskMemFree(_text); }
  ComText(const ComText&) = delete;
  ComText& operator=(const ComText&) = delete;

  LPWSTR* Out() { return &_text; }
  std::wstring Text() const { return _text == nullptr ? L"" : _text; }

 private:
  LPWSTR _text = nullptr;
};

/// BITS acts in the name of its caller and needs the caller's leave for it. It is given for each
/// interface, since the process as a whole belongs to the host program.
template <typename Interface>
void AllowImpersonation(const ComPtr<Interface>& object) {
  CoSetProxyBlanket(object.Get(), RPC_C_AUTHN_DEFAULT, RPC_C_AUTHZ_DEFAULT, COLE_DEFAULT_PRINCIPAL,
                    RPC_C_AUTHN_LEVEL_DEFAULT, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

std::wstring NameOf(IBackgroundCopyJob& job) {
  ComText name;
  job.GetDisplayName(name.Out());
  return name.Text();
}

std::wstring LocalNameOf(IBackgroundCopyFile& file) {
  ComText name;
  file.GetLocalName(name.Out());
  return name.Text();
}

/// @return where the job's first file goes, empty when it has none.
std::wstring FirstLocalNameOf(IBackgroundCopyJob& job) {
  ComPtr<IEnumBackgroundCopyFiles> files;
  if (FAILED(job.EnumFiles(&files))) return {};
  AllowImpersonation(files);
  ComPtr<IBackgroundCopyFile> file;
  if (files->Next(1, &file, nullptr) != S_OK) return {};
  AllowImpersonation(file);
  return LocalNameOf(*file.Get());
}

/// Calls `act` with each job of this user. @return S_OK or BITS's error.
HRESULT ForEach(const BitsJob::Manager& manager,
                const std::function<void(const ComPtr<IBackgroundCopyJob>&)>& act) {
  ComPtr<IEnumBackgroundCopyJobs> jobs;
  const HRESULT result = manager->EnumJobs(0, &jobs);
  if (FAILED(result)) return result;
  AllowImpersonation(jobs);
  ComPtr<IBackgroundCopyJob> job;
  while (jobs->Next(1, job.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    AllowImpersonation(job);
    act(job);
  }
  return S_OK;
}

void Cancel(const ComPtr<IBackgroundCopyJob>& job) {
  if (wine::IsInForce()) {
    wine::CancelAside(job);
  } else {
    job->Cancel();
  }
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

HRESULT BitsJob::CancelAll(const Manager& manager, const std::wstring& name) {
  return ForEach(manager, [&name](const ComPtr<IBackgroundCopyJob>& job) {
    if (NameOf(*job.Get()) == name) Cancel(job);
  });
}

HRESULT BitsJob::CountInto(const Manager& manager, const std::wstring& folder,
                           unsigned long& count) {
  return ForEach(manager, [&](const ComPtr<IBackgroundCopyJob>& job) {
    if (IsBelow(FirstLocalNameOf(*job.Get()), folder)) ++count;
  });
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

HRESULT BitsJob::Set(const BitsOrder& order) {
  HRESULT result = _job->SetPriority(order.priority);
  if (FAILED(result)) return result;
  _job->SetNoProgressTimeout(NoProgressTimeout);
  _job->SetMinimumRetryDelay(MinRetryDelay);
  ComPtr<IBackgroundCopyJobHttpOptions> options;
  result = _job.As(&options);
  if (FAILED(result)) return result;
  AllowImpersonation(options);
  options->SetSecurityFlags(RefuseRedirections);
  return options->SetCustomHeaders(order.headers.c_str());
}

HRESULT BitsJob::Add(const BitsOrder& order) {
  for (const BitsFile& file : order.files) {
    const HRESULT result = _job->AddFile(file.url.c_str(), file.localPath.c_str());
    if (FAILED(result)) return result;
  }
  ComPtr<IEnumBackgroundCopyFiles> files;
  const HRESULT result = _job->EnumFiles(&files);
  if (FAILED(result)) return result;
  ComPtr<IBackgroundCopyFile> file;
  while (files->Next(1, file.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    AllowImpersonation(file);
    _files.push_back({file, LocalNameOf(*file.Get())});
  }
  return S_OK;
}

BitsJob::~BitsJob() {
  if (!_completed) Cancel(_job);
}

GUID BitsJob::Id() const {
  GUID id{};
  _job->GetId(&id);
  return id;
}

BG_JOB_STATE BitsJob::State() const {
  BG_JOB_STATE state;
  return SUCCEEDED(_job->GetState(&state)) ? state : BG_JOB_STATE_CANCELLED;
}

std::vector<BitsProgress> BitsJob::Progress() const {
  std::vector<BitsProgress> all;
  for (const File& file : _files) {
    BG_FILE_PROGRESS progress{};
    file.object->GetProgress(&progress);
    BitsProgress& one = all.emplace_back();
    one.localPath = file.localPath;
    one.transferred = progress.BytesTransferred;
    if (progress.BytesTotal != BG_SIZE_UNKNOWN) one.total = progress.BytesTotal;
    one.completed = progress.Completed;
  }
  return all;
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

bool BitsJob::Redirect(const std::vector<BitsFile>& files) {
  if (FAILED(_job->Suspend())) return false;
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

void BitsJob::Complete() { _completed = SUCCEEDED(_job->Complete()); }

}  // namespace refhost
