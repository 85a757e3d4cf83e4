#include "support/http_server.h"

#include <winsock2.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace support {
namespace {

constexpr int kLookMs = 20;
/// Longest wait for a client: one that is killed can leave its connection open behind it.
constexpr int kPatienceMs = 3000;
/// Time for the client to read what was sent: a reset throws away what it has not.
constexpr DWORD kReadingMs = 500;

}  // namespace

std::string HttpRequest::Header(std::string_view name) const {
  const std::string start = "\r\n" + std::string(name) + ": ";
  const std::size_t found = head.find(start);
  if (found == std::string::npos) return {};
  const std::size_t value = found + start.size();
  return head.substr(value, head.find("\r\n", value) - value);
}

HttpReply Reply(int status, std::string_view body, std::string_view headers) {
  HttpReply reply;
  reply.bytes = "HTTP/1.1 " + std::to_string(status) + " Scripted\r\nContent-Type: text/plain\r\n" +
                "Connection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
  reply.bytes.append(headers).append("\r\n").append(body);
  return reply;
}

HttpServer::HttpServer(Answer answer) : answer_(std::move(answer)) {
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
  Start();
}

void HttpServer::Start() {
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
  stopping_ = false;
  listener_ = listener;
  thread_ = std::thread([this] { Run(); });
}

void HttpServer::Stop() {
  if (!thread_.joinable()) return;
  stopping_ = true;
  thread_.join();
  closesocket(listener_);
}

std::vector<HttpRequest> HttpServer::Requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

// Every socket is asked whether it is ready before it is used: an operation that is still under way when its
// socket is closed can bring down Wine's server process.
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
  HttpRequest request;
  char block[4096];
  while (request.head.find("\r\n\r\n") == std::string::npos) {
    const int received = Ready(client, POLLRDNORM) ? recv(client, block, sizeof block, 0) : 0;
    if (received <= 0) return;
    request.head.append(block, static_cast<std::size_t>(received));
  }
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
  }
  const HttpReply reply = answer_(request);
  const std::size_t piece = reply.piece == 0 ? std::max<std::size_t>(reply.bytes.size(), 1) : reply.piece;
  for (std::size_t sent = 0; sent == 0 || sent < reply.bytes.size(); sent += piece) {
    for (unsigned waited = 0; waited < reply.pause_ms && !stopping_; waited += 10) Sleep(10);
    if (!Send(client, std::string_view(reply.bytes).substr(sent, piece))) return;
  }
  for (unsigned i = 0; i < reply.tail_count; ++i) {
    if (!Send(client, reply.tail)) return;
  }
  if (reply.end == HttpReply::End::silence) Ready(client, POLLRDNORM);
  const linger at_once{1, 0};
  if (reply.end == HttpReply::End::reset) {
    Sleep(kReadingMs);
    setsockopt(client, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&at_once), sizeof at_once);
  }
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
