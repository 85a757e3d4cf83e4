#pragma once

#include <string_view>

/// Where a step of the check writes its entries. Each entry is handed over without its separator.
class LogSink {
 public:
  virtual void Append(std::wstring_view entry) = 0;

 protected:
  LogSink() = default;
  LogSink(const LogSink&) = default;
  LogSink& operator=(const LogSink&) = default;
  ~LogSink() = default;
};
