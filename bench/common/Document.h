#pragma once

#include <json/forwards.h>

#include <string>
#include <vector>

/// Adds a title to a document as an entitlement query gives it.
/// @param modules in, their names.
void AddTitle(Json::Value& document, const std::string& title,
              const std::vector<std::string>& modules);
