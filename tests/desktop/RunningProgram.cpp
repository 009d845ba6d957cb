#include "tests/desktop/RunningProgram.h"

#include <cctype>
#include <thread>

#include "platform/win32/Text.h"
#include "platform/win32/Win32Keyboard.h"
#include "script/KeySequence.h"

namespace orvanto::desktop {

namespace {

void Send(WORD key, DWORD flags) {
  INPUT input = {};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = key;
  input.ki.dwFlags = flags;
  SendInput(1, &input, sizeof input);
}

// The key of the keyboard, and its Shift in the upper byte. Of characters: letters, digits, blanks.
SHORT KeyOf(const KeyEvent& event) {
  for (const auto& [key, code] : {std::pair<Key, SHORT>{Key::Alt, VK_MENU},
                                  {Key::Tab, VK_TAB},
                                  {Key::Enter, VK_RETURN},
                                  {Key::Escape, VK_ESCAPE},
                                  {Key::Up, VK_UP},
                                  {Key::Down, VK_DOWN},
                                  {Key::Right, VK_RIGHT}}) {
    if (event.key == key) return code;
  }
  const int character = static_cast<int>(event.character);
  return static_cast<SHORT>(std::toupper(character) | (std::isupper(character) != 0 ? 0x100 : 0));
}

}  // namespace

bool WaitFor(const std::function<bool()>& condition, std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

std::wstring Beside(const std::wstring& name) {
  wchar_t path[1024];
  GetModuleFileNameW(nullptr, path, 1024);
  std::wstring folder = path;
  folder.resize(folder.find_last_of(L'\\') + 1);
  return folder + name;
}

void PressKeys(const std::string& keys) {
  for (const KeyEvent& event : ParseKeySequence(keys)) {
    const SHORT code = KeyOf(event);
    const auto send = [&](DWORD flags) { Send(LOBYTE(code), flags); };
    if (HIBYTE(code) & 1) Send(VK_SHIFT, 0);
    for (std::uint32_t i = 0; i < event.count; ++i) {
      if (event.action != KeyEvent::Action::Release) send(0);
      if (event.action != KeyEvent::Action::Hold) send(KEYEVENTF_KEYUP);
    }
    if (HIBYTE(code) & 1) Send(VK_SHIFT, KEYEVENTF_KEYUP);
  }
}

void Type(const std::string& keys) { win32::Win32Keyboard().Type(ParseKeySequence(keys)); }

std::vector<HWND> TopLevel(DWORD process, const std::wstring& windowClass) {
  std::vector<HWND> found;
  HWND window = nullptr;
  while ((window = FindWindowExW(nullptr, window, windowClass.c_str(), nullptr)) != nullptr) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (process == 0 || owner == process) found.push_back(window);
  }
  return found;
}

std::wstring TextOf(HWND window) {
  std::wstring text(1024, L'\0');
  const LRESULT length =
      SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

bool IsTopMost(HWND window) {
  return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

HWND InFront(const std::wstring& caption) {
  HWND front = nullptr;
  const bool came = WaitFor([&] {
    front = GetForegroundWindow();
    return TextOf(front) == caption;
  });
  return came ? front : nullptr;
}

HWND FocusBeside(HWND window) {
  GUITHREADINFO info = {};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
  return info.hwndFocus;
}

RunningProgram::RunningProgram(const std::wstring& arguments)
    : process_(
          win32::StartProcess(win32::ToUtf8(L"\"" + Beside(L"orvanto.exe") + L"\" " + arguments),
                              ShowCommand::Normal)) {}

RunningProgram::~RunningProgram() {
  TerminateProcess(process_.Get(), 99);
  WaitForSingleObject(process_.Get(), 5000);
}

int RunningProgram::ExitCode() const {
  DWORD code = 0;
  const bool ended = WaitForSingleObject(process_.Get(), 20000) == WAIT_OBJECT_0 &&
                     GetExitCodeProcess(process_.Get(), &code);
  return ended ? static_cast<int>(code) : -1;
}

HWND RunningProgram::MainWindow() const {
  HWND main = nullptr;
  WaitFor([&] {
    for (const HWND window : TopLevel(Id(), L"OrvantoForm")) {
      if (TextOf(window).starts_with(L"Orvanto - ")) main = window;
    }
    return main != nullptr;
  });
  return main;
}

bool RunningProgram::MainIsInFront() const {
  return WaitFor(
      [main = MainWindow()] { return IsWindowVisible(main) && GetForegroundWindow() == main; });
}

HWND RunningProgram::Box() const {
  for (const HWND window : TopLevel(Id(), L"#32770")) {
    if (IsWindowVisible(window)) return window;
  }
  return nullptr;
}

std::wstring RunningProgram::BoxInFront() const {
  const bool came = WaitFor([&] { return Box() != nullptr && GetForegroundWindow() == Box(); });
  return came ? TextOf(GetDlgItem(Box(), 0xFFFF)) : L"no box";
}

HWND RunningProgram::TreeWindow() const {
  return FindWindowExW(MainWindow(), nullptr, WC_TREEVIEWW, nullptr);
}

HWND RunningProgram::Button(HWND form, const std::wstring& caption) {
  return FindWindowExW(form, nullptr, WC_BUTTONW, caption.c_str());
}

std::vector<HWND> RunningProgram::Children(HWND form, const wchar_t* windowClass) {
  std::vector<HWND> found;
  HWND child = nullptr;
  while ((child = FindWindowExW(form, child, windowClass, nullptr)) != nullptr) {
    found.push_back(child);
  }
  return found;
}

void RunningProgram::Press(HWND form, const std::wstring& caption) {
  PostMessageW(Button(form, caption), BM_CLICK, 0, 0);
}

}  // namespace orvanto::desktop
