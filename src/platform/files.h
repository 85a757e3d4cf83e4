#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/handles.h"

namespace platform {

/// An exclusive lock on `length` bytes of a file from `offset` on; the bytes may be beyond the file's end.
/// The lock is released with this object. The constructor waits, as WaitFor does, for a lock of another
/// handle.
class FileLock {
 public:
  FileLock(HANDLE file, ULONGLONG offset, ULONGLONG length);
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();
  /// False when the waiting time ran out or the file cannot be locked.
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

/// Calls `open` again, as WaitFor does, while it fails with a sharing violation. Returns the last call's
/// file.
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
/// Writes every byte. On failure returns false with the last error set.
bool WriteAll(HANDLE file, std::string_view bytes);
/// Appends every byte. On failure returns false with the last error and cuts the file to its old length.
/// Processes that call this function wait for each other, so that their texts do not mix. A process whose
/// waiting time runs out appends without the lock; on failure it does not cut the file.
bool AppendAll(HANDLE file, std::string_view bytes);

}  // namespace platform
