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
  std::string title;
  const std::string run =
      std::to_string(UnixMilliseconds()) + "-" + std::to_string(GetCurrentProcessId());

  void Append(const std::string& line) {
    const std::scoped_lock lock(mutex);
    if (!file.IsOpen() && !CreateFolder(LogFolder(), true).empty()) return;
    const bool open =
        file.IsOpen() || file.Open(LogFolder() + L"\\events.jsonl", Settings().logMaxBytes);
    if (open) file.Append(line);
  }
};

/// Never destroyed: threads may tell of something to the last moment of the process.
Stream& TheStream() {
  static auto* const stream = new Stream;
  return *stream;
}

}  // namespace

Event::Event(const char* kind) {
  Stream& stream = TheStream();
  _record["time"] = ComposeLogTime(UnixMilliseconds());
  _record["process"] = Json::UInt{GetCurrentProcessId()};
  _record["run"] = stream.run;
  _record["event"] = kind;
  const std::scoped_lock lock(stream.mutex);
  if (!stream.title.empty()) _record["title"] = stream.title;
}

Event& Event::With(const char* key, const std::string& text) {
  return With(key, ZLT::String::UTF8ToUTF16(text));
}

Event& Event::With(const char* key, const std::wstring& text) {
  _record[key] = ZLT::String::UTF16ToUTF8(WithoutSecrets(text));
  return *this;
}

Event& Event::With(const char* key, std::int64_t number) {
  _record[key] = Json::Int64{number};
  return *this;
}

Event& Event::With(const char* key, bool flag) {
  _record[key] = flag;
  return *this;
}

void Event::Write() const try {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  TheStream().Append(Json::writeString(builder, _record) + "\n");
} catch (const std::bad_alloc&) {
  // What there is no memory for is lost.
}

void Event::SetTitle(const std::string& title) {
  Stream& stream = TheStream();
  const std::scoped_lock lock(stream.mutex);
  stream.title = title;
}

}  // namespace refhost
