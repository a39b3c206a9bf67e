#include "host/common/Text.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr char32_t Replacement = 0xFFFD;

/// What may follow a lead byte: how many bytes, and the range of the first of them. The ranges keep
/// out overlong forms, surrogates and what lies past U+10FFFF.
struct Sequence {
  int followers;
  unsigned char low;
  unsigned char high;
};

constexpr Sequence SequenceOf(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return {1, 0x80, 0xBF};
  if (lead == 0xE0) return {2, 0xA0, 0xBF};
  if (lead == 0xED) return {2, 0x80, 0x9F};
  if (lead >= 0xE1 && lead <= 0xEF) return {2, 0x80, 0xBF};
  if (lead == 0xF0) return {3, 0x90, 0xBF};
  if (lead >= 0xF1 && lead <= 0xF3) return {3, 0x80, 0xBF};
  if (lead == 0xF4) return {3, 0x80, 0x8F};
  return {0, 0, 0};
}

/// Reads one code point at `next` and moves it behind. Of an invalid sequence only the part that
/// could have begun a valid one is taken: what follows may be whole again.
char32_t Decode(const std::string& text, std::size_t& next) {
  const auto lead = static_cast<unsigned char>(text[next++]);
  if (lead < 0x80) return lead;
  Sequence sequence = SequenceOf(lead);
  if (sequence.followers == 0) return Replacement;
  char32_t code = lead & (0x3Fu >> sequence.followers);
  for (int i = 0; i < sequence.followers; ++i) {
    if (next == text.size()) return Replacement;
    const auto byte = static_cast<unsigned char>(text[next]);
    if (byte < sequence.low || byte > sequence.high) return Replacement;
    code = (code << 6) | (byte & 0x3Fu);
    ++next;
    sequence.low = 0x80;
    sequence.high = 0xBF;
  }
  return code;
}

void AppendWide(std::wstring& text, char32_t code) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (code > 0xFFFF) {
      text += static_cast<wchar_t>(0xD7C0 + (code >> 10));
      text += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
      return;
    }
  }
  text += static_cast<wchar_t>(code);
}

bool IsHighSurrogate(char32_t code) { return code >= 0xD800 && code <= 0xDBFF; }
bool IsLowSurrogate(char32_t code) { return code >= 0xDC00 && code <= 0xDFFF; }

/// @return the character as a number without a sign, whatever sign its type has.
char32_t Unit(char c) { return static_cast<unsigned char>(c); }
char32_t Unit(wchar_t c) {
  if constexpr (sizeof(wchar_t) == 2) return static_cast<std::uint16_t>(c);
  return static_cast<char32_t>(c);
}

char32_t DecodeWide(const std::wstring& text, std::size_t& next) {
  const char32_t unit = Unit(text[next++]);
  if (IsHighSurrogate(unit) && next < text.size() && IsLowSurrogate(Unit(text[next]))) {
    return 0x10000 + ((unit - 0xD800) << 10) + (Unit(text[next++]) - 0xDC00);
  }
  const bool valid = unit <= 0x10FFFF && !IsHighSurrogate(unit) && !IsLowSurrogate(unit);
  return valid ? unit : Replacement;
}

void AppendBytes(std::string& text, char32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
    return;
  }
  const int followers = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  text += static_cast<char>((0xFF00u >> (followers + 1) & 0xFF) | (code >> (6 * followers)));
  for (int shift = 6 * (followers - 1); shift >= 0; shift -= 6) {
    text += static_cast<char>(0x80 | (code >> shift & 0x3F));
  }
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

/// Converts a text, block by block: `appendOne` takes one code point, while blocks of nothing but
/// ASCII, which most texts consist of, are copied by loops that work on many characters at a time.
template <class Result, class Text, class AppendOne>
Result Converted(const Text& text, const AppendOne& appendOne) {
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
      while (next < end) appendOne(result, next);
    }
  }
  return result;
}

}  // namespace

namespace ZLT {

std::wstring String::UTF8ToUTF16(const std::string& text) {
  return Converted<std::wstring>(text, [&text](std::wstring& wide, std::size_t& next) {
    AppendWide(wide, Decode(text, next));
  });
}

std::string String::UTF16ToUTF8(const std::wstring& text) {
  return Converted<std::string>(text, [&text](std::string& bytes, std::size_t& next) {
    AppendBytes(bytes, DecodeWide(text, next));
  });
}

bool String::CaseInsesitiveFind(const std::wstring& haystack, const std::wstring& needle) {
  return std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end(),
                     [](wchar_t a, wchar_t b) { return Fold(a) == Fold(b); }) != haystack.end() ||
         needle.empty();
}

}  // namespace ZLT
