#pragma once

#include <filesystem>
#include <string>

/// @param from in, the byte that it begins with. @return what the file holds from there on, also
/// while another process writes it; nothing when it is not there.
std::string Contents(const std::filesystem::path& path, std::uintmax_t from = 0);
