#pragma once

#include <string>

#include "host/Export.h"

namespace ZLT {

/// Text conversion. All operations are pure and may be called from any thread; they throw only
/// std::bad_alloc.
class ZLT_API String {
 public:
  /// @param text in, UTF-8.
  /// @return `text` as wide text; each maximal invalid sequence becomes one U+FFFD.
  static std::wstring UTF8ToUTF16(const std::string& text);

  /// @param text in, UTF-16.
  /// @return `text` as UTF-8; an unpaired surrogate becomes U+FFFD.
  static std::string UTF16ToUTF8(const std::wstring& text);

  /// @param haystack in, what is searched. @param needle in, what is searched for.
  /// @return true when `needle` occurs in `haystack` regardless of case (an empty needle always
  /// does).
  static bool CaseInsesitiveFind(const std::wstring& haystack, const std::wstring& needle);
};

}  // namespace ZLT
