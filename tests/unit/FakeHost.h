#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "host/common/CriticalSection.h"
#include "host/common/DownloadAgent.h"
#include "host/common/Text.h"
#include "host/core/ZLTPublisherSubscriber.h"

/// What the cloud answers to one request.
struct Reply {
  std::string body;
  unsigned long status = 200;
  bool posted = true;
};

/// How the fake host behaves. As it stands everything goes well; a test changes one thing, before
/// it calls the agent. Queues hold the next results; the happy ones come behind them.
struct Script {
  bool logOpens = true, hasBroker = true, fetches = true, resumes = true;
  bool installerStarts = true, installerEnds = true, waitsFail = false, delivers = true;
  int registered = 1, keyExists = 1;
  std::int64_t now = 1000;  ///< seconds
  std::wstring baseUrl = L"https://cloud", realm = L"realm";
  std::deque<std::wstring> sessions;                            ///< then "session"
  std::deque<std::pair<unsigned long, std::string>> exchanges;  ///< then 0 and "jwt"
  std::map<std::string, std::deque<Reply>> next;                ///< by request type
  std::map<std::string, Reply> always;                          ///< behind them
  std::set<std::wstring> files;                                 ///< files that exist all the time
  std::deque<int> checks;                                       ///< then 1
  std::deque<bool> deletions, threadStarts;
  std::function<bool()> download;
  std::function<std::wstring()> extract = [] { return L"C:\\kiv\\out"; };
  std::function<void(const std::string& line)> atStep;  ///< before every line but those of a log
};

#ifdef __SANITIZE_THREAD__
extern "C" {
void AnnotateIgnoreSyncBegin(const char* file, int line);
void AnnotateIgnoreWritesBegin(const char* file, int line);  // and reads
void AnnotateIgnoreSyncEnd(const char* file, int line);
void AnnotateIgnoreWritesEnd(const char* file, int line);
}
#endif

/// Holds the fake host's lock for one scope, unseen by the thread sanitizer. To it a lock that all
/// threads take orders what they did before, and nothing of the agent would seem to run at once.
class UnseenLock {
 public:
  explicit UnseenLock(std::recursive_mutex& mutex) : _mutex(mutex) {
#ifdef __SANITIZE_THREAD__
    AnnotateIgnoreSyncBegin(__FILE__, __LINE__);
    AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
#endif
    _mutex.lock();
  }
  ~UnseenLock() {
    _mutex.unlock();
#ifdef __SANITIZE_THREAD__
    AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
    AnnotateIgnoreSyncEnd(__FILE__, __LINE__);
#endif
  }
  UnseenLock(const UnseenLock&) = delete;
  UnseenLock& operator=(const UnseenLock&) = delete;

 private:
  std::recursive_mutex& _mutex;
};

/// The host suite, scripted: an implementation of every declaration in host/ that records all calls
/// in one sequence of lines, each beginning with a word that tells its kind. Waits with a time-out
/// are recorded and made without it, so no test waits.
class FakeHost : public Script {
 public:
  static FakeHost& Get();
  /// Back to the happy path, with an empty transcript.
  void Reset();
  void Forget();
  /// Records one line, the parts with a blank between each two. @return true.
  template <class... Parts>
  bool Note(const Parts&... parts) {
    std::string line;
    ((line += Text(parts) + " "), ...);
    return Record(line.substr(0, line.size() - 1));
  }
  /// @return the recorded lines, all or those that begin with one of the texts.
  std::string Transcript(const std::vector<std::string>& beginnings = {""}) const;
  std::size_t Count(const std::string& beginning) const;
  HANDLE Name(HANDLE handle, const std::string& name);  ///< in the transcript; @return the handle
  Reply ReplyTo(const std::string& type);
  template <class T>
  T Next(std::deque<T>& queue, T otherwise) {
    const UnseenLock lock(_mutex);
    if (!queue.empty()) otherwise = queue.front(), queue.pop_front();
    return otherwise;
  }
  static bool Holds(const CriticalSection* lock);  ///< tells it of the calling thread
  /// Waits for an event that another thread sets, 20 seconds at most. @return true: it was set.
  static bool ReallyWait(HANDLE event);

  // What the agent handed to the host.
  DownloadAgent::CompleteCallback onComplete;
  DownloadAgent::ProgressCallback onProgress;
  DownloadAgent::ErrorCallback onError;
  ZLTPublisherSubscriber::Callback onNotification;
  HANDLE installer = nullptr;  ///< the newest installer's process
  /// Under this lock no call into the host is made and no other lock is taken.
  std::atomic<const CriticalSection*> stateLock = nullptr;

 private:
  FakeHost();
  bool Record(const std::string& line);
  static std::string Text(const char* text) { return text; }
  static std::string Text(const std::string& text) { return text; }
  static std::string Text(const std::wstring& text) { return ZLT::String::UTF16ToUTF8(text); }
  static std::string Text(const wchar_t* text) { return Text(std::wstring(text)); }
  static std::string Text(bool flag) { return flag ? "true" : "false"; }
  static std::string Text(int number) { return std::to_string(number); }
  std::string Text(HANDLE handle) const;

  mutable std::recursive_mutex _mutex;
  std::vector<std::string> _lines;
  std::map<HANDLE, std::string> _names;
};

inline FakeHost& Fake() { return FakeHost::Get(); }
