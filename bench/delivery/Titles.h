#pragma once

#include <json/forwards.h>

#include <string>

/// Titles of the benchmark's catalogue, as offer.sh writes it.
namespace Catalogue {

/// @return "T-007", say. The letters: T a title with packages of 1 MB in its modules, S one with a
/// check script of its own, F one whose module has as many files as its number says, L a large
/// file.
/// @param number in, from 1.
std::string Title(char letter, int number);

/// @return "M-1", say. @param number in, from 1.
std::string Module(int number);

/// @return titles from number `first` to number `last`, each with so many modules, as an
/// entitlement query gives them.
Json::Value Titles(char letter, int first, int last, int modules);

}  // namespace Catalogue

/// @throws std::runtime_error when not every title of the document has the status "installed".
void RequireInstalled(const Json::Value& document);
