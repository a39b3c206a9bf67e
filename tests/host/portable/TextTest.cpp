#include "host/common/Text.h"

#include <gtest/gtest.h>

namespace {

using ZLT::String;

TEST(Text, EachMaximalInvalidSequenceBecomesOneReplacement) {
  const struct {
    const char* name;
    std::string bytes;
    std::wstring wide;
  } rows[] = {
      {"one to three bytes", "a\xC3\xA9\xE2\x82\xAC", L"a\u00E9\u20AC"},
      {"first and last of their lengths", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF",
       L"\x7F\x80\u07FF\u0800\uFFFF"},
      {"past the basic plane", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", L"\U00010000\U0010FFFF"},
      {"a zero is a character", std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
      {"lone follower", "\x80z", L"\uFFFDz"},
      {"overlong of two bytes", "\xC0\xAF", L"\uFFFD\uFFFD"},
      {"overlong of three bytes", "\xE0\x80\xAF", L"\uFFFD\uFFFD\uFFFD"},
      {"surrogate", "\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},
      {"past the last code point", "\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"cut off at the end", "a\xF0\x9F\x98", L"a\uFFFD"},
      {"cut off by a letter", "\xE2\x82z", L"\uFFFDz"},
      {"cut off by the next sequence", "\xE2\x82\xC3\xA9", L"\uFFFD\u00E9"},
      {"never a lead", "\xFF\xF5", L"\uFFFD\uFFFD"},
  };
  for (const auto& row : rows) EXPECT_EQ(String::UTF8ToUTF16(row.bytes), row.wide) << row.name;
}

TEST(Text, WideTextBecomesValidUtf8) {
  const auto high = static_cast<wchar_t>(0xD83D);
  const auto low = static_cast<wchar_t>(0xDE00);
  const struct {
    const char* name;
    std::wstring wide;
    std::string bytes;
  } rows[] = {
      {"every length", L"z\u00E9\u20AC\U0001F600", "z\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"pair", {high, low}, "\xF0\x9F\x98\x80"},
      {"high alone at the end", {L'a', high}, "a\xEF\xBF\xBD"},
      {"high before a letter",
       {high, L'a'},
       "\xEF\xBF\xBD"
       "a"},
      {"wrong way round", {low, high}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
  };
  for (const auto& row : rows) EXPECT_EQ(String::UTF16ToUTF8(row.wide), row.bytes) << row.name;
}

TEST(Text, EveryCodePointSurvivesTheWayThereAndBack) {
  for (char32_t code = 1; code <= 0x10FFFF; code += code < 0x3000 ? 1 : 0x101) {
    if (code >= 0xD800 && code <= 0xDFFF) continue;
    std::wstring wide(63, L'a');  // so that the code point lies across the end of a block
    if (sizeof(wchar_t) == 2 && code > 0xFFFF) {
      wide += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
      wide += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
    } else {
      wide += static_cast<wchar_t>(code);
    }
    wide.append(64, L'z');
    ASSERT_EQ(String::UTF8ToUTF16(String::UTF16ToUTF8(wide)), wide) << std::hex << +code;
  }
}

TEST(Text, FindsRegardlessOfCase) {
  const struct {
    const wchar_t* haystack;
    const wchar_t* needle;
    bool found;
  } rows[] = {
      {L"CHECK.PS1", L".ps1", true},
      {L"a.ps1.bak", L".PS1", true},
      {L"a.ps", L".ps1", false},
      {L"", L"", true},
      {L"", L"a", false},
      {L"\u00C4rger", L"\u00E4R", true},
      {L"\u041F\u0401", L"\u043F\u0451", true},
      {L"\u03A9", L"\u03C9", true},
      {L"\u00D7", L"\u00F7", false},
      {L"[", L"{", false},
      {L"@", L"`", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(String::CaseInsesitiveFind(row.haystack, row.needle), row.found)
        << String::UTF16ToUTF8(row.haystack);
  }
}

}  // namespace
