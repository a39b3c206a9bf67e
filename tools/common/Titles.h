#pragma once

#include <json/value.h>

#include <string>

/// @return the text of that name, empty when it is none.
std::string TextIn(const Json::Value& object, const char* name);

/// @return true when an entry of the service's list has the shape that is agreed upon.
bool IsTitle(const Json::Value& title);

/// @return true when the document's "swList" is a list of such entries, and not an empty one.
bool HasTitles(const Json::Value& document);
