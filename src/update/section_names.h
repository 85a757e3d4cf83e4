#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Capacity, in characters, of the buffer that the program reads section names into.
inline constexpr std::size_t kSectionNamesCapacity = 1024;

/// A list of updates has a few thousand bytes. A larger file than this is none: it would fill the disk, and
/// the profile functions would take it into memory whole.
inline constexpr std::size_t kListSizeLimit = 32 * 1024 * 1024;

/// Appends the null-terminated names that stand in `buffer` to `sections`. The first empty name ends the
/// list; a name without its null at the buffer's end was cut and is dropped.
void AppendSectionNames(std::wstring_view buffer, std::vector<std::wstring>& sections);

/// Each byte as a character, for whoever has no system to ask for its code page. One above 0x7F, whose
/// character each machine's own code page decides, stands as U+DC00 and the byte, half a pair of surrogates
/// that no text holds.
std::wstring WidenBytes(std::string_view bytes);

/// The lines of a private-profile file that start with "[", without the blanks around them; decoded like
/// ReadSectionNames does.
std::vector<std::wstring> ReadHeadingLines(std::string_view bytes);

/// The section name in such a line: up to the last "]", cut at a null. Empty: clients find no section in the
/// line.
std::wstring_view SectionNameIn(std::wstring_view heading_line);

/// Every section name in the bytes of a private-profile file, as the system's functions find them: in UTF-16
/// behind its mark, else of widened bytes. A UTF-8 mark is unknown, so that a heading behind it is none.
std::vector<std::wstring> ReadSectionNames(std::string_view bytes);

/// How many of `names`, from the first on, the program gets whole through a buffer of this capacity.
std::size_t CountWholeNames(const std::vector<std::wstring>& names, std::size_t capacity);
