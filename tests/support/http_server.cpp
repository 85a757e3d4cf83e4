#include "support/http_server.h"

#include <winsock2.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace support {
namespace {

constexpr int kLookMs = 20;
/// Longest wait for a client: a killed one can leave its connection open.
constexpr int kPatienceMs = 3000;

}  // namespace

HttpReply Reply(int status, std::string_view body) {
  HttpReply reply;
  reply.bytes = "HTTP/1.1 " + std::to_string(status) + " Scripted\r\nContent-Type: text/plain\r\n" +
                "Connection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
  reply.bytes.append(body);
  return reply;
}

HttpServer::HttpServer(Answer answer) : answer_(std::move(answer)) {
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
  const SOCKET listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  const BOOL reuse = TRUE;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&reuse), sizeof reuse);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(80);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, 16) != 0) {
    std::fprintf(stderr, "port 80 of the loopback network is not free: %d\n", WSAGetLastError());
    std::exit(3);
  }
  listener_ = listener;
  thread_ = std::thread([this] { Run(); });
}

void HttpServer::Stop() {
  if (!thread_.joinable()) return;
  stopping_ = true;
  thread_.join();
  closesocket(listener_);
}

std::vector<std::string> HttpServer::Requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

// Waits before each use of a socket: closing a socket during an operation can crash Wine's server process.
bool HttpServer::Ready(std::uintptr_t socket, short use) const {
  for (int looks = 0; socket == listener_ || looks < kPatienceMs / kLookMs; ++looks) {
    const bool last_look = stopping_;
    WSAPOLLFD look{socket, use, 0};
    if (WSAPoll(&look, 1, kLookMs) == 1) return true;
    if (last_look) return false;
  }
  return false;
}

void HttpServer::Run() {
  while (Ready(listener_, POLLRDNORM)) {
    const SOCKET client = accept(listener_, nullptr, nullptr);
    u_long nonblocking = 1;
    ioctlsocket(client, static_cast<long>(FIONBIO), &nonblocking);
    ++connections_;
    Serve(client);
    closesocket(client);
  }
}

void HttpServer::Serve(std::uintptr_t client) {
  std::string request;
  char block[4096];
  while (request.find("\r\n\r\n") == std::string::npos) {
    const int received = Ready(client, POLLRDNORM) ? recv(client, block, sizeof block, 0) : 0;
    if (received <= 0) return;
    request.append(block, static_cast<std::size_t>(received));
  }
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
  }
  const HttpReply reply = answer_();
  if (!Pause(reply.pause_ms) || !Send(client, reply.bytes)) return;
  const DWORD start = GetTickCount();
  while (!reply.tail.empty() && GetTickCount() - start < 10000 && Pause(reply.tail_pause_ms) &&
         Send(client, reply.tail)) {
  }
}

bool HttpServer::Pause(unsigned ms) const {
  for (unsigned waited = 0; waited < ms && !stopping_; waited += 10) Sleep(10);
  return !stopping_;
}

bool HttpServer::Send(std::uintptr_t client, std::string_view bytes) const {
  while (!bytes.empty() && !stopping_) {
    const int size = static_cast<int>(std::min<std::size_t>(bytes.size(), 1 << 20));
    const int sent = Ready(client, POLLWRNORM) ? send(client, bytes.data(), size, 0) : 0;
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return !stopping_;
}

}  // namespace support
