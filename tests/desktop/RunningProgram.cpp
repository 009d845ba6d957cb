#include "tests/desktop/RunningProgram.h"

#include <system_error>
#include <thread>

#include "platform/win32/Text.h"

namespace orvanto::desktop {

namespace {

using ProcessHandle = win32::Handle<HANDLE, CloseHandle>;

ProcessHandle Start(std::wstring commandLine, DWORD& id) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION information = {};
  if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &information)) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                            win32::ToUtf8(commandLine));
  }
  CloseHandle(information.hThread);
  id = information.dwProcessId;
  return ProcessHandle(information.hProcess);
}

void Send(WORD key, wchar_t character, DWORD flags) {
  INPUT input = {};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = key;
  input.ki.wScan = character;
  input.ki.dwFlags = flags;
  SendInput(1, &input, sizeof input);
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

void PressKeys(const std::vector<WORD>& keys) {
  for (const WORD key : keys) {
    Send(key, 0, 0);
    Send(key, 0, KEYEVENTF_KEYUP);
  }
}

void PressWith(WORD held, WORD key) {
  Send(held, 0, 0);
  PressKeys({key});
  Send(held, 0, KEYEVENTF_KEYUP);
}

void TypeText(const std::wstring& text) {
  for (const wchar_t character : text) {
    Send(0, character, KEYEVENTF_UNICODE);
    Send(0, character, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP);
  }
}

int RunToEnd(std::wstring commandLine) {
  DWORD id = 0;
  const ProcessHandle process = Start(std::move(commandLine), id);
  DWORD code = 0;
  if (WaitForSingleObject(process.Get(), 30000) != WAIT_OBJECT_0) return -1;
  return GetExitCodeProcess(process.Get(), &code) ? static_cast<int>(code) : -1;
}

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

HWND FocusBeside(HWND window) {
  GUITHREADINFO info = {};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
  return info.hwndFocus;
}

// A structure in the memory of the program, for messages that carry an address.
class RunningProgram::Remote {
 public:
  Remote(HANDLE process, std::size_t size)
      : process_(process),
        memory_(VirtualAllocEx(process, nullptr, size, MEM_COMMIT, PAGE_READWRITE)) {}
  ~Remote() { VirtualFreeEx(process_, memory_, 0, MEM_RELEASE); }
  Remote(const Remote&) = delete;
  Remote& operator=(const Remote&) = delete;

  BYTE* Address() const { return static_cast<BYTE*>(memory_); }
  template <typename T>
  void Write(const T& value) const {
    WriteProcessMemory(process_, memory_, &value, sizeof value, nullptr);
  }
  void Read(std::size_t offset, void* to, std::size_t size) const {
    ReadProcessMemory(process_, Address() + offset, to, size, nullptr);
  }

 private:
  HANDLE process_;
  void* memory_;
};

RunningProgram::RunningProgram(const std::wstring& arguments) {
  process_ = Start(L"\"" + Beside(L"orvanto.exe") + L"\" " + arguments, id_);
}

RunningProgram::~RunningProgram() {
  TerminateProcess(process_.Get(), 99);
  WaitForSingleObject(process_.Get(), 5000);
}

HWND RunningProgram::MainWindow() const {
  HWND main = nullptr;
  WaitFor([&] {
    for (const HWND window : TopLevel(id_, L"OrvantoForm")) {
      if (TextOf(window).starts_with(L"Orvanto - ")) main = window;
    }
    return main != nullptr;
  });
  return main;
}

HWND RunningProgram::Button(HWND form, const std::wstring& caption) {
  return FindWindowExW(form, nullptr, L"Button", caption.c_str());
}

std::vector<HWND> RunningProgram::Children(HWND form, const wchar_t* windowClass) {
  std::vector<HWND> found;
  HWND child = nullptr;
  while ((child = FindWindowExW(form, child, windowClass, nullptr)) != nullptr) {
    found.push_back(child);
  }
  return found;
}

HWND RunningProgram::InFront(const std::wstring& caption) const {
  HWND found = nullptr;
  WaitFor([&] {
    for (const HWND window : TopLevel(id_, L"OrvantoForm")) {
      if (IsWindowVisible(window) && TextOf(window) == caption && GetForegroundWindow() == window) {
        found = window;
      }
    }
    return found != nullptr;
  });
  return found;
}

HWND RunningProgram::Box() const {
  for (const HWND window : TopLevel(id_, L"#32770")) {
    if (IsWindowVisible(window)) return window;
  }
  return nullptr;
}

HWND RunningProgram::TrayOwner() const {
  const auto found = TopLevel(id_, L"OrvantoTray");
  return found.empty() ? nullptr : found.front();
}

void RunningProgram::Press(HWND form, const std::wstring& caption) {
  PostMessageW(Button(form, caption), BM_CLICK, 0, 0);
}

void RunningProgram::ChooseMenu(wchar_t menu, int itemsBelowFirst) const {
  const HWND main = MainWindow();
  PostMessageW(main, WM_SYSCOMMAND, SC_KEYMENU, menu);
  WaitFor([&] { return !TopLevel(id_, L"#32768").empty(); });  // the open menu
  for (int i = 0; i < itemsBelowFirst; ++i) PostMessageW(main, WM_KEYDOWN, VK_DOWN, 0);
  PostMessageW(main, WM_KEYDOWN, VK_RETURN, 0);
}

HWND RunningProgram::TreeWindow() const {
  return FindWindowExW(MainWindow(), nullptr, WC_TREEVIEWW, nullptr);
}

std::vector<HTREEITEM> RunningProgram::Items(std::vector<int>& levels) const {
  const HWND tree = TreeWindow();
  std::vector<HTREEITEM> items;
  const std::function<void(HTREEITEM, int)> walk = [&](HTREEITEM item, int level) {
    for (; item != nullptr; item = TreeView_GetNextSibling(tree, item)) {
      items.push_back(item);
      levels.push_back(level);
      walk(TreeView_GetChild(tree, item), level + 1);
    }
  };
  walk(TreeView_GetRoot(tree), 0);
  return items;
}

std::vector<TreeLine> RunningProgram::Tree() const {
  struct Buffer {
    TVITEMW item;
    wchar_t text[512];
  };
  const Remote remote(process_.Get(), sizeof(Buffer));
  std::vector<int> levels;
  std::vector<TreeLine> lines;
  for (const HTREEITEM handle : Items(levels)) {
    Buffer buffer = {};
    buffer.item.mask = TVIF_TEXT;
    buffer.item.hItem = handle;
    buffer.item.pszText = reinterpret_cast<wchar_t*>(remote.Address() + offsetof(Buffer, text));
    buffer.item.cchTextMax = 511;
    remote.Write(buffer);
    SendMessageW(TreeWindow(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(remote.Address()));
    remote.Read(offsetof(Buffer, text), buffer.text, sizeof buffer.text);
    lines.push_back({levels[lines.size()], buffer.text});
  }
  return lines;
}

void RunningProgram::ClickTreeLine(std::size_t index) const {
  std::vector<int> levels;
  union {
    HTREEITEM item;  // in
    RECT rectangle;  // out
  } place = {};
  place.item = Items(levels).at(index);
  const Remote remote(process_.Get(), sizeof place);
  remote.Write(place);
  SendMessageW(TreeWindow(), TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(remote.Address()));
  remote.Read(0, &place, sizeof place);
  const LPARAM position = MAKELPARAM((place.rectangle.left + place.rectangle.right) / 2,
                                     (place.rectangle.top + place.rectangle.bottom) / 2);
  PostMessageW(TreeWindow(), WM_LBUTTONDOWN, MK_LBUTTON, position);
  PostMessageW(TreeWindow(), WM_LBUTTONUP, 0, position);
}

bool RunningProgram::WaitForEnd(DWORD& exitCode) const {
  return WaitForSingleObject(process_.Get(), 20000) == WAIT_OBJECT_0 &&
         GetExitCodeProcess(process_.Get(), &exitCode);
}

}  // namespace orvanto::desktop
