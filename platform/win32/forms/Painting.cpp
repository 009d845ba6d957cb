#include "platform/win32/forms/Painting.h"

namespace orvanto::win32 {

bool HighContrast() {
  HIGHCONTRASTW contrast = {};
  contrast.cbSize = sizeof contrast;
  return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
         (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

COLORREF EdgeColour() { return GetSysColor(HighContrast() ? COLOR_BTNTEXT : COLOR_BTNSHADOW); }

// The system has red in the low byte.
COLORREF ToColour(std::uint32_t colour) {
  return RGB((colour >> 16) & 0xFF, (colour >> 8) & 0xFF, colour & 0xFF);
}

Canvas::Canvas(HDC like, int width, int height)
    : context_(CreateCompatibleDC(like)),
      bitmap_(CreateCompatibleBitmap(like, width, height)),
      old_(SelectObject(context_.Get(), bitmap_.Get())) {}

Canvas::~Canvas() { SelectObject(context_.Get(), old_); }

}  // namespace orvanto::win32
