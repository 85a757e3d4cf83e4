#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The bytes from the file pointer to the end; nothing, with the last error set, when they cannot be read or
/// are more than `limit` (ERROR_FILE_TOO_LARGE).
std::optional<std::string> ReadAll(HANDLE file, std::size_t limit);
/// The bytes of a whole file, as ReadAll; opened with OpenShared.
std::optional<std::string> ReadWholeFile(const std::wstring& path, std::size_t limit);
/// Writes every byte. On failure returns false with the last error set.
bool WriteAll(HANDLE file, std::string_view bytes);
/// Appends every byte. On failure returns false with the last error set and cuts the file to its old length;
/// the caller's handle must therefore deny writing to others.
bool AppendAll(HANDLE file, std::string_view bytes);
/// Creates a new file with these bytes. Others can open it when it is complete. On failure returns false with
/// the last error set, ERROR_FILE_EXISTS for an existing file, and leaves no file. A process that is ended
/// between the creation and the write leaves an empty file.
bool CreateWithContent(const std::wstring& path, std::string_view bytes);

}  // namespace platform
