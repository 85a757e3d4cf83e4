#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The longest file, in bytes, that RewriteFile changes: it holds the file in memory and writes it with one
/// call.
inline constexpr std::size_t kRewriteLimit = 1024 * 1024;

/// Changes, in place, a small file that other processes read and write. The file keeps its owner, rights,
/// attributes and links, and no other file is created in its folder.
///
/// The function opens the file so that no other process can write to it, in any session and with any rights.
/// On a sharing violation it waits as WaitFor does. `change` gets the bytes, kRewriteLimit at most, and
/// returns the new ones, or nothing to leave the file unchanged. For a missing file it gets no bytes, and
/// CreateWholeFile creates the file. One call writes the new bytes, so a process that is ended during it
/// leaves either the old content or the new. (Wine can cut the write at a multiple of 4 KiB.) The bytes are
/// flushed to the disk. After a failure the function writes the old bytes back.
///
/// Returns false when `change` returned nothing. On failure returns false with the last error set.
bool RewriteFile(const std::wstring& path,
                 const std::function<std::optional<std::string>(std::string_view)>& change);

/// Creates a new file with all its bytes. The function writes them to a file in the folder for temporary
/// files and moves that file, so that it is complete as soon as it has its name. It keeps the rights that it
/// got in that folder. If that folder is not writable or is on another volume, the function creates the file
/// directly; a process that is ended between two calls then leaves it empty. Returns false with the last
/// error on failure, with ERROR_ALREADY_EXISTS when the file exists.
bool CreateWholeFile(const std::wstring& path, std::string_view bytes);

}  // namespace platform
