#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Capacity, in characters, of the buffer that the program reads section names into.
inline constexpr std::size_t kSectionNamesCapacity = 1024;

/// Appends the null-terminated names that stand in `buffer` to `sections`. The first empty name ends the
/// list; a name without its null at the buffer's end was cut and is dropped.
void AppendSectionNames(std::wstring_view buffer, std::vector<std::wstring>& sections);

/// Every section name in the bytes of a private-profile file, as the system's functions find them, for
/// whoever has no system to ask. With a UTF-16 mark the names are in UTF-16. Else each byte is a character,
/// as in a code page of single bytes: one above 0x7F, whose character each machine's own code page decides,
/// stands as U+DC00 and the byte, half a pair of surrogates that no text holds. A UTF-8 mark is unknown, so
/// that a heading behind it is none.
std::vector<std::wstring> ReadSectionNames(std::string_view bytes);

/// How many of `names`, from the first on, the program gets whole through a buffer of this capacity.
std::size_t CountWholeNames(const std::vector<std::wstring>& names, std::size_t capacity);
