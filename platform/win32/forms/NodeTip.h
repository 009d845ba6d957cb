// What is told of a node of a tree, beside it: while the mouse rests on it, and where the keyboard
// has come to it.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <string>

#include "platform/win32/Handle.h"

namespace orvanto::win32 {

// Where the mouse was when the message came that is being handled; null: on none.
HTREEITEM ItemUnderMouse(HWND tree);

// Not every system's tree has such tips, and none shows them to the keyboard.
class NodeTip {
 public:
  // `textOf` tells of an item; empty: nothing.
  NodeTip(HWND tree, std::function<std::wstring(HTREEITEM item)> textOf);

  // Of what the tree's window gets, before it does.
  void OnMessage(UINT message, WPARAM wParam);
  // The keyboard has chosen another node.
  void OnKeyboard();
  // Also what is still to come. Wanted where the items go: it would tell of one that is gone.
  void Hide();

 private:
  void MakeWindow();
  void WaitForRest();
  void ShowFor(HTREEITEM item, POINT place);
  TTTOOLINFOW Tool() const;

  const HWND tree_;
  const std::function<std::wstring(HTREEITEM item)> textOf_;
  Handle<HWND, DestroyWindow> window_;  // none until there is something to show
  HTREEITEM item_ = nullptr;            // under the mouse
};

}  // namespace orvanto::win32
