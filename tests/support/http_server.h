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

/// What goes over the wire in answer to one request, byte for byte.
struct HttpReply {
  std::string bytes;      ///< status line, headers and body
  unsigned pause_ms = 0;  ///< wait before them
  std::string tail;       ///< sent behind `bytes`, again and again until the client has enough of it
  /// Nothing more comes, until the client has enough of it or three seconds have passed.
  bool silent = false;
};

/// A complete answer with its length and "Connection: close". `headers`: further ones, each with its "\r\n".
HttpReply Reply(int status, std::string_view body, std::string_view headers = {});

/// An HTTP server on loopback in a thread of this program; serves one connection at a time. In the sandbox
/// the update host and the probe address are 127.0.0.1, so it answers both; the probe only connects.
/// It calls imported functions on its own thread: a hook that counts or fails calls looks at the thread.
class HttpServer {
 public:
  using Answer = std::function<HttpReply()>;

  /// Listens at once on port 80; ends the program when that is taken. `answer` runs on the server's thread.
  explicit HttpServer(Answer answer);
  explicit HttpServer(HttpReply reply) : HttpServer([reply] { return reply; }) {}
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  ~HttpServer() { Stop(); }

  void Start();
  /// From here on connections are refused; one that is being served is cut off.
  void Stop();

  /// Request lines and headers.
  std::vector<std::string> Requests() const;
  /// Those that asked nothing included; all there were, once the server is stopped.
  unsigned Connections() const { return connections_; }

 private:
  void Run();
  /// Waits until the socket can be used in this way: a client's for three seconds, the listening one until
  /// the server is to stop.
  bool Ready(std::uintptr_t socket, short use) const;
  void Serve(std::uintptr_t client);
  bool Send(std::uintptr_t client, std::string_view bytes) const;

  Answer answer_;
  std::atomic<std::uintptr_t> listener_{};
  std::atomic<bool> stopping_{false};
  std::atomic<unsigned> connections_{0};
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace support
