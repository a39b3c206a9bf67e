// Runs every target over its checked-in inputs: fuzz_replay FOLDER. A finding ends the program; the
// input is the last that was named.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "FuzzTargets.h"

namespace {

namespace fs = std::filesystem;

std::size_t Replay(const Target& target, const fs::path& folder) {
  std::vector<fs::path> inputs;
  for (const auto& entry : fs::directory_iterator(folder)) inputs.push_back(entry.path());
  std::sort(inputs.begin(), inputs.end());
  for (const fs::path& input : inputs) {
    std::cout << input.string() << std::endl;
    std::ifstream file(input, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    target.run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
  return inputs.size();
}

}  // namespace

int main(int count, char** arguments) {
  std::size_t inputs = 0;
  for (const Target& target : Targets) {
    const std::size_t found =
        Replay(target, fs::path(count == 2 ? arguments[1] : ".") / target.name);
    if (found == 0) return std::cerr << target.name << ": no input\n", 1;
    inputs += found;
  }
  std::cout << inputs << " inputs of " << std::size(Targets) << " targets\n";
}
