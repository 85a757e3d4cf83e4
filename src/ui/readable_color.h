#pragma once

#include <windows.h>

/// Whether text of `color` can be read on the system's face colour, which pages have as their background.
bool IsReadableOnFace(COLORREF color);
