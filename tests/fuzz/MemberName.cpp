// Names of a package's members, one a line.

#include "reference_host/files/MemberName.h"

#include <filesystem>
#include <sstream>

#include "host/common/Text.h"
#include "tests/fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream lines(Input{data, size}.Text());
  refhost::MemberNames names;
  std::set<std::string> taken;
  for (std::string line; std::getline(lines, line);) {
    if (!names.Add(ZLT::String::UTF8ToUTF16(line)).empty()) continue;
    for (char& c : line) c = c == '\\' ? '/' : c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    const std::filesystem::path path("/folder/" + line);
    Require(path.lexically_normal() == path && line.find(':') == line.npos, "it stays below");
    for (std::size_t cut = 0; (cut = line.find('/', cut)) != line.npos; ++cut) {
      Require(!taken.contains(line.substr(0, cut)), "no file is a folder too");
    }
    Require(taken.insert(line).second, "no name hides another");
  }
  return 0;
}
