#include <gtest/gtest.h>

#include <functional>

#include "tests/tolmarpack/Sample.h"
#include "tools/tolmarpack/Signature.h"
#include "tools/tolmarpack/Verdict.h"

using namespace tolmarpack;
namespace fs = std::filesystem;

namespace {

constexpr char OtherThumbprint[] =
    "0000000000000000000000000000000000000000000000000000000000000000";

Signer SignerNamed(const std::string& name, const std::string& chain) {
  Signer signer;
  const std::string folder = std::string(TOLMAR_PKI) + "/";
  signer.certificate = folder + name + ".crt";
  signer.key = folder + name + ".key";
  signer.chain = folder + chain + ".crt";
  return signer;
}

void Replace(const fs::path& file, const std::string& from, const std::string& to) {
  std::string bytes = ReadFile(file);
  const std::size_t at = bytes.find(from);
  ASSERT_NE(at, std::string::npos);
  WriteFile(file, bytes.replace(at, from.size(), to));
}

void Resize(const fs::path& file, int by) {
  std::string bytes = ReadFile(file);
  bytes.resize(bytes.size() + static_cast<std::size_t>(by));
  WriteFile(file, bytes);
}

/// A way from a folder to a package that is no good.
struct Row {
  const char* rule;   ///< that lint finds; empty: nothing
  const char* cause;  ///< that the host would tell; empty: it takes the package
  std::function<void(const fs::path&)> unsignedOne = [](const fs::path&) {};
  Signer signer = SignerNamed("cs", "ca");
  std::function<void(const fs::path&)> signedOne = [](const fs::path&) {};
  const char* trusted = "";
};

const std::vector<Row>& Rows() {
  const auto none = [](const fs::path&) {};
  static const std::vector<Row> rows{
      {"", ""},
      {"unsigned", "package.unsigned", none, {}},
      {"signature", "package.signature", none, SignerNamed("cs", "ca"),
       [](const fs::path& cab) { Replace(cab, "hello.txt", "hullo.txt"); }},
      {"signature", "package.signature", none, SignerNamed("cs", "ca"),
       [](const fs::path& cab) { Resize(cab, 1); }},
      {"signature", "package.signature", none, SignerNamed("cs", "ca"),
       [](const fs::path& cab) { Replace(cab, "Lab publisher", "Lab publishee"); }},
      {"signature", "package.signature", none, SignerNamed("stranger", "stranger-ca")},
      {"signature", "package.signature", none, SignerNamed("tls", "ca")},
      {"publisher", "package.publisher", none, SignerNamed("cs", "ca"), none, OtherThumbprint},
      {"damaged", "package.damaged", none, SignerNamed("cs", "ca"),
       [](const fs::path& cab) { fs::resize_file(cab, 300); }},
      {"damaged", "package.damaged", [](const fs::path& cab) { Replace(cab, "CK", "CX"); }},
      {"name-refused", "package.member",
       [](const fs::path& cab) { Replace(cab, "payload\\", "..\\load\\"); }},
      {"installer-missing", "installer.exit-code",
       [](const fs::path& cab) { Replace(cab, "install.ps1", "install.txt"); }},
  };
  return rows;
}

refhost::Configuration Trusting(const std::string& publisher) {
  refhost::Configuration configuration;
  if (!publisher.empty()) configuration.trustedPublishers = {publisher};
  return configuration;
}

}  // namespace

TEST(Cabinet, LintAndVerifyTellWhatIsWrong) {
  for (const Row& row : Rows()) {
    const Sample sample;
    const fs::path cabinet = sample.folder / "sample.cab";
    BuildPackage(ReadFolder(sample.folder), cabinet);
    row.unsignedOne(cabinet);
    if (row.signer.IsNamed()) SignCabinet(cabinet, cabinet, row.signer);
    row.signedOne(cabinet);
    const Yardstick yardstick{Trusting(row.trusted), {true, std::string(TOLMAR_PKI) + "/ca.crt"}};
    const Verdict verdict = Judge(cabinet, yardstick);
    EXPECT_EQ(verdict.cause, row.cause) << row.rule << ": " << verdict.refusal;
    EXPECT_EQ(verdict.refusal.empty(), *row.cause == '\0') << row.rule;
    std::set<std::string> expected;
    if (*row.rule != '\0') expected.insert(row.rule);
    EXPECT_EQ(RulesIn(Lint({cabinet}, yardstick)), expected) << row.cause;
  }
}

TEST(Cabinet, NamesThatWindowsCannotHaveAreRefused) {
  for (const char* name : {"payload/aux.txt", "payload/HELLO.TXT", "payload/a:b", "payload/dot."}) {
    const Sample sample;
    sample.Write(name, "x");
    EXPECT_EQ(RulesIn(Lint({sample.folder}, {})), std::set<std::string>{"name-refused"}) << name;
    EXPECT_THROW(BuildPackage(ReadFolder(sample.folder), sample.home.Path() / "x.cab"),
                 std::runtime_error);
  }
  const Sample sample;
  fs::create_symlink("/etc/hostname", sample.folder / "payload" / "link");
  EXPECT_THROW(BuildPackage(ReadFolder(sample.folder), sample.home.Path() / "x.cab"),
               std::runtime_error);
}
