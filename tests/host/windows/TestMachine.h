#pragma once

#include <json/value.h>

#include <string>

#include "tests/host/windows/LoopbackServer.h"

/// What the tests of this program share. The suite reads its configuration once in a process, so
/// there is one configuration, one cloud and one folder for all tests.
namespace TestMachine {

/// Prepares the machine; called once, before anything of the suite. The environment variable
/// TOLMAR_TEST_CONFIG may name another configuration file, for tests that run this program again.
void SetUp();
void TearDown();

/// @return a folder that is deleted at the end. The configuration's log folder is "logs" in it, its
/// download folder "downloads".
const std::wstring& Folder();

/// @return the server of the configuration's base URL ("/") and token URL ("/token").
LoopbackServer& Cloud();

/// @return the path of a configuration file that differs from this program's own in these keys.
std::wstring ConfigurationWith(const Json::Value& changes);

/// Runs this program again with `arguments` and a configuration file of the test's choice.
/// @return its exit code; `output`: what it wrote to standard output.
unsigned long RunAgain(const std::wstring& arguments, const std::wstring& configuration,
                       std::string& output);

std::string ReadFile(const std::wstring& path);
void WriteFile(const std::wstring& path, const std::string& bytes);

/// Opens a file as a scanner does. @return its HANDLE, to be closed.
void* Hold(const std::wstring& path);

/// Gives a file or folder an access list with which everybody may write to it, or administrators
/// and SYSTEM alone.
void LetEverybodyWrite(const std::wstring& path, bool allowed = true);

/// @return the lines of a log of the suite.
std::string ReadLog(const std::wstring& name);

/// @return the last record of level E of the suite's own log.
std::string LastError();

}  // namespace TestMachine
