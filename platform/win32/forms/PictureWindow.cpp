#include <algorithm>

#include "platform/win32/Text.h"
#include "platform/win32/forms/ControlKinds.h"
#include "platform/win32/forms/Painting.h"
#include "platform/win32/forms/Scale.h"

namespace orvanto::win32 {

using forms::PictureBox;
using forms::Property;

namespace {

class PictureWindow : public ControlWindow {
 public:
  PictureWindow(PictureBox& picture, HWND parent, int id)
      : ControlWindow(picture, {WC_STATICW, SS_OWNERDRAW}, parent, id), picture_(picture) {
    Mirror(Property::Drawing);
  }

  void Mirror(Property property) override {
    if (property != Property::Drawing) return;
    std::string spoken;
    for (const auto& drawing : picture_.Drawings()) {
      if (!spoken.empty() && !drawing.text.empty()) spoken += ' ';
      spoken += drawing.text;
    }
    // Never drawn: this is what a screen reader says.
    SetWindowTextIfOther(spoken);
    InvalidateRect(window_, nullptr, FALSE);
  }

  void Rescale(UINT dpi) override { dpi_ = dpi; }

  // First in memory, so that nothing flickers.
  void OnDraw(const DRAWITEMSTRUCT& draw) const override {
    const RECT& all = draw.rcItem;
    const Canvas canvas(draw.hDC, all.right, all.bottom);
    const HDC context = canvas.Get();
    const bool few = HighContrast();
    const bool inverts = !few && Inverts();
    const Handle<HFONT, DeleteObject> grey(inverts ? GreyFont() : nullptr);
    const HGDIOBJ oldFont = SelectObject(context, inverts ? grey.Get() : Font());
    SetBkMode(context, TRANSPARENT);
    FillRect(context, &all,
             inverts ? static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))
                     : GetSysColorBrush(COLOR_WINDOW));
    std::vector<RECT> bars;
    for (const auto& drawing : picture_.Drawings()) {
      const RECT place = ToPixels(drawing.place);
      if (!drawing.text.empty()) {
        if (!few) DrawLine(context, drawing, place, ToColour(drawing.colour));
        continue;
      }
      bars.push_back(place);
      const COLORREF colour = few ? GetSysColor(COLOR_HIGHLIGHT) : ToColour(drawing.colour);
      const Handle<HBRUSH, DeleteObject> brush(CreateSolidBrush(colour));
      if (inverts && drawing.inverts) {
        Invert(context, place, brush.Get());
      } else {
        FillRect(context, &place, brush.Get());
      }
    }
    // On all bars: in these colours nothing shows through one that lies on it.
    for (const auto& drawing : picture_.Drawings()) {
      if (few) DrawReadable(context, drawing, ToPixels(drawing.place), bars);
    }
    const Handle<HBRUSH, DeleteObject> edge(CreateSolidBrush(EdgeColour()));
    FrameRect(context, &all, edge.Get());
    BitBlt(draw.hDC, 0, 0, all.right, all.bottom, context, 0, 0, SRCCOPY);
    SelectObject(context, oldFont);
  }

 private:
  RECT ToPixels(const forms::Bounds& place) const {
    return {win32::ToPixels(place.left, dpi_), win32::ToPixels(place.top, dpi_),
            win32::ToPixels(place.left + place.width, dpi_),
            win32::ToPixels(place.top + place.height, dpi_)};
  }

  bool Inverts() const {
    const auto& all = picture_.Drawings();
    return std::any_of(all.begin(), all.end(), [](const auto& each) { return each.inverts; });
  }

  HFONT Font() const { return reinterpret_cast<HFONT>(SendMessageW(window_, WM_GETFONT, 0, 0)); }

  // Its edges have no colours, of which the opposites would show.
  HFONT GreyFont() const {
    LOGFONTW font{};
    GetObjectW(Font(), sizeof font, &font);
    font.lfQuality = ANTIALIASED_QUALITY;
    return CreateFontIndirectW(&font);
  }

  // Unlike filling, drawing goes by the raster mode. Without a pen it leaves out the last row.
  static void Invert(HDC context, const RECT& place, HBRUSH brush) {
    SaveDC(context);
    SetROP2(context, R2_NOTXORPEN);
    SelectObject(context, GetStockObject(NULL_PEN));
    SelectObject(context, brush);
    Rectangle(context, place.left, place.top, place.right + 1, place.bottom + 1);
    RestoreDC(context, -1);
  }

  static void DrawLine(HDC context, const PictureBox::Drawing& drawing, RECT place,
                       COLORREF colour) {
    constexpr UINT kAlign[] = {DT_LEFT, DT_CENTER, DT_RIGHT};
    SetTextColor(context, colour);
    const std::wstring text = ToWide(drawing.text);
    DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &place,
              kAlign[static_cast<int>(drawing.align)] | DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
  }

  // In the system's colours: what lies on a bar in the one that goes with the bar's.
  static void DrawReadable(HDC context, const PictureBox::Drawing& drawing, const RECT& place,
                           const std::vector<RECT>& bars) {
    SaveDC(context);
    for (const RECT& bar : bars) {
      ExcludeClipRect(context, bar.left, bar.top, bar.right, bar.bottom);
    }
    DrawLine(context, drawing, place, GetSysColor(COLOR_WINDOWTEXT));
    RestoreDC(context, -1);
    for (const RECT& bar : bars) {
      SaveDC(context);
      IntersectClipRect(context, bar.left, bar.top, bar.right, bar.bottom);
      DrawLine(context, drawing, place, GetSysColor(COLOR_HIGHLIGHTTEXT));
      RestoreDC(context, -1);
    }
  }

  PictureBox& picture_;
  UINT dpi_ = USER_DEFAULT_SCREEN_DPI;
};

}  // namespace

NewControlWindow MakeWindow(PictureBox& picture, HWND parent, int id) {
  return std::make_unique<PictureWindow>(picture, parent, id);
}

}  // namespace orvanto::win32
