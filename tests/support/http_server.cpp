#include "support/http_server.h"

#include <winsock2.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace support {
namespace {

constexpr DWORD kSocketTimeoutMs = 5000;

void SetOption(SOCKET socket, int option, DWORD value) {
  setsockopt(socket, SOL_SOCKET, option, reinterpret_cast<const char*>(&value), sizeof value);
}

std::string ReadHead(SOCKET client) {
  std::string head;
  char block[4096];
  while (head.find("\r\n\r\n") == std::string::npos) {
    const int received = recv(client, block, sizeof block, 0);
    if (received <= 0) return {};
    head.append(block, static_cast<std::size_t>(received));
  }
  return head;
}

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

HttpServer::HttpServer(Answer answer, std::uint16_t port) : answer_(std::move(answer)), port_(port) {
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
  Start();
}

void HttpServer::Start() {
  const SOCKET listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  SetOption(listener, SO_REUSEADDR, 1);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port_);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, 16) != 0) {
    std::fprintf(stderr, "port %u of the loopback network is not free: %d\n", unsigned{port_},
                 WSAGetLastError());
    std::exit(3);
  }
  stopping_ = false;
  listener_ = listener;
  thread_ = std::thread([this] { Run(); });
}

void HttpServer::Stop() {
  if (!thread_.joinable()) return;
  stopping_ = true;
  if (client_ != 0) shutdown(client_, SD_BOTH);
  thread_.join();
  closesocket(listener_);
}

std::vector<HttpRequest> HttpServer::Requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void HttpServer::Run() {
  for (;;) {
    fd_set ready{1, {listener_}};
    timeval moment{0, 20000};
    const bool last_look = stopping_;
    if (select(0, &ready, nullptr, nullptr, &moment) == 1) {
      const SOCKET client = accept(listener_, nullptr, nullptr);
      ++connections_;
      SetOption(client, SO_RCVTIMEO, kSocketTimeoutMs);
      SetOption(client, SO_SNDTIMEO, kSocketTimeoutMs);
      client_ = client;
      Serve(client);
      client_ = 0;
      closesocket(client);
    } else if (last_look) {
      return;
    }
  }
}

void HttpServer::Serve(std::uintptr_t client) {
  HttpRequest request{{}, {}, ReadHead(client)};
  if (request.head.empty()) return;
  std::istringstream(request.head) >> request.method >> request.path;
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
  const linger at_once{1, 0};
  if (reply.end == HttpReply::End::reset) {
    setsockopt(client, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&at_once), sizeof at_once);
  }
  char byte = 0;
  while (reply.end == HttpReply::End::hold && !stopping_) {
    if (recv(client, &byte, 1, 0) == 0 || WSAGetLastError() != WSAETIMEDOUT) return;
  }
}

bool HttpServer::Send(std::uintptr_t client, std::string_view bytes) const {
  while (!bytes.empty() && !stopping_) {
    const int size = static_cast<int>(std::min<std::size_t>(bytes.size(), 1 << 20));
    const int sent = send(client, bytes.data(), size, 0);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return !stopping_;
}

}  // namespace support
