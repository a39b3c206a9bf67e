#include "reference_host/log/Event.h"

#include <json/writer.h>
#include <windows.h>

#include <chrono>
#include <exception>
#include <mutex>
#include <vector>

#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/files/FolderCreation.h"
#include "reference_host/log/LogFile.h"
#include "reference_host/log/LogRecord.h"
#include "reference_host/log/Redaction.h"
#include "reference_host/log/SuiteLog.h"

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

  std::vector<std::string*> recordings;

  void Append(const std::string& line) {
    const std::scoped_lock lock(mutex);
    for (std::string* recording : recordings) *recording += line;
    if (IsSuiteLogKeptClosed()) return;
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
  try {
    // None of the first four can hold a secret.
    Set("time", ComposeLogTime(UnixMilliseconds()));
    With("process", GetCurrentProcessId());
    Set("run", Run());
    Set("event", kind);
    With("title", EventTitle::Current());
  } catch (const std::exception&) {
    // What there is no memory for is lost, here and below.
  }
}

Event& Event::With(const char* key, const char* text) try {
  return With(key, std::string(text));
} catch (const std::exception&) {
  return *this;
}

Event& Event::With(const char* key, const std::string& text) try {
  return With(key, ZLT::String::UTF8ToUTF16(text));
} catch (const std::exception&) {
  return *this;
}

Event& Event::With(const char* key, const std::wstring& text) try {
  return text.empty() ? *this : Set(key, ZLT::String::UTF16ToUTF8(WithoutSecrets(text)));
} catch (const std::exception&) {
  return *this;
}

Event& Event::Set(const char* key, const Json::Value& value) try {
  _record[key] = value;
  return *this;
} catch (const std::exception&) {
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
} catch (const std::exception&) {
}

EventRecording::EventRecording() {
  const std::scoped_lock lock(TheStream().mutex);
  TheStream().recordings.push_back(&_lines);
}

EventRecording::~EventRecording() {
  const std::scoped_lock lock(TheStream().mutex);
  std::erase(TheStream().recordings, &_lines);
}

std::string EventRecording::Lines() const {
  const std::scoped_lock lock(TheStream().mutex);
  return _lines;
}

const std::string& Event::Run() { return TheStream().run; }

EventTitle::EventTitle(std::string title) : _title(std::move(title)), _before(t_title) {
  t_title = &_title;
}

EventTitle::~EventTitle() { t_title = _before; }

std::string EventTitle::Current() { return t_title == nullptr ? std::string() : *t_title; }

}  // namespace refhost
