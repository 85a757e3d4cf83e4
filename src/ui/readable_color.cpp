#include "ui/readable_color.h"

#include <cstdlib>

namespace {

constexpr int kReadableDifference = 80;  // of 255

int Brightness(COLORREF color) {
  return (GetRValue(color) * 299 + GetGValue(color) * 587 + GetBValue(color) * 114) / 1000;
}

}  // namespace

bool IsReadableOnFace(COLORREF color) {
  return std::abs(Brightness(color) - Brightness(GetSysColor(COLOR_3DFACE))) >= kReadableDifference;
}
