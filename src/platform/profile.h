#pragma once

#include <functional>
#include <string>

namespace platform {

/// A private-profile value, at most `capacity` - 1 characters, not trimmed; empty when it is missing or the
/// file cannot be read. Takes no lock; the function of Windows that it calls waits for the few milliseconds
/// in which WriteProfileText writes the file.
std::wstring ReadProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                             unsigned capacity);
/// Writes an ASCII value with RewriteFile, which creates a missing file. A failure is ignored. The profile
/// function edits a copy in the folder for temporary files. The value is not written when `condition`, called
/// with the path of the unedited copy, returns false; the file cannot change between that call and the write.
/// A caller uses `condition` so that a value that it could not read for a moment is not replaced by a
/// default.
void WriteProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                      const wchar_t* value,
                      const std::function<bool(const std::wstring& copy)>& condition = nullptr);

/// The section names of a private-profile file, each ended by a null, as far as a buffer of `capacity`
/// characters holds them. A name that the buffer's end cut has no null.
std::wstring ReadProfileSectionNames(const std::wstring& file, unsigned capacity);

}  // namespace platform
