// The fake host's side that faces the machine: files, processes, registry, bus, locks and waits.

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "host/common/FileSystem.h"
#include "host/common/PackageExtractor.h"
#include "host/common/ProcessWrap.h"
#include "host/common/RegUtil.h"
#include "host/common/Utility.h"
#include "tests/unit/FakeHost.h"

namespace {

/// The locks that this thread holds. No vector: MinGW frees a thread's variables before it calls
/// their destructors.
thread_local std::array<const CriticalSection*, 4> heldHere{};

void ReplaceHeld(const CriticalSection* from, const CriticalSection* to) {
  if (auto* place = std::find(heldHere.begin(), heldHere.end(), from); place != heldHere.end())
    *place = to;
}

/// @return false for the state lock, and as long as it is not known which one that is.
bool IsTold(const CriticalSection* lock) {
  const CriticalSection* stateLock = Fake().stateLock;
  return stateLock != nullptr && stateLock != lock;
}

}  // namespace

bool FileSystem::createDirectory(const std::wstring& path, bool restricted) {
  return !Fake().Note("mkdir", path, restricted);
}

bool FileSystem::fileExists(const std::wstring& path) { return Fake().files.contains(path); }

bool FileSystem::deleteDirectoryOrFile(const std::wstring& path, bool recursive) {
  return Fake().Note("delete", path, recursive) && Fake().Next(Fake().deletions, true);
}

std::wstring FileSystem::getFileName(const std::wstring& path) {
  return path.substr(path.find_last_of(L"\\/:") + 1);
}

namespace ZLT {

std::wstring utility::GetZltKivDownloadPath() { return L"C:\\kiv"; }
std::wstring utility::GetSystemDirectoryW() { return L"C:\\sys"; }

std::wstring PackageExtractor::ExtractCab(const std::wstring& cabPath) {
  Fake().Note("extract", cabPath);
  return Fake().extract();
}

int ProcessWrap::CreateProcessInUserSession(const std::wstring& line, const std::wstring& folder,
                                            HANDLE& process, bool hidden) {
  Fake().Note("start", line, "in", folder, hidden);
  if (!Fake().installerStarts) return 0;
  process = Fake().installer = CreateEventW(nullptr, TRUE, Fake().installerEnds, nullptr);
  return 1;
}

int ProcessWrap::LaunchApplicationAndCheckExitCode(const std::wstring& line,
                                                   const std::wstring& folder, bool hidden,
                                                   HANDLE cancelHandle) {
  Fake().Note("run", line, "in", folder, hidden, cancelHandle);
  return Fake().Next(Fake().checks, 1);
}

}  // namespace ZLT

int CRegUtil::CreateKey(HKEY hive, const std::wstring& subKey) {
  return Fake().Note("key", hive == HKEY_LOCAL_MACHINE, subKey) ? Fake().keyExists : 0;
}

int CRegUtil::SetKeyValueInt(HKEY hive, const std::wstring& subKey, const std::wstring& valueName,
                             unsigned int value) {
  return !Fake().Note("value", hive == HKEY_LOCAL_MACHINE, subKey, valueName, int(value));
}

ZLTPublisherSubscriber::ZLTPublisherSubscriber() : m_pState(nullptr) {}
ZLTPublisherSubscriber::~ZLTPublisherSubscriber() = default;

ZLTPublisherSubscriber* ZLTPublisherSubscriber::GetInstance() {
  static ZLTPublisherSubscriber bus;
  return &bus;
}

std::wstring ZLTPublisherSubscriber::Subscribe(Callback callback, bool replayLast) {
  Fake().Note("subscribe", replayLast);
  Fake().onNotification = std::move(callback);
  return L"subscription";
}

void ZLTPublisherSubscriber::Unsubscribe(const std::wstring& id) { Fake().Note("unsubscribe", id); }
bool ZLTPublisherSubscriber::Publish(const ZLTNotificationData& data, unsigned int timeout) {
  Fake().Note("publish", int(timeout));
  ZLTNotificationData copy = data;
  Fake().onNotification(copy);
  return Fake().delivers;
}

// Every lock has a mutex of its own and nothing in common with the others, for the thread
// sanitizer.
struct CriticalSection::State {
  std::recursive_mutex mutex;
  int depth = 0;
};

CriticalSection::CriticalSection() : m_pState(new State) {}
CriticalSection::~CriticalSection() {
  // One outcome of an installation leaves a lock held: such a mutex must not be destroyed.
  static auto& abandoned = *new std::vector<State*>;
  if (m_pState->depth > 0) abandoned.push_back(std::exchange(m_pState, nullptr));
  std::ranges::replace(heldHere, this, nullptr);
  delete m_pState;
}

void CriticalSection::EnterLock() {
  if (Fake().Holds(Fake().stateLock)) Fake().Note("!! a lock is taken");
  if (IsTold(this)) Fake().Note("asks-for-lock");
  m_pState->mutex.lock();
  ++m_pState->depth;
  ReplaceHeld(nullptr, this);
  if (IsTold(this)) Fake().Note("lock");
}

void CriticalSection::ExitLock() {
  if (IsTold(this)) Fake().Note("unlock");
  ReplaceHeld(this, nullptr);
  --m_pState->depth;
  m_pState->mutex.unlock();
}

bool FakeHost::Holds(const CriticalSection* lock) {
  return lock != nullptr && std::ranges::find(heldHere, lock) != heldHere.end();
}

// The waits of this program go through its import table's slots (on Windows) or the shim's.
extern "C" {
extern decltype(&Sleep) __imp_Sleep;
extern decltype(&WaitForSingleObject) __imp_WaitForSingleObject;
extern decltype(&WaitForMultipleObjects) __imp_WaitForMultipleObjects;
}

static const auto realWait = __imp_WaitForSingleObject;

static DWORD WINAPI RecordedWait(HANDLE handle, DWORD milliseconds) {
  if (milliseconds == INFINITE) return realWait(handle, milliseconds);
  if (milliseconds != 0) Fake().Note("wait", handle, int(milliseconds));
  return Fake().waitsFail ? WAIT_FAILED : realWait(handle, 0);
}

static const auto realWaitForAny = __imp_WaitForMultipleObjects;

static DWORD WINAPI RecordedWaitForAny(DWORD count, const HANDLE* all, BOOL every, DWORD limit) {
  Fake().Note(every ? "wait-all" : "wait-any", int(count), int(limit));
  return realWaitForAny(count, all, every, limit);
}

bool FakeHost::ReallyWait(HANDLE event) { return realWait(event, 20000) == WAIT_OBJECT_0; }

FakeHost::FakeHost() {
  __imp_Sleep = [](DWORD milliseconds) { Fake().Note("sleep", int(milliseconds)); };
  __imp_WaitForSingleObject = RecordedWait;
  __imp_WaitForMultipleObjects = RecordedWaitForAny;
}

// Threads start through a name that the linker redirects here, where it can (CMakeLists.txt).
#ifndef _MSC_VER
#define START_THREAD(prefix) \
  prefix##_ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE
extern "C" void START_THREAD(__real_)(void* thread, void* state, void (*depend)());
extern "C" void START_THREAD(__wrap_)(void* thread, void* state, void (*depend)()) {
  if (!Fake().Next(Fake().threadStarts, true)) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  START_THREAD(__real_)(thread, state, depend);
}
#endif
