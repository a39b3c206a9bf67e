#include "host/common/Text.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace {

using Bytes = std::string::const_iterator;

/// @return how many bytes at `fault`, where no valid sequence begins, could have begun one, at
/// least 1: what follows may be whole again. They could when the least or the greatest of followers
/// makes a valid sequence of them. The library's own replacement takes all followers for one fault.
std::ptrdiff_t FaultLength(Bytes fault, Bytes end) {
  for (std::ptrdiff_t length = std::min<std::ptrdiff_t>(3, end - fault); length > 1; --length) {
    for (const char follower : {'\x80', '\xBF'}) {
      std::array<char, 4> whole;
      std::copy_n(fault, length, whole.begin());
      std::fill(whole.begin() + length, whole.end(), follower);
      if (utf8::find_invalid(whole.begin(), whole.end()) != whole.begin()) return length;
    }
  }
  return 1;
}

/// @return `text` with U+FFFD for each maximal invalid sequence.
std::string Repaired(const std::string& text) {
  std::string whole;
  for (Bytes next = text.begin(); next != text.end();) {
    const Bytes fault = utf8::find_invalid(next, text.end());
    whole.append(next, fault);
    if (fault == text.end()) break;
    whole += "\xEF\xBF\xBD";
    next = fault + FaultLength(fault, text.end());
  }
  return whole;
}

/// @return the character as a number without a sign, whatever sign its type has.
char32_t Unit(char c) { return static_cast<unsigned char>(c); }
char32_t Unit(wchar_t c) {
  if constexpr (sizeof(wchar_t) == 2) return static_cast<std::uint16_t>(c);
  return static_cast<char32_t>(c);
}

bool IsHighSurrogate(char32_t code) { return code >= 0xD800 && code <= 0xDBFF; }
bool IsLowSurrogate(char32_t code) { return code >= 0xDC00 && code <= 0xDFFF; }

char32_t DecodeWide(const std::wstring& text, std::size_t& next) {
  const char32_t unit = Unit(text[next++]);
  if (IsHighSurrogate(unit) && next < text.size() && IsLowSurrogate(Unit(text[next]))) {
    return 0x10000 + ((unit - 0xD800) << 10) + (Unit(text[next++]) - 0xDC00);
  }
  const bool valid = unit <= 0x10FFFF && !IsHighSurrogate(unit) && !IsLowSurrogate(unit);
  return valid ? unit : 0xFFFD;
}

/// Folds the case of the alphabets that names of software are written in: Latin (Latin-1), Greek
/// and Cyrillic. A table of our own, since the C library's answer hangs on the locale.
wchar_t Fold(wchar_t c) {
  const char32_t unit = Unit(c);
  const auto between = [unit](char32_t low, char32_t high) { return unit >= low && unit <= high; };
  const bool latin = between('A', 'Z') || (between(0xC0, 0xDE) && unit != 0xD7);
  const bool greek = between(0x391, 0x3A9) && unit != 0x3A2;
  if (latin || greek || between(0x410, 0x42F)) return static_cast<wchar_t>(unit + 0x20);
  return between(0x400, 0x40F) ? static_cast<wchar_t>(unit + 0x50) : c;
}

/// Converts a text, block by block: `appendRest` takes what begins in a block and moves `next`
/// behind, while blocks of nothing but ASCII, which most texts consist of, are copied by loops that
/// work on many characters at a time.
template <class Result, class Text, class AppendRest>
Result Converted(const Text& text, const AppendRest& appendRest) {
  constexpr std::size_t Block = 64;
  Result result;
  // Room for some characters that take more than one place, too: growing copies all of the text.
  result.reserve(text.size() + text.size() / 16);
  for (std::size_t next = 0; next < text.size();) {
    const std::size_t end = std::min(next + Block, text.size());
    typename Text::value_type all = 0;
    for (std::size_t i = next; i < end; ++i) all = static_cast<decltype(all)>(all | text[i]);
    if (Unit(all) < 0x80) {
      const std::size_t start = result.size();
      result.resize(start + end - next);
      std::copy(text.data() + next, text.data() + end, result.data() + start);
      next = end;
    } else {
      appendRest(result, next, end);
    }
  }
  return result;
}

/// @param text in, UTF-8. @throws utf8::exception when it is not valid.
std::wstring Decoded(const std::string& text) {
  return Converted<std::wstring>(text, [&](std::wstring& wide, std::size_t& next, std::size_t end) {
    while (end < text.size() && (Unit(text[end]) & 0xC0) == 0x80) ++end;  // No sequence is cut.
    const char *const from = text.data() + next, *const to = text.data() + end;
    if constexpr (sizeof(wchar_t) == 2) {
      utf8::utf8to16(from, to, std::back_inserter(wide));
    } else {
      utf8::utf8to32(from, to, std::back_inserter(wide));
    }
    next = end;
  });
}

}  // namespace

namespace ZLT {

std::wstring String::UTF8ToUTF16(const std::string& text) try {
  return Decoded(text);
} catch (const utf8::exception&) {
  return Decoded(Repaired(text));
}

std::string String::UTF16ToUTF8(const std::wstring& text) {
  return Converted<std::string>(text, [&](std::string& bytes, std::size_t& next, std::size_t end) {
    while (next < end) utf8::append(DecodeWide(text, next), std::back_inserter(bytes));
  });
}

bool String::CaseInsesitiveFind(const std::wstring& haystack, const std::wstring& needle) {
  return std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end(),
                     [](wchar_t a, wchar_t b) { return Fold(a) == Fold(b); }) != haystack.end() ||
         needle.empty();
}

}  // namespace ZLT
