#include "tools/tolmarctl/LogFilter.h"

LogFilter::LogFilter(unsigned long processId)
    : _mark(std::string(" ").append(std::to_string(processId)).append(" ")) {}

std::vector<std::string> LogFilter::Take(const std::string& piece) {
  _unfinished += piece;
  std::vector<std::string> records;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = _unfinished.find('\n', begin)) != std::string::npos;) {
    Add(_unfinished.substr(begin, end + 1 - begin), records);
    begin = end + 1;
  }
  _unfinished.erase(0, begin);
  return records;
}

/// A record begins with its time, then the process; its further lines are indented.
void LogFilter::Add(const std::string& line, std::vector<std::string>& records) {
  const bool isFirst = line[0] != ' ';
  if (isFirst) _isOwn = line.find(' ') == line.find(_mark);
  if (!_isOwn) return;
  if (isFirst || records.empty()) records.emplace_back();
  records.back() += line;
}
