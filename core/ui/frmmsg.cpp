#include "core/ui/frmmsg.h"

#include <algorithm>

#include "core/ProgramTitle.h"

namespace orvanto {
namespace {

// In twips: the edge around everything, and what is below the text.
constexpr int kEdge = 180;
constexpr int kGap = 120;
constexpr forms::Size kButton{1230, 375};
constexpr int kNarrow = 4140;
constexpr int kLeastHeight = 885;

}  // namespace

frmmsg::frmmsg(forms::FormHost& host)
    : Form(host, kProgramTitle, {}),
      lblMsg(*this, nullptr, "", {}),
      cmdOK(*this, nullptr, "&OK", {}),
      txtMsg(*this, nullptr, {.multiLine = true, .fromTop = true, .readOnly = true}, {}),
      formHost_(host) {
  lblMsg.breaksWords = true;
  txtMsg.spokenName = "Message";
  cmdOK.onClick = [this] { Unload(); };
  defaultButton = cancelButton = &cmdOK;
}

void frmmsg::ShowText(const std::string& text) {
  lblMsg.SetText(text);
  LayOut();
  CentreOnScreen();
  Show();
}

void frmmsg::LayOut() {
  const forms::Size screen = formHost_.ScreenSize();
  const forms::Size most{std::max(screen.width * 3 / 4, kNarrow), screen.height * 3 / 4};
  forms::Size size;
  bool fits = false;
  // Wider before it is a column.
  for (const int column : {kNarrow, 2 * kNarrow, most.width}) {
    const int width = std::min(column, most.width);
    size = formHost_.TextSize(lblMsg.Text(), width);
    fits = size.height <= (width < most.width ? width / 2 : most.height);
    if (fits) break;
  }
  size.width = std::clamp(size.width, kNarrow, most.width);
  size.height = std::clamp(size.height, kLeastHeight, most.height);

  const int buttonTop = kEdge + size.height + kGap;
  for (forms::Control* text : std::initializer_list<forms::Control*>{&lblMsg, &txtMsg}) {
    text->SetBounds({kEdge, kEdge, size.width, size.height});
    text->SetVisible((text == &lblMsg) == fits);
  }
  txtMsg.SetText(fits ? "" : lblMsg.Text());
  const int width = size.width + 2 * kEdge;
  cmdOK.SetBounds({(width - kButton.width) / 2, buttonTop, kButton.width, kButton.height});
  SetClientSize({width, buttonTop + kButton.height + kEdge});
}

}  // namespace orvanto
