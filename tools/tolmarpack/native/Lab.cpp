#include "tools/tolmarpack/Lab.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "tools/tolmarpack/Program.h"

namespace fs = std::filesystem;

namespace tolmarpack {

namespace {

/// No command of the host runs longer than installer and check, which have limits of their own.
constexpr char HostSeconds[] = "86400";

/// What scripts/in-lab.sh tells.
std::string Told(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) throw std::runtime_error(std::string(name) + " is not set");
  return value;
}

}  // namespace

Lab FindLab(const std::string& simulator) {
  const std::string pki = Told("PKI");
  Lab lab;
  lab.folder = fs::path(Told("LAB_C")) / "trial";
  lab.folderOnDevice = "C:\\trial";
  lab.host = {"timeout", "-k", "5", HostSeconds, "wine", Told("LAB_BIN") + "/tolmarctl.exe"};
  lab.cloud = {simulator.empty() ? Told("NATIVE_BIN") + "/cloudsim" : simulator, "--tls-cert",
               pki + "/tls.crt", "--tls-key", pki + "/tls.key"};
  lab.scheme = "https";
  lab.signer.certificate = pki + "/cs.crt";
  lab.signer.key = pki + "/cs.key";
  lab.signer.chain = pki + "/ca.crt";
  fs::remove_all(lab.folder);
  fs::create_directories(lab.folder);
  return lab;
}

std::optional<int> RunInLab(int count, char** words) {
  if (std::getenv("TOLMARPACK_LAB") != nullptr) return {};
  std::string script = TextOf(FindAbove("scripts/in-lab.sh"));
  if (script.empty()) {
    throw std::runtime_error("there is no lab: run the tolmarpack of a source tree");
  }
  std::string bash = "bash", self = TextOf(OwnProgram());
  std::vector<char*> arguments{bash.data(), script.data(), self.data()};
  arguments.insert(arguments.end(), words + 1, words + count);
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  throw std::runtime_error("cannot start bash");
}

}  // namespace tolmarpack
