#include "tools/cloudsim/Contents.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <utility>
#include <vector>

namespace cloudsim {
namespace {

constexpr std::size_t ChunkBytes = 256u << 10;

/// Reads pieces of a file for as long as one download lasts.
class FileReader {
 public:
  FileReader(const CatalogueFile& file, std::uint64_t offset, bool inverted)
      : _stream(file.path, std::ios::binary), _offset(offset), _inverted(inverted) {}

  /// Sends up to `length` bytes from `offset` of the slice on. @return false to end the connection.
  bool Send(std::size_t offset, std::size_t length, httplib::DataSink& sink) {
    _buffer.resize(std::min(length, ChunkBytes));
    _stream.seekg(static_cast<std::streamoff>(_offset + offset));
    if (!_stream.read(_buffer.data(), static_cast<std::streamsize>(_buffer.size()))) return false;
    if (_inverted) {
      for (char& c : _buffer) c = static_cast<char>(~c);
    }
    return sink.write(_buffer.data(), _buffer.size());
  }

 private:
  std::ifstream _stream;
  std::uint64_t _offset;
  bool _inverted;
  std::vector<char> _buffer;
};

}  // namespace

Contents FileContents(const CatalogueFile& file, std::uint64_t offset, std::uint64_t length,
                      bool inverted) {
  const auto reader = std::make_shared<FileReader>(file, offset, inverted);
  return {length, "application/octet-stream",
          [reader](std::size_t at, std::size_t count, httplib::DataSink& sink) {
            return reader->Send(at, count, sink);
          }};
}

Contents TextContents(std::string text, std::string mediaType) {
  const std::uint64_t length = text.size();
  return {length, std::move(mediaType),
          [text = std::move(text)](std::size_t at, std::size_t count, httplib::DataSink& sink) {
            return sink.write(text.data() + at, count);
          }};
}

Contents BrokenAfter(Contents contents, std::uint64_t bytes) {
  contents.provider = [whole = std::move(contents.provider), bytes](
                          std::size_t at, std::size_t count, httplib::DataSink& sink) {
    if (at >= bytes) return false;
    return whole(at, std::min<std::size_t>(count, bytes - at), sink);
  };
  return contents;
}

Contents PacedAt(Contents contents, std::uint64_t bytesPerSecond,
                 std::function<void(std::chrono::milliseconds)> wait) {
  constexpr std::uint64_t PiecesPerSecond = 10;
  const std::uint64_t piece = std::max<std::uint64_t>(1, bytesPerSecond / PiecesPerSecond);
  contents.provider = [whole = std::move(contents.provider), piece, wait = std::move(wait)](
                          std::size_t at, std::size_t count, httplib::DataSink& sink) {
    wait(std::chrono::milliseconds(1000 / PiecesPerSecond));
    return whole(at, std::min<std::size_t>(count, piece), sink);
  };
  return contents;
}

void Fill(httplib::Response& response, int status, const Contents& contents) {
  response.status = status;
  if (contents.length == 0) {
    response.set_content("", contents.mediaType);
  } else {
    response.set_content_provider(contents.length, contents.mediaType, contents.provider);
  }
}

Slice RequestedSlice(const httplib::Request& request, std::uint64_t size,
                     const std::string& validator) {
  const Slice whole{200, 0, size};
  if (request.method != "GET" || request.ranges.size() != 1) return whole;
  if (request.has_header("If-Range") && request.get_header_value("If-Range") != validator) {
    return whole;
  }
  const auto total = static_cast<std::int64_t>(size);
  auto [first, last] = request.ranges.front();  // -1 stands for a bound that is not given.
  if (first < 0) {
    first = std::max<std::int64_t>(0, total - last);
    last = total - 1;
  }
  if (last < 0 || last >= total) last = total - 1;
  if (first >= total || first > last) return {416, 0, 0};
  return {206, static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(last - first + 1)};
}

}  // namespace cloudsim
