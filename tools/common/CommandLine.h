#pragma once

#include <CLI/CLI.hpp>
#include <optional>

/// Reads a program's command line.
/// @return the exit status to end with at once: 0 when help was asked for, 2 for a wrong line;
/// nothing: go on.
inline std::optional<int> EndOfParsing(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  return std::nullopt;
}
