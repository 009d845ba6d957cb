// What the controls that paint themselves have in common.
#pragma once

#include <windows.h>

#include <cstdint>

#include "platform/win32/Handle.h"

namespace orvanto::win32 {

// The user wants few colours, far apart: the system's own and no others.
bool HighContrast();

// Of the line around what is painted.
COLORREF EdgeColour();

// From red, green, blue from the high byte down.
COLORREF ToColour(std::uint32_t colour);

// A picture in memory, of the kind that `like` shows, to be drawn into.
class Canvas {
 public:
  Canvas(HDC like, int width, int height);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  HDC Get() const { return context_.Get(); }

 private:
  Handle<HDC, DeleteDC> context_;
  Handle<HBITMAP, DeleteObject> bitmap_;
  HGDIOBJ old_;
};

}  // namespace orvanto::win32
