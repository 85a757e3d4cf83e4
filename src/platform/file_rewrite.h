#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The longest file, in bytes, that RewriteFile changes: it keeps the file in memory and writes it at once.
inline constexpr std::size_t kRewriteLimit = 1024 * 1024;

/// Changes a small file that other processes read and write, in its place: owner, rights, attributes and
/// links stay, and no other file appears beside it.
///
/// The file is opened so that no other process can write to it, in any session and with any rights. A sharing
/// violation is waited for as WaitFor does. `change` gets the bytes, kRewriteLimit at most, and returns the
/// new ones, or nothing to leave the file as it is; for a missing file it gets no bytes, and CreateWholeFile
/// makes the file. The new bytes go out in a single write, which the end of the process does not cut:
/// whatever ends it leaves the old content or the new one. (Wine cuts a write between two pages of 4 KiB.)
/// They are flushed to the disk; after a failure the old bytes are written back.
///
/// Returns false, with the last error, when the file is not what `change` returned.
bool RewriteFile(const std::wstring& path,
                 const std::function<std::optional<std::string>(std::string_view)>& change);

/// Makes a file that is not there yet, with all its bytes. They are written in the folder for temporary files
/// and the file is moved from there, so that it has all its bytes as soon as it has its name; it keeps the
/// rights that it got in that folder. Where it cannot be moved, because that folder cannot be written or is
/// on another volume, the file is made in its place: a process that is ended between two calls then leaves it
/// empty. Returns false with the last error on failure, with ERROR_ALREADY_EXISTS when the file exists.
bool CreateWholeFile(const std::wstring& path, std::string_view bytes);

}  // namespace platform
