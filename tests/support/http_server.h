#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace support {

/// The bytes of the answer to one request.
struct HttpReply {
  std::string bytes;      ///< status line, headers and body
  unsigned pause_ms = 0;  ///< wait before them
  /// Sent after `bytes` again and again, each time after a pause, until the client closes the connection or
  /// ten seconds have passed.
  std::string tail{};
  unsigned tail_pause_ms = 0;
};

/// A complete answer with its length and "Connection: close".
HttpReply Reply(int status, std::string_view body);

/// An HTTP server on loopback in a thread of this program; serves one connection at a time. In the sandbox
/// the update host and the probe address are 127.0.0.1, so it answers both; the probe only connects.
/// Its thread calls imported functions too, so a hook that counts or fails calls must look at the thread.
class HttpServer {
 public:
  using Answer = std::function<HttpReply()>;

  /// Listens at once on port 80; ends the program when that is taken. `answer` runs on the server's thread.
  explicit HttpServer(Answer answer);
  explicit HttpServer(HttpReply reply) : HttpServer([reply] { return reply; }) {}
  ~HttpServer() { Stop(); }

  /// Refuses connections from now on and closes a present one.
  void Stop();

  /// Request lines and headers.
  std::vector<std::string> Requests() const;
  /// Connections so far, also those without a request; final after Stop().
  unsigned Connections() const { return connections_; }

 private:
  void Run();
  /// Waits until the socket can be used in this way: a client's for three seconds, the listening one until
  /// the server is to stop.
  bool Ready(std::uintptr_t socket, short use) const;
  void Serve(std::uintptr_t client);
  bool Send(std::uintptr_t client, std::string_view bytes) const;
  /// Waits; false if the server is to stop.
  bool Pause(unsigned ms) const;

  Answer answer_;
  std::atomic<std::uintptr_t> listener_{};
  std::atomic<bool> stopping_{false};
  std::atomic<unsigned> connections_{0};
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace support
