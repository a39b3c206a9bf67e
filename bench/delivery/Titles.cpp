#include "bench/delivery/Titles.h"

#include <json/value.h>

#include <cstdio>
#include <stdexcept>
#include <vector>

#include "bench/common/Document.h"

std::string Catalogue::Title(char letter, int number) {
  char name[16];
  std::snprintf(name, sizeof name, "%c-%03d", letter, number);
  return name;
}

std::string Catalogue::Module(int number) { return "M-" + std::to_string(number); }

Json::Value Catalogue::Titles(char letter, int first, int last, int modules) {
  std::vector<std::string> names;
  for (int module = 1; module <= modules; ++module) names.push_back(Module(module));
  Json::Value document;
  for (int number = first; number <= last; ++number) {
    AddTitle(document, Title(letter, number), names);
  }
  return document;
}

void RequireInstalled(const Json::Value& document) {
  for (const Json::Value& title : document["swList"]) {
    if (title["status"] != "installed") {
      throw std::runtime_error(title["l1FruPn"].asString() + " is not installed: see the logs");
    }
  }
}
