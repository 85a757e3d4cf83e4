#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Capacity, in characters, of the buffer that the program reads section names into.
inline constexpr std::size_t kSectionNamesCapacity = 1024;

/// In bytes. A list of updates has a few thousand. The check refuses a larger file, which would fill the
/// disk, and the memory when the profile functions read it whole.
inline constexpr std::size_t kListSizeLimit = 32 * 1024 * 1024;

/// Appends the null-terminated names in `buffer` to `sections`. The first empty name ends the
/// list; a name without its null at the buffer's end was cut and is dropped.
void AppendSectionNames(std::wstring_view buffer, std::vector<std::wstring>& sections);

/// Converts each byte to one character. Bytes from 0x80 on become lone surrogates, U+DC80 to U+DCFF, because
/// their meaning depends on the code page of the machine that reads the file.
std::wstring WidenBytes(std::string_view bytes);

/// The lines of a private-profile file that start with "[", without the blanks around them, decoded as in
/// ReadSectionNames.
std::vector<std::wstring> ReadHeadingLines(std::string_view bytes);

/// The section name in such a line: up to the last "]", cut at a null. Empty when clients find no section in
/// the line.
std::wstring_view SectionNameIn(std::wstring_view heading_line);

/// Every section name that the functions of Windows find in the bytes of a private-profile file: UTF-16 after
/// a UTF-16 byte order mark, otherwise one character a byte (WidenBytes). Windows does not know the UTF-8
/// mark, so it finds no heading directly after one.
std::vector<std::wstring> ReadSectionNames(std::string_view bytes);

/// How many of `names`, from the first on, fit whole into a buffer of this capacity.
std::size_t CountWholeNames(const std::vector<std::wstring>& names, std::size_t capacity);
