#pragma once

#include <windows.h>

/// Owner of a brush, font or other object that DeleteObject frees.
template <class Handle>
class GdiOwner {
 public:
  GdiOwner() = default;
  explicit GdiOwner(Handle handle) : handle_(handle) {}
  GdiOwner(GdiOwner&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
  GdiOwner& operator=(GdiOwner&& other) noexcept {
    if (this != &other) {
      Free();
      handle_ = other.handle_;
      other.handle_ = nullptr;
    }
    return *this;
  }
  GdiOwner(const GdiOwner&) = delete;
  GdiOwner& operator=(const GdiOwner&) = delete;
  ~GdiOwner() { Free(); }

  Handle get() const { return handle_; }

 private:
  void Free() {
    if (handle_ != nullptr) DeleteObject(handle_);
    handle_ = nullptr;
  }

  Handle handle_ = nullptr;
};
