#pragma once

#include <string>
#include <vector>

/// Picks the records of one process out of a log that several write to.
class LogFilter {
 public:
  explicit LogFilter(unsigned long processId);

  /// @param piece in, what the file has next.
  /// @return the process's records in it; a line that has no end yet is kept for the next piece.
  std::vector<std::string> Take(const std::string& piece);

 private:
  void Add(const std::string& line, std::vector<std::string>& records);

  const std::string _mark;
  std::string _unfinished;
  bool _isOwn = false;  ///< the record that the newest line belongs to
};
