#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Capacity, in characters, of the buffer that the program reads section names into.
inline constexpr std::size_t kSectionNamesCapacity = 1024;

/// A list of updates has a few thousand bytes. The check refuses a file larger than this: it would fill the
/// disk, and the profile functions read a whole file into memory.
inline constexpr std::size_t kListSizeLimit = 32 * 1024 * 1024;

/// Appends the null-terminated names in `buffer` to `sections`. The first empty name ends the
/// list; a name without its null at the buffer's end was cut and is dropped.
void AppendSectionNames(std::wstring_view buffer, std::vector<std::wstring>& sections);

/// Each byte as a character, for callers without a system's code page. The meaning of a byte of 0x80 or more
/// depends on the code page of the machine, so it becomes a lone surrogate, U+DC80 to U+DCFF.
std::wstring WidenBytes(std::string_view bytes);

/// The lines of a private-profile file that start with "[", without the blanks around them; decoded like
/// ReadSectionNames does.
std::vector<std::wstring> ReadHeadingLines(std::string_view bytes);

/// The section name in such a line: up to the last "]", cut at a null. Empty: clients find no section in the
/// line.
std::wstring_view SectionNameIn(std::wstring_view heading_line);

/// Every section name in the bytes of a private-profile file, as the functions of Windows find them: UTF-16
/// after its byte order mark, otherwise widened bytes. Windows does not know the UTF-8 mark, so a heading
/// directly after one is not found.
std::vector<std::wstring> ReadSectionNames(std::string_view bytes);

/// How many of `names`, from the first on, fit whole into a buffer of this capacity.
std::size_t CountWholeNames(const std::vector<std::wstring>& names, std::size_t capacity);
