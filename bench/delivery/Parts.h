#pragma once

#include <string>

#include "bench/common/Samples.h"

/// The parts of the benchmark. Each prints samples (see Samples.h), blocks, and throws
/// std::runtime_error when something does not work, for then there is nothing to measure.
struct Order {
  Rounds rounds;
  int titles = 20;
  int modules = 2;  ///< of each title
  int files = 0;    ///< above 0: one title with one module of so many files instead
  bool agentOnly = false;
  int calls = 200;     ///< of the exchange, for one sample
  bool fresh = false;  ///< the check scripts have to be fetched
  std::string package;
};

/// Installs titles, in milliseconds: the agent against the straight line.
void MeasureInstallation(const Order& order);

/// What a start-up of the agent asks of the service, by the straight line, in milliseconds.
void MeasureFirstExchange(const Order& order);

/// What a command that only reads has the agent do, from its start to its end, in milliseconds.
void MeasureReading(const Order& order);

/// Asks whether the device is entitled, in milliseconds a call: the agent against WinHTTP.
void MeasureExchange(const Order& order);

/// Asks what is installed, in milliseconds: the agent against the check processes all at once; and
/// the most threads that there were.
void MeasureInstalledState(const Order& order);

/// Downloads a large file, in milliseconds and CPU seconds: the suite with the agent's callbacks
/// against the engine alone.
void MeasureLargeFile(const Order& order);

/// Checks and unpacks a package twice, in milliseconds ("first", "agent"); CPU seconds of the
/// second time, and the MiB that the first took at most.
void MeasureExtraction(const Order& order);
