#pragma once

#include <gtest/gtest.h>
#include <httplib.h>
#include <json/value.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// A folder that goes away with the object.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  /// Writes a file, whose folder is made. @return its full name.
  std::string Write(const std::string& name, const std::string& text) const;
  std::string Path(const std::string& name) const { return (_path / name).string(); }

 private:
  std::filesystem::path _path;
};

/// The real program, from start to end of the object.
class CloudsimProcess {
 public:
  explicit CloudsimProcess(const std::vector<std::string>& arguments);
  ~CloudsimProcess();
  CloudsimProcess(const CloudsimProcess&) = delete;
  CloudsimProcess& operator=(const CloudsimProcess&) = delete;

  /// @return what it prints first, on standard output or error: its address or its complaint.
  const std::string& FirstLine() const { return _firstLine; }
  int Port() const;

  /// Sends `signal`, unless it is 0. @return the exit status, -1 when the program was killed.
  int End(int signal);

 private:
  int _process = -1;
  int _output = -1;
  std::string _firstLine;
};

Json::Value Parsed(const std::string& text);

/// A simulator with a small catalogue, and a device that talks to it.
class CloudsimTest : public testing::Test {
 protected:
  /// Starts with `faults` (a JSON array) in the catalogue; the files are archiver.cab (300,000
  /// bytes) and check.ps1 of module M-1 of title T-1.
  void Start(const std::string& faults = "[]", const std::vector<std::string>& options = {},
             const std::string& devices = "[]");
  void StartOnce() {
    if (!_cloud) Start();
  }

  std::unique_ptr<httplib::Client> NewClient() const;
  std::string Jwt();

  /// One of the service's requests from device D, with a good token unless one is given.
  httplib::Result Ask(const std::string& type, const std::string& members = "");
  httplib::Result AskRaw(const std::string& type, const std::string& body,
                         const std::string& token);

  /// A file's address as the service hands it out, without scheme, host and port.
  std::string UrlOf(const std::string& name);
  Json::Value Received();
  void PutFaults(const std::string& faults);

  TempFolder _folder;
  std::string _cab;  ///< the content of archiver.cab
  std::unique_ptr<CloudsimProcess> _cloud;
  std::unique_ptr<httplib::Client> _client;
};
