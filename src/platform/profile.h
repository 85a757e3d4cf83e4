#pragma once

#include <string>

namespace platform {

/// A private-profile value, at most `capacity` - 1 characters, blanks at its ends not taken off; empty when
/// it is missing. Waits for one's turn at the file, as JournaledFile does.
std::wstring ReadProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                             unsigned capacity);
/// Writes a value in the file's place, as JournaledFile does; a failure is ignored, the reader's default then
/// holds again at the next reading.
void WriteProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                      const wchar_t* value);

/// The section names of a private-profile file, each ended by a null, as far as a buffer of `capacity`
/// characters holds them. A name that the buffer's end cut is not ended by a null.
std::wstring ReadProfileSectionNames(const std::wstring& file, unsigned capacity);

}  // namespace platform
