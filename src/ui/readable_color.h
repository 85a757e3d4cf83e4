#pragma once

#include <windows.h>

#include <initializer_list>

/// The first of `colors` in which a text can be read on the system's face colour, which pages have as their
/// background; where the user's colours, such as white on black, leave none, that of the texts on buttons.
COLORREF ReadableOnFace(std::initializer_list<COLORREF> colors);
