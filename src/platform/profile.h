#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace platform {

/// The longest file, in bytes, that WriteProfileText changes: it holds the file in memory and writes it with
/// one call.
inline constexpr std::size_t kRewriteLimit = 1024 * 1024;

/// A private-profile value, at most `capacity` - 1 characters, not trimmed; empty when it is missing or the
/// file cannot be read. Waits, as OpenShared does, for a process that holds the file.
std::wstring ReadProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                             unsigned capacity);

/// Writes an ASCII value into a small file that other processes read and write; creates a missing file. A
/// failure is ignored and leaves the old content.
///
/// The file keeps its owner, rights, attributes and links, and no other file appears in its folder: the
/// profile function edits a copy in the folder for temporary files, and one call writes the whole new content
/// in place. A process that is ended during that call leaves the old content or the new one. (Wine can cut
/// the write at a multiple of 4 KiB.) No other process can write to the file meanwhile; OpenShared says how
/// this function waits for one that does.
///
/// The value is not written when `condition`, called with the path of the unedited copy, returns false.
void WriteProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                      const wchar_t* value,
                      const std::function<bool(const std::wstring& copy)>& condition = nullptr);

/// The section names of a private-profile file, each ended by a null, as far as a buffer of `capacity`
/// characters holds them. A name that the buffer's end cut has no null.
std::wstring ReadProfileSectionNames(const std::wstring& file, unsigned capacity);

}  // namespace platform
