// A person who drags the text on the clipboard onto a window. Wants OLE and the real mouse.
#pragma once

#include <ole2.h>
#include <windows.h>

#include <utility>

namespace orvanto::win32 {

// Moves the mouse a little, and drops.
struct DropNow final : IDropSource {
  STDMETHODIMP QueryInterface(REFIID, void** object) override {
    *object = this;
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 1; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP QueryContinueDrag(BOOL, DWORD) override {
    if (std::exchange(moved, true)) return DRAGDROP_S_DROP;
    mouse_event(MOUSEEVENTF_MOVE, 1, 1, 0, 0);
    return S_OK;
  }
  STDMETHODIMP GiveFeedback(DWORD) override { return DRAGDROP_S_USEDEFAULTCURSORS; }
  bool moved = false;
};

// False when the window does not take it.
inline bool DropClipboardOn(HWND window) {
  IDataObject* data = nullptr;
  if (OleGetClipboard(&data) != S_OK) return false;
  RECT place = {};
  GetWindowRect(window, &place);
  SetCursorPos(place.left + 5, place.top + 5);
  mouse_event(MOUSEEVENTF_MOVE, 1, 1, 0, 0);
  DropNow source;
  DWORD effect = 0;
  const HRESULT done = DoDragDrop(data, &source, DROPEFFECT_COPY, &effect);
  data->Release();
  return done == DRAGDROP_S_DROP && effect == DROPEFFECT_COPY;
}

}  // namespace orvanto::win32
