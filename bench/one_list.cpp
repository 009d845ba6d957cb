// What a start costs at the least: a window with a list of as many lines as the argument says.
#include <windows.h>

#include <cstdlib>

namespace {

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DESTROY) PostQuitMessage(0);
  return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE module, HINSTANCE, PWSTR commandLine, int show) {
  WNDCLASSW windowClass = {};
  windowClass.lpfnWndProc = Procedure;
  windowClass.hInstance = module;
  windowClass.lpszClassName = L"OneList";
  windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
  RegisterClassW(&windowClass);
  const HWND window =
      CreateWindowExW(0, L"OneList", L"One list", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                      640, 480, nullptr, nullptr, module, nullptr);
  const HWND list = CreateWindowExW(0, L"ListBox", L"", WS_CHILD | WS_VISIBLE | WS_VSCROLL, 0, 0,
                                    620, 440, window, nullptr, module, nullptr);
  for (int line = 0, lines = _wtoi(commandLine); line < lines; ++line) {
    SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"Task | at 10:30 on Sunday"));
  }
  ShowWindow(window, show);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return 0;
}
