#include "ui/readable_color.h"

#include <cstdlib>

namespace {

constexpr int kReadableDifference = 80;  // in brightness, of 255

/// 0 to 255. The weights are those of the luma of ITU-R BT.601.
int Brightness(COLORREF color) {
  return (GetRValue(color) * 299 + GetGValue(color) * 587 + GetBValue(color) * 114) / 1000;
}

}  // namespace

COLORREF ReadableOnFace(std::initializer_list<COLORREF> colors) {
  const int face = Brightness(GetSysColor(COLOR_3DFACE));
  for (const COLORREF color : colors) {
    if (std::abs(Brightness(color) - face) >= kReadableDifference) return color;
  }
  return GetSysColor(COLOR_BTNTEXT);
}
