#pragma once

#include <string_view>

/// Receives the entries of the steps of a check. `entry` has no separator at its end.
class LogSink {
 public:
  virtual void Append(std::wstring_view entry) = 0;

 protected:
  LogSink() = default;
  LogSink(const LogSink&) = default;
  LogSink& operator=(const LogSink&) = default;
  ~LogSink() = default;
};
