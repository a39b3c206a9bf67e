#pragma once

#include <json/value.h>
#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// What a run of tolmarctl came to.
struct RunResult {
  int exitStatus = -1;  ///< 124: it did not end within the test's time
  std::string output;
  std::string errors;
  Json::Value json;  ///< the last line of `output` parsed; null when it is no JSON
};

/// A name whose every sign means something to one shell or another. As in fixtures.sh.
inline constexpr const char* OddName = "a & b; $(exit 1) %TEMP% it's \u00FC";

/// One title that the simulator offers. Its package and check script come from fixtures.sh.
struct Title {
  std::string name;  ///< name of its fixture; part number is "T-" + name
  bool preinstall = false;
  std::vector<std::string> modules{};  ///< fixtures of its modules; empty: one, the title's own
};

/// A clean device and a simulator of its own for one test: nothing installed, no logs, no
/// downloads.
class Lab {
 public:
  /// @param options in, further ones of the simulator.
  explicit Lab(const std::vector<Title>& titles, const std::vector<std::string>& options = {});
  ~Lab();
  Lab(const Lab&) = delete;
  Lab& operator=(const Lab&) = delete;

  /// Orders a fault from the simulator (JSON text of one fault).
  void Fault(const std::string& json);

  /// The device's configuration, written anew before each run.
  Json::Value& Configuration() { return _configuration; }

  /// Runs tolmarctl --json with the arguments. @param seconds in, how long it may take.
  RunResult Run(const std::string& arguments, int seconds = 60);

  /// The same without --json.
  RunResult RunForPeople(const std::string& arguments, int seconds = 60);

  /// Runs tolmarctl --json with a line of standard input.
  RunResult RunWithInput(const std::string& line, const std::string& arguments);

  /// Writes the device's configuration as it is now; the runs do so themselves.
  void WriteConfiguration() const;

  /// Runs another program of the device, with the words of a shell. @return what it prints.
  std::string Wine(const std::string& command) const;

  /// Sets a value of the machine's policy. @param type in, REG_SZ or another of `reg add`.
  void Policy(const std::string& key, const std::string& type, const std::string& data);

  /// The same on a terminal. @param environment in, assignments. @return what the terminal got.
  std::string RunOnTerminal(const std::string& environment, const std::string& arguments);

  /// Adds what the simulator received and answered to the file that E2E_EXCHANGES names, for
  /// tests/schema/exchanges.py.
  void KeepExchanges();

  /// Adds the run to the file that E2E_RUNS names, for tests/schema/check.py.
  void Keep(const std::string& arguments, const RunResult& result) const;

  /// Ends everything that runs on the device and starts it again.
  void Reboot() const;

  /// Runs tolmarctl and kills it once `reached` says so. @return false when that did not come.
  bool RunAndKill(const std::string& arguments, const std::function<bool()>& reached);

  /// Runs a program of the product and presses Ctrl-C once `reached` says so, or after 30 s.
  RunResult RunToCtrlC(const std::string& program, const std::string& arguments,
                       const std::function<bool()>& reached);

  /// @return the types of the requests that the simulator received, in order; files as "file NAME".
  std::vector<std::string> ReceivedTypes();
  /// @return all records of one type.
  std::vector<Json::Value> Received(const std::string& type);

  /// @return text of a log file of the device, empty when there is none.
  std::string LogText(const std::string& name) const;

  bool IsInstalled(const std::string& title) const;
  std::filesystem::path DriveC() const { return _driveC; }
  std::string CloudUrl() const { return _configuration["baseUrl"].asString(); }

  /// @return what the registry holds as "Entitled": "0x1", "0x0", or empty.
  std::string EntitledValue() const;

 private:
  void StartCloud(const Json::Value& catalogue, const std::vector<std::string>& options);
  void ClearMachine() const;
  std::string Command(const std::string& arguments, const std::string& program = "tolmarctl") const;
  Json::Value Ask(const std::string& path);

  std::filesystem::path _fixtures;
  std::filesystem::path _driveC;
  std::filesystem::path _folder;
  Json::Value _configuration;
  Json::Value _faults{Json::arrayValue};
  bool _hasPolicy = false;
  pid_t _cloud = -1;
  int _port = 0;
};

/// @return a title in a document with "swList", null when it has none.
const Json::Value& TitleOf(const RunResult& run, const std::string& title);

/// @return what a title says of itself there, empty when nothing.
std::string StatusOf(const RunResult& run, const std::string& title);
std::string CauseOf(const RunResult& run, const std::string& title);
