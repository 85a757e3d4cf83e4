#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/handles.h"

namespace platform {

/// Opens for writing, shared for reading and writing. `disposition` as for CreateFileW.
UniqueFile OpenForWriting(const std::wstring& path, DWORD disposition);
/// Opens for reading. `share`: the accesses that other handles may have.
UniqueFile OpenForReading(const std::wstring& path, DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE);
/// The bytes from where the file stands to its end; nothing when they cannot be read or are more than `limit`
/// (last error says why: ERROR_FILE_TOO_LARGE for the limit).
std::optional<std::string> ReadAll(HANDLE file, std::size_t limit);
/// Both in one: the bytes of a file.
std::optional<std::string> ReadWholeFile(const std::wstring& path, std::size_t limit);
/// Writes every byte or answers false with the last error set.
bool WriteAll(HANDLE file, std::string_view bytes);
/// Appends every byte or answers false with the last error set, leaving the file as long as it was. Programs
/// that append through this function take turns, so that their texts stay whole; one that waited a second in
/// vain appends without its turn, and then leaves what a failure got as far as writing.
bool AppendAll(HANDLE file, std::string_view bytes);

/// UTF-16 text as UTF-8; a lone surrogate becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);
/// Text of the system's ANSI code page as UTF-16.
std::wstring FromAnsi(std::string_view bytes);

/// The system's message for `error` without line breaks at its end; empty when it knows none.
std::wstring SystemMessage(DWORD error);
/// `error` as unsigned decimal.
std::wstring ErrorNumber(DWORD error);

}  // namespace platform
