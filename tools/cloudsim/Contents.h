#pragma once

#include <httplib.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "tools/cloudsim/Catalogue.h"

namespace cloudsim {

/// A reply's body: how long it is and where its bytes come from.
struct Contents {
  std::uint64_t length = 0;
  std::string mediaType;
  httplib::ContentProvider provider;
};

/// The bytes of a file from `offset` on, `length` of them, read as they are sent.
/// @param inverted in, true to send every byte's complement: right in length, wrong in content.
Contents FileContents(const CatalogueFile& file, std::uint64_t offset, std::uint64_t length,
                      bool inverted);

Contents TextContents(std::string text, std::string mediaType);

/// @return `contents` whose connection breaks after `bytes` bytes, the length still announced
/// whole.
Contents BrokenAfter(Contents contents, std::uint64_t bytes);

/// @return `contents` that leave no quicker than so many bytes a second.
/// @param wait in, blocks for a time; may return earlier.
Contents PacedAt(Contents contents, std::uint64_t bytesPerSecond,
                 std::function<void(std::chrono::milliseconds)> wait);

/// Puts status and body into the response; a body without a byte included.
void Fill(httplib::Response& response, int status, const Contents& contents);

/// What part of a file a request asks for.
struct Slice {
  int status = 200;  ///< 200: all of it; 206: a part; 416: a part that the file does not have
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

/// Several ranges in one request, and a range that a changed validator rules out, get all of it.
/// @param validator in, the file's current entity tag.
Slice RequestedSlice(const httplib::Request& request, std::uint64_t size,
                     const std::string& validator);

}  // namespace cloudsim
