#include "platform/win32/forms/NodeTip.h"

#include <utility>

#include "platform/win32/forms/Scale.h"
#include "platform/win32/forms/Tips.h"

namespace orvanto::win32 {
namespace {

constexpr UINT_PTR kTimer = 0x7469;  // beyond those of the tree itself
constexpr UINT kUntilKeyboardTip = 700;
constexpr int kWidest = 6000;  // twips

}  // namespace

HTREEITEM ItemUnderMouse(HWND tree) {
  const DWORD position = GetMessagePos();
  TVHITTESTINFO hit = {};
  hit.pt = {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
  ScreenToClient(tree, &hit.pt);
  TreeView_HitTest(tree, &hit);
  return (hit.flags & TVHT_ONITEM) != 0 ? hit.hItem : nullptr;
}

NodeTip::NodeTip(HWND tree, std::function<std::wstring(HTREEITEM item)> textOf)
    : tree_(tree), textOf_(std::move(textOf)) {}

void NodeTip::MakeWindow() {
  if (window_) return;
  window_.Reset(NewTipWindow(tree_));
  TTTOOLINFOW tool = Tool();
  SendMessageW(window_.Get(), TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

TTTOOLINFOW NodeTip::Tool() const {
  TTTOOLINFOW tool = {};
  tool.cbSize = sizeof tool;
  tool.uFlags = TTF_TRACK | TTF_ABSOLUTE;
  tool.hwnd = tree_;
  return tool;
}

void NodeTip::OnMessage(UINT message, WPARAM wParam) {
  switch (message) {
    case WM_MOUSEMOVE:
      if (ItemUnderMouse(tree_) != item_) Hide();
      WaitForRest();
      break;
    case WM_MOUSEHOVER: {
      POINT place;
      GetCursorPos(&place);
      place.y += GetSystemMetrics(SM_CYCURSOR) / 2;
      ShowFor(ItemUnderMouse(tree_), place);
      break;
    }
    case WM_TIMER:
      if (wParam == kTimer) {
        KillTimer(tree_, kTimer);
        RECT line = {};
        const HTREEITEM item = TreeView_GetSelection(tree_);
        if (item == nullptr || !TreeView_GetItemRect(tree_, item, &line, TRUE)) break;
        POINT place = {line.left, line.bottom};
        ClientToScreen(tree_, &place);
        ShowFor(item, place);
      }
      break;
    case WM_CHAR:
      // Of a name that is typed, the later letters often stay at the same node.
      if (wParam > VK_SPACE) OnKeyboard();
      break;
    case WM_MOUSELEAVE:
    case WM_KILLFOCUS:
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MOUSEWHEEL:
    case WM_VSCROLL:
    case WM_HSCROLL:
      Hide();
      break;
    default:
      break;
  }
}

void NodeTip::OnKeyboard() { SetTimer(tree_, kTimer, kUntilKeyboardTip, nullptr); }

void NodeTip::WaitForRest() {
  TRACKMOUSEEVENT track = {sizeof track, TME_HOVER | TME_LEAVE, tree_, HOVER_DEFAULT};
  TrackMouseEvent(&track);
}

void NodeTip::ShowFor(HTREEITEM item, POINT place) {
  item_ = item;
  std::wstring text = item != nullptr ? textOf_(item) : L"";
  GUITHREADINFO thread = {};
  thread.cbSize = sizeof thread;
  GetGUIThreadInfo(GetCurrentThreadId(), &thread);
  const bool menu = (thread.flags & (GUI_INMENUMODE | GUI_POPUPMENUMODE)) != 0;
  if (text.empty() || menu) return;
  MakeWindow();
  TTTOOLINFOW tool = Tool();
  tool.lpszText = text.data();
  const UINT dpi = GetDpiForWindow(tree_);
  SendMessageW(window_.Get(), TTM_SETMAXTIPWIDTH, 0, ToPixels(kWidest, dpi));
  SendMessageW(window_.Get(), TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
  SendMessageW(window_.Get(), TTM_TRACKPOSITION, 0, MAKELPARAM(place.x, place.y));
  SendMessageW(window_.Get(), TTM_TRACKACTIVATE, TRUE, reinterpret_cast<LPARAM>(&tool));
}

void NodeTip::Hide() {
  KillTimer(tree_, kTimer);
  item_ = nullptr;
  TTTOOLINFOW tool = Tool();
  SendMessageW(window_.Get(), TTM_TRACKACTIVATE, FALSE, reinterpret_cast<LPARAM>(&tool));
}

}  // namespace orvanto::win32
