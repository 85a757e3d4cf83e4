#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/handles.h"

namespace platform {

/// An exclusive lock on `length` bytes from `offset` on, behind the end of the file as well, until this
/// object ends. Waits as WaitFor does while another handle has a lock there.
class FileLock {
 public:
  FileLock(HANDLE file, ULONGLONG offset, ULONGLONG length);
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();
  /// False when the wait was in vain or the file cannot be locked.
  bool IsHeld() const { return held_; }

 private:
  HANDLE file_;
  ULARGE_INTEGER length_;
  OVERLAPPED range_{};
  bool held_ = false;
};

/// A new, empty file in the folder for temporary files, removed with this object.
class TemporaryFile {
 public:
  TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();
  /// Empty when the file cannot be made.
  const std::wstring& Path() const { return path_; }

 private:
  std::wstring path_;
};

/// Calls `open` again, as WaitFor does, while it fails because another handle denies the access.
UniqueFile OpenWhenFree(const std::function<UniqueFile()>& open);
/// Opens for writing, shared for reading and writing. `disposition` as for CreateFileW.
UniqueFile OpenForWriting(const std::wstring& path, DWORD disposition);
/// Opens for reading. `share`: the accesses that other handles may have.
UniqueFile OpenForReading(const std::wstring& path, DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE);
/// The bytes from the file pointer to the end; nothing, with the last error set, when they cannot be read or
/// are more than `limit` (ERROR_FILE_TOO_LARGE).
std::optional<std::string> ReadAll(HANDLE file, std::size_t limit);
/// The bytes of a whole file, as ReadAll.
std::optional<std::string> ReadWholeFile(const std::wstring& path, std::size_t limit);
/// Writes every byte. Returns false with the last error set.
bool WriteAll(HANDLE file, std::string_view bytes);
/// Appends every byte, or returns false with the last error and the file as long as it was. Programs that
/// append through this function wait for each other, so that their texts stay whole. A program that waited in
/// vain appends all the same; after a failure it then leaves what it wrote.
bool AppendAll(HANDLE file, std::string_view bytes);

}  // namespace platform
