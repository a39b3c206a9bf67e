#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <stdexcept>

#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "host/common/PackageExtractor.h"
#include "tests/host/windows/FakeImport.h"
#include "tests/host/windows/TestMachine.h"

namespace fs = std::filesystem;

namespace {

/// The packages that the set-up of the tests has made, see fixtures.sh.
fs::path Fixtures() {
  const char* folder = std::getenv("TOLMAR_FIXTURES");
  if (folder == nullptr) throw std::runtime_error("TOLMAR_FIXTURES is not set");
  return folder;
}

/// A folder for one package, gone at the end of the test.
class Package {
 public:
  /// @param fixture in, the name of one of the prepared cabinets.
  explicit Package(const std::string& fixture) {
    static int number = 0;
    folder = fs::path(TestMachine::Folder()) /
             ("package" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number));
    FileSystem::createDirectory(folder.wstring(), false);
    cab = folder / "the package.cab";
    fs::copy_file(Fixtures() / fixture, cab);
  }
  ~Package() { FileSystem::deleteDirectoryOrFile(folder.wstring(), true); }

  /// @return the relative paths of everything in the folder, in order.
  std::vector<std::string> Contents() const {
    std::vector<std::string> contents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      contents.push_back(fs::relative(entry.path(), folder).generic_string());
    }
    std::sort(contents.begin(), contents.end());
    return contents;
  }

  /// @return true when nobody has the package open.
  bool IsFree() const {
    const HANDLE file =
        CreateFileW(cab.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file) != 0;
  }

  fs::path folder;
  fs::path cab;
};

std::string Read(const fs::path& path) { return TestMachine::ReadFile(path.wstring()); }

const std::vector<std::string> Untouched = {"the package.cab"};

}  // namespace

TEST(PackageExtractor, UnpacksIntoNewFoldersBesideThePackage) {
  const Package package("nested.cab");
  const fs::path first = ZLT::PackageExtractor::ExtractCab(package.cab.wstring());
  EXPECT_EQ(first, package.folder / "the package");
  EXPECT_EQ(Read(first / "tools" / "one.txt"), "one\n");
  EXPECT_EQ(Read(first / "tools" / "deep" / "two.txt"), "two\n");
  const std::wstring deep =
      std::wstring(119, L'0') + L"1\\" + std::wstring(119, L'0') + L"2\\far.txt";
  EXPECT_GT((first / deep).wstring().size(), 300U);
  EXPECT_EQ(TestMachine::ReadFile(L"\\\\?\\" + (first / deep).wstring()), "far\n");
  const fs::path second = ZLT::PackageExtractor::ExtractCab(package.cab.wstring());
  EXPECT_NE(second, first);
  EXPECT_EQ(Read(second / "install.ps1"), Read(first / "install.ps1"));
}

TEST(PackageExtractor, UnpacksEveryByte) {
  const Package package("signed.cab");
  const fs::path folder = ZLT::PackageExtractor::ExtractCab(package.cab.wstring());
  const fs::path original = Fixtures() / "contents" / "large.bin";
  ASSERT_EQ(fs::file_size(original), 200000U);
  EXPECT_TRUE(Read(folder / "large.bin") == Read(original));
}

TEST(PackageExtractor, LeavesNothingOfWhatItDoesNotTake) {
  const struct {
    const char* fixture;
    const char* error;  ///< part of the exception's text, null when the validation refuses it
  } rows[] = {
      {"unsigned.cab", nullptr}, {"tampered.cab", nullptr},
      {"appended.cab", nullptr}, {"stranger.cab", nullptr},
      {"usage.cab", nullptr},    {"traversal.cab", "..\\evil.txt"},
      {"twice.cab", "twice"},    {"corrupt.cab", "corrupt"},
      {"cut.cab", "shorter"},    {"contents/install.ps1", "not a cabinet"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.fixture);
    const Package package(row.fixture);
    std::string error;
    try {
      EXPECT_EQ(ZLT::PackageExtractor::ExtractCab(package.cab.wstring()), L"");
    } catch (const std::runtime_error& exception) {
      error = exception.what();
    }
    EXPECT_EQ(error.empty(), row.error == nullptr) << error;
    EXPECT_NE(error.find(row.error == nullptr ? "" : row.error), std::string::npos) << error;
    EXPECT_EQ(package.Contents(), Untouched);
    EXPECT_FALSE(fs::exists(package.folder / ".." / "evil.txt"));
  }
}

