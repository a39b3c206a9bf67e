#pragma once

#include <cstddef>
#include <string>

/// @return UTF-8 text as it may be shown: what is no UTF-8, and what a terminal would act on
/// (control characters, changes of direction), becomes U+FFFD.
std::string Printable(const std::string& text);

/// @return how many columns of a terminal printable text takes: two for what is wide in East Asia
/// (and for emoji), none for combining marks, one for everything else. Scripts that a terminal
/// joins or stacks may come out narrower than told here.
std::size_t DisplayWidth(const std::string& text);
