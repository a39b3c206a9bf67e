#include "tools/common/TerminalText.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace {

constexpr char32_t Replacement = 0xFFFD;

struct Range {
  char32_t first;
  char32_t last;
};

/// The blocks of Unicode 15 whose characters are wide (EastAsianWidth.txt), roughly: letters of
/// these scripts, not each odd sign.
constexpr auto Wide = std::to_array<Range>({{0x1100, 0x115F},
                                            {0x2E80, 0x303E},
                                            {0x3041, 0x4DBF},
                                            {0x4E00, 0xA4CF},
                                            {0xA960, 0xA97F},
                                            {0xAC00, 0xD7A3},
                                            {0xF900, 0xFAFF},
                                            {0xFE30, 0xFE6F},
                                            {0xFF00, 0xFF60},
                                            {0xFFE0, 0xFFE6},
                                            {0x1F300, 0x1F64F},
                                            {0x1F900, 0x1F9FF},
                                            {0x20000, 0x3FFFD}});
constexpr auto Combining = std::to_array<Range>({{0x0300, 0x036F},
                                                 {0x1AB0, 0x1AFF},
                                                 {0x1DC0, 0x1DFF},
                                                 {0x200B, 0x200D},
                                                 {0x20D0, 0x20FF},
                                                 {0xFE00, 0xFE0F},
                                                 {0xFE20, 0xFE2F}});
constexpr auto ActedOn = std::to_array<Range>(
    {{0x00, 0x1F}, {0x7F, 0x9F}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}});

template <std::size_t Count>
bool IsIn(const std::array<Range, Count>& ranges, char32_t c) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [c](const Range& range) { return range.first <= c && c <= range.last; });
}

std::size_t WidthOf(char32_t c) {
  if (IsIn(Combining, c)) return 0;
  return IsIn(Wide, c) ? 2 : 1;
}

}  // namespace

std::string Printable(const std::string& text) {
  std::string valid, shown;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), Replacement);
  for (auto at = valid.begin(); at != valid.end();) {
    const char32_t c = utf8::unchecked::next(at);
    utf8::unchecked::append(IsIn(ActedOn, c) ? Replacement : c, std::back_inserter(shown));
  }
  return shown;
}

std::size_t DisplayWidth(const std::string& text) {
  std::size_t width = 0;
  for (auto at = text.begin(); at != text.end();) width += WidthOf(utf8::unchecked::next(at));
  return width;
}
