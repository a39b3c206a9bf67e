#include "reference_host/log/Event.h"

#include <json/writer.h>
#include <windows.h>

#include <chrono>
#include <mutex>
#include <new>

#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/files/FolderCreation.h"
#include "reference_host/log/LogFile.h"
#include "reference_host/log/LogRecord.h"
#include "reference_host/log/Redaction.h"

namespace refhost {

namespace {

std::int64_t UnixMilliseconds() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

/// The events of one process.
struct Stream {
  std::mutex mutex;
  LogFile file;
  const std::string run =
      std::to_string(UnixMilliseconds()) + "-" + std::to_string(GetCurrentProcessId());

  void Append(const std::string& line) {
    const std::scoped_lock lock(mutex);
    if (!file.IsOpen() && !CreateFolder(LogFolder(), true).empty()) return;
    const std::wstring path = LogFolder() + L"\\" + ZLT::String::UTF8ToUTF16(EventFileName);
    if (file.IsOpen() || file.Open(path, Settings().logMaxBytes)) file.Append(line);
  }
};

/// Never destroyed: threads may tell of something to the last moment of the process.
Stream& TheStream() {
  static auto* const stream = new Stream;
  return *stream;
}

/// Not the text itself: MinGW frees a thread's variables before it calls their destructors.
thread_local const std::string* t_title = nullptr;

}  // namespace

Event::Event(const char* kind) {
  _record["time"] = ComposeLogTime(UnixMilliseconds());
  _record["process"] = Json::UInt{GetCurrentProcessId()};
  _record["run"] = Run();
  _record["event"] = kind;
  With("title", EventTitle::Current());
}

Event& Event::With(const char* key, const std::string& text) {
  return With(key, ZLT::String::UTF8ToUTF16(text));
}

Event& Event::With(const char* key, const std::wstring& text) {
  if (!text.empty()) _record[key] = ZLT::String::UTF16ToUTF8(WithoutSecrets(text));
  return *this;
}

Event& Event::Since(std::chrono::steady_clock::time_point begin) {
  using namespace std::chrono;
  return With("ms", duration_cast<milliseconds>(steady_clock::now() - begin).count());
}

void Event::Write() const try {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  TheStream().Append(Json::writeString(builder, _record) + "\n");
} catch (const std::bad_alloc&) {
  // What there is no memory for is lost.
}

const std::string& Event::Run() { return TheStream().run; }

EventTitle::EventTitle(std::string title) : _title(std::move(title)), _before(t_title) {
  t_title = &_title;
}

EventTitle::~EventTitle() { t_title = _before; }

std::string EventTitle::Current() { return t_title == nullptr ? std::string() : *t_title; }

}  // namespace refhost
