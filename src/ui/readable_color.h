#pragma once

#include <windows.h>

#include <initializer_list>

/// The first of `colors` that is readable on the system's face colour, the background of the pages. When none
/// is, as with white text on black, the system's colour of button texts.
COLORREF ReadableOnFace(std::initializer_list<COLORREF> colors);
