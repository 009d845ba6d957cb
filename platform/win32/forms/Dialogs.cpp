#include "platform/win32/forms/Dialogs.h"

#include <commdlg.h>

#include "platform/win32/Library.h"
#include "platform/win32/Text.h"

namespace orvanto::win32 {

ModalScope::ModalScope(Win32Loop& loop, const Win32FormHost& forms)
    : hold_(loop), owner_(forms.ActiveForm()) {
  if (owner_ == nullptr) return;
  for (const HWND window : forms.VisibleForms()) {
    if (window == owner_ || !IsWindowEnabled(window)) continue;
    EnableWindow(window, FALSE);
    disabled_.push_back(window);
  }
}

ModalScope::~ModalScope() {
  for (const HWND window : disabled_) EnableWindow(window, TRUE);
}

Answer Win32MessageBoxes::Show(const std::string& text, const std::string& title, Buttons buttons,
                               BoxIcon icon) {
  const ModalScope modal(loop_, forms_);
  // Without an owner, because none of our windows is in front: task-modal, so that all of them
  // wait; top-most, so that it is not lost behind a main window that is.
  UINT type = modal.Owner() != nullptr ? 0 : MB_TASKMODAL | MB_SETFOREGROUND | MB_TOPMOST;
  struct Kind {
    UINT type;
    Answer safe;  // also where the box could not be shown
  };
  constexpr Kind kKinds[] = {{MB_OK, Answer::Ok},
                             {MB_OKCANCEL, Answer::Cancel},
                             {MB_YESNO, Answer::No},
                             {MB_YESNO | MB_DEFBUTTON2, Answer::No},
                             {MB_RETRYCANCEL, Answer::Cancel}};
  constexpr UINT kIcons[] = {0, MB_ICONQUESTION, MB_ICONERROR};
  const Kind& kind = kKinds[static_cast<std::size_t>(buttons)];
  type |= kind.type | kIcons[static_cast<std::size_t>(icon)];
  switch (MessageBoxW(modal.Owner(), ToWide(text).c_str(), ToWide(title).c_str(), type)) {
    case IDOK:
      return Answer::Ok;
    case IDYES:
      return Answer::Yes;
    case IDRETRY:
      return Answer::Retry;
    default:
      return kind.safe;
  }
}

std::optional<std::string> Win32FileDialogs::ChooseFile(const std::string& title,
                                                        const std::vector<FileFilter>& filters,
                                                        const std::string& folder) {
  std::wstring filter;  // pairs of name and pattern, each ended by a NUL, and one more at the end
  for (const FileFilter& each : filters) {
    filter += ToWide(each.name) + L'\0' + ToWide(each.pattern) + L'\0';
  }
  const std::wstring caption = ToWide(title);
  const std::wstring start = ToWide(folder);
  wchar_t name[255] = L"";
  const ModalScope modal(loop_, forms_);
  OPENFILENAMEW dialog = {};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = modal.Owner();
  dialog.lpstrFilter = filter.empty() ? nullptr : filter.c_str();
  dialog.nFilterIndex = 1;
  dialog.lpstrFile = name;
  dialog.nMaxFile = static_cast<DWORD>(std::size(name));
  dialog.lpstrInitialDir = start.empty() ? nullptr : start.c_str();
  dialog.lpstrTitle = caption.c_str();
  dialog.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_NOCHANGEDIR | OFN_HIDEREADONLY;
  com_.Begin();
  const auto open = Late<decltype(GetOpenFileNameW)>(L"comdlg32.dll", "GetOpenFileNameW");
  if (!open(&dialog)) return std::nullopt;
  return ToUtf8(name);
}

}  // namespace orvanto::win32