TEST(PackageExtractor, NobodyMovesTheFolderBeforeItsInstallerRuns) {
  const Package package("nested.cab");
  const fs::path folder = ZLT::PackageExtractor::ExtractCab(package.cab.wstring());
  EXPECT_FALSE(MoveFileExW(folder.c_str(), (package.folder / "other").c_str(), 0));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
}

TEST(PackageExtractor, UnpacksNothingWhereOthersMayWrite) {
  const Package package("nested.cab");
  TestMachine::LetEverybodyWrite(package.folder.wstring());
  EXPECT_THROW(ZLT::PackageExtractor::ExtractCab(package.cab.wstring()), std::runtime_error);
  EXPECT_EQ(package.Contents(), Untouched);
  TestMachine::LetEverybodyWrite(package.folder.wstring(), false);
}

/// A cabinet that announces so many files of 2 GB each, and holds none of them.
std::string HugeCabinet(std::uint16_t count) {
  std::string bytes;
  const auto add = [&bytes](std::uint32_t value, int size) {
    for (; size > 0; --size, value >>= 8) bytes += static_cast<char>(value & 0xFF);
  };
  constexpr std::uint32_t Head = 36, Folder = 8, Entry = 16 + 6;
  bytes = "MSCF";
  for (const std::uint32_t value : {0u, Head + Folder + count * Entry, 0u, Head + Folder, 0u}) {
    add(value, 4);
  }
  for (const std::uint32_t value : {0x0103u, 1u, std::uint32_t{count}, 0u, 0u, 0u}) add(value, 2);
  add(Head + Folder + count * Entry, 4);
  add(0, 4);
  for (std::uint32_t i = 0; i < count; ++i) {
    add(0x7FFF8000, 4);
    add(0, 4);
    for (int field = 0; field < 4; ++field) add(0, 2);
    bytes += std::to_string(10000 + i);
    add(0, 1);
  }
  return bytes;
}

TEST(PackageExtractor, AsksForRoomBeforeItUnpacks) {
  const std::wstring cab = TestMachine::Folder() + L"\\huge.cab";
  TestMachine::WriteFile(cab, HugeCabinet(50000));
  Json::Value changes;
  changes["requireSignedPackages"] = false;
  changes["maxUnpackedBytes"] = (Json::UInt64{1} << 53) - 1;
  SetEnvironmentVariableW(L"TOLMAR_TEST_PACKAGE", cab.c_str());
  std::string output;
  EXPECT_NE(
      TestMachine::RunAgain(L"--gtest_filter=PackageExtractor.TakesThePackageOfTheEnvironment",
                            TestMachine::ConfigurationWith(changes), output),
      0U);
  SetEnvironmentVariableW(L"TOLMAR_TEST_PACKAGE", nullptr);
  EXPECT_NE(output.find("unpacks to 107372544000000 bytes, the disk has room for "),
            std::string::npos)
      << output;
}

