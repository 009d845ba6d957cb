#include "platform/win32/forms/TextDrop.h"

#include <ole2.h>

#include <utility>

#include "platform/win32/HiddenWindow.h"
#include "platform/win32/Library.h"
#include "platform/win32/Text.h"

namespace orvanto::win32 {
namespace {

constexpr const wchar_t* kOle = L"ole32.dll";

}  // namespace

// A disabled window, and what stands on it, is never asked. Lives as long as the system holds it,
// which may be longer than the TextDrop.
class TextDrop::Target final : public IDropTarget {
 public:
  explicit Target(HWND window) : window_(window) {}

  STDMETHODIMP QueryInterface(REFIID id, void** object) override {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDropTarget);
    *object = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  STDMETHODIMP DragEnter(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) override {
    FORMATETC format = kUnicodeText;
    isText_ = data->QueryGetData(&format) == S_OK;
    return DragOver(keys, point, effect);
  }
  STDMETHODIMP DragOver(DWORD, POINTL, DWORD* effect) override {
    *effect &= isText_ ? DROPEFFECT_COPY : DROPEFFECT_NONE;
    return S_OK;
  }
  STDMETHODIMP DragLeave() override { return S_OK; }
  STDMETHODIMP Drop(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) override {
    DragEnter(data, keys, point, effect);
    FORMATETC format = kUnicodeText;
    STGMEDIUM medium = {};
    if (*effect == DROPEFFECT_NONE || FAILED(data->GetData(&format, &medium))) return S_OK;
    try {
      text = TextIn(medium.hGlobal);
      PostMessageW(GetParent(window_), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(window_), kDropped),
                   reinterpret_cast<LPARAM>(window_));
    } catch (...) {
      ReportException("drop");
    }
    Late<decltype(ReleaseStgMedium)>(kOle, "ReleaseStgMedium")(&medium);
    return S_OK;
  }

  std::string text;

 private:
  static constexpr FORMATETC kUnicodeText = {CF_UNICODETEXT, nullptr, DVASPECT_CONTENT, -1,
                                             TYMED_HGLOBAL};
  HWND window_;
  bool isText_ = false;
  ULONG references_ = 1;
};

TextDrop::TextDrop(HWND window)
    : window_(window),
      target_(new Target(window)),
      begun_(SUCCEEDED(Late<decltype(OleInitialize)>(kOle, "OleInitialize")(nullptr))) {
  Late<decltype(RegisterDragDrop)>(kOle, "RegisterDragDrop")(window_, target_);
}

TextDrop::~TextDrop() {
  Late<decltype(RevokeDragDrop)>(kOle, "RevokeDragDrop")(window_);
  target_->Release();
  if (begun_) Late<decltype(OleUninitialize)>(kOle, "OleUninitialize")();
}

std::string TextDrop::Take() { return std::exchange(target_->text, {}); }

}  // namespace orvanto::win32