TEST(PackageExtractor, TakesNoPackageThatSomebodyMayStillChange) {
  const Package package("signed.cab");
  EXPECT_THROW(ZLT::PackageExtractor::ExtractCab((package.folder / "none.cab").wstring()),
               std::runtime_error);
  const HANDLE writer =
      CreateFileW(package.cab.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(writer, INVALID_HANDLE_VALUE);
  EXPECT_THROW(ZLT::PackageExtractor::ExtractCab(package.cab.wstring()), std::runtime_error);
  CloseHandle(writer);
  EXPECT_EQ(package.Contents(), Untouched);
}

/// Run once more by the test below, in processes with packages and configurations of their own.
/// Windows as it judges a signature while the network is slow.
struct SlowTrust {
  static inline HANDLE asked, answered;
  static inline ULONGLONG passed;

  static LONG WINAPI Verify(HWND, GUID*, void*) {
    SetEvent(asked);
    WaitForSingleObject(answered, 60000);
    return 0;
  }
  static BOOL WINAPI AwakeTime(ULONGLONG* ticks) {
    if (!QueryUnbiasedInterruptTime(ticks)) return FALSE;
    *ticks += passed;
    return TRUE;
  }
};

TEST(PackageExtractor, ASignatureThatWaitsForTheNetworkIsGivenUp) {
  SlowTrust::asked = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  SlowTrust::answered = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  SlowTrust::passed = 0;
  const FakeImport trust("wintrust.dll", "WinVerifyTrust",
                         reinterpret_cast<void*>(&SlowTrust::Verify));
  const FakeImport clock("kernel32.dll", "QueryUnbiasedInterruptTime",
                         reinterpret_cast<void*>(&SlowTrust::AwakeTime));
  const Package package("signed.cab");
  const auto extract = [&] {
    auto done =
        std::async(std::launch::async, &ZLT::PackageExtractor::ExtractCab, package.cab.wstring());
    EXPECT_EQ(WaitForSingleObject(SlowTrust::asked, 20000), WAIT_OBJECT_0);
    return done;
  };
  auto late = extract();
  SlowTrust::passed = 61'000ULL * 10'000;
  EXPECT_EQ(late.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  auto stopped = extract();
  DownloadAgent::GetInstance(L"Signature", {}, {}, {})->CleanUp();
  EXPECT_EQ(stopped.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  SetEvent(SlowTrust::answered);
  EXPECT_EQ(late.get(), L"");
  EXPECT_THROW(stopped.get(), std::runtime_error);
  EXPECT_NE(TestMachine::ReadLog(L"ZLT.log").find("was not judged in time"), std::string::npos);
  while (!package.IsFree()) SwitchToThread();  // what was left behind comes to its end
}

TEST(PackageExtractor, TakesThePackageOfTheEnvironment) {
  const char* fixture = std::getenv("TOLMAR_TEST_PACKAGE");
  const Package package(fixture == nullptr ? "signed.cab" : fixture);
  EXPECT_NE(ZLT::PackageExtractor::ExtractCab(package.cab.wstring()), L"");
}

TEST(PackageExtractor, TakesWhatTheConfigurationAllows) {
  Json::Value others;
  others[0] = std::string(64, 'a');
  Json::Value ours = others;
  ours[1] = Read(Fixtures() / "publisher.txt");
  const struct {
    const char* fixture;
    const char* key;
    Json::Value value;
    bool taken;
  } rows[] = {{"unsigned.cab", "requireSignedPackages", false, true},
              {"tampered.cab", "requireSignedPackages", false, false},
              {"signed.cab", "trustedPublishers", ours, true},
              {"signed.cab", "trustedPublishers", others, false},
              {"signed.cab", "maxUnpackedBytes", 200000, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.fixture) + row.key);
    Json::Value changes;
    changes[row.key] = row.value;
    SetEnvironmentVariableA("TOLMAR_TEST_PACKAGE", row.fixture);
    std::string output;
    const unsigned long result =
        TestMachine::RunAgain(L"--gtest_filter=PackageExtractor.TakesThePackageOfTheEnvironment",
                              TestMachine::ConfigurationWith(changes), output);
    SetEnvironmentVariableA("TOLMAR_TEST_PACKAGE", nullptr);
    EXPECT_EQ(result == 0, row.taken) << output;
    EXPECT_NE(output.find("1 test from 1 test suite ran"), std::string::npos) << output;
  }
}
