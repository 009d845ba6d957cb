// Automation scripts in the finished program, with Notepad and a console as the programs they act
// on.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/win32/Text.h"
#include "tests/desktop/DesktopTest.h"

namespace orvanto::desktop {
namespace {

namespace fs = std::filesystem;
using win32::ToUtf8;
using win32::ToWide;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

void WriteFile(const fs::path& file, std::string_view bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << bytes;
}

std::string ReadFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

HWND FindNotepad(const std::wstring& file) {
  for (const HWND window : TopLevel(0, L"Notepad")) {
    if (TextOf(window).ends_with(file + L" - Notepad")) return window;
  }
  return nullptr;
}

// A visible window of a class that was not among those before, or null.
HWND FindNew(const wchar_t* windowClass, const std::vector<HWND>& before) {
  for (const HWND window : TopLevel(0, windowClass)) {
    const bool isNew = std::find(before.begin(), before.end(), window) == before.end();
    if (isNew && IsWindowVisible(window)) return window;
  }
  return nullptr;
}

void EndOwner(HWND window) {
  DWORD id = 0;
  GetWindowThreadProcessId(window, &id);
  const win32::Handle<HANDLE, CloseHandle> process(
      OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
  TerminateProcess(process.Get(), 99);
  WaitForSingleObject(process.Get(), 5000);
}

class ScriptTest : public DesktopTest {
 protected:
  ScriptTest() : folder_(TemporaryFile(L"orvanto-scripts")) {
    CleanUp();
    fs::create_directories(folder_ / L"out");
  }
  ~ScriptTest() override {
    if (const HWND left = FindNotepad(L"orvanto-errand.txt")) EndOwner(left);
    CleanUp();
    for (const fs::path& script : scripts_) fs::remove(script);
  }

  // A script that tells of its last line by a file; the task that runs it has the same name.
  void Add(const std::string& name, const std::vector<std::string>& lines) {
    scripts_.push_back(Beside(L"scripts\\" + ToWide(name) + L".txt"));
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    WriteFile(folder_ / (name + ".end"), name);
    WriteFile(scripts_.back(), text + "copy('" + In(name + ".end") + "'," + In("out") + ")\r\n");
    tasks_.push_back({name, "Scripts", "1", name + ".txt"});
  }
  // Whether the script has come to its last line since it was started.
  bool Ended(const std::string& name) const { return fs::exists(Out(name + ".end")); }

  void Start(const RunningProgram& program, const std::string& name) const {
    fs::remove(Out(name + ".end"));
    std::size_t line = 1;  // below the group
    while (tasks_.at(line - 1).name != name) ++line;
    program.ClickTreeLine(line);
    const HWND run = program.Button(L"&Run Task");
    ASSERT_TRUE(WaitFor([&] { return IsWindowEnabled(run) != 0; }));
    program.Press(L"&Run Task");
  }
  void Run(const RunningProgram& program, const std::string& name) const {
    Start(program, name);
    ASSERT_TRUE(WaitFor([&] { return Ended(name); })) << name;
  }

  // Full names of files that the scripts work on, and of those in the folder they copy into.
  std::string In(const std::string& name) const { return ToUtf8((folder_ / name).wstring()); }
  fs::path Out(const std::string& name) const { return folder_ / L"out" / name; }

  const fs::path folder_;
  const fs::path log_ = Beside(L"ORVSCRPT.LOG");
  std::vector<Task> tasks_;

 private:
  void CleanUp() const {
    std::error_code error;
    fs::remove_all(folder_, error);
    fs::remove(log_, error);
  }

  std::vector<fs::path> scripts_;
};

TEST_F(ScriptTest, WaitsForAProgramToEnd) {
  wchar_t windows[MAX_PATH];
  GetWindowsDirectoryW(windows, MAX_PATH);
  Add("wait", {"openwait('" + ToUtf8(windows) + "\\notepad.exe',3)"});
  Import(tasks_);
  const RunningProgram program;
  const HWND main = program.MainWindow();
  const std::vector<HWND> before = TopLevel(0, L"Notepad");
  Start(program, "wait");
  HWND notepad = nullptr;
  ASSERT_TRUE(WaitFor([&] { return (notepad = FindNew(L"Notepad", before)) != nullptr; }));
  EXPECT_TRUE(IsZoomed(notepad));
  EXPECT_EQ(SendMessageTimeoutW(main, WM_NULL, 0, 0, SMTO_NORMAL, 500, nullptr), 0)
      << "nothing else runs meanwhile";
  EXPECT_FALSE(Ended("wait"));
  PostMessageW(notepad, WM_CLOSE, 0, 0);
  EXPECT_TRUE(WaitFor([&] { return Ended("wait"); }));
  if (IsWindow(notepad)) EndOwner(notepad);
  Exit(program);
}

std::vector<DWORD> pressed;

LRESULT CALLBACK NotePressed(int code, WPARAM message, LPARAM address) {
  const auto& key = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(address);
  const bool down = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
  if (code == HC_ACTION && down) {
    const DWORD virtualKey = key.vkCode == VK_LMENU ? VK_MENU : key.vkCode;
    pressed.push_back(virtualKey == VK_PACKET ? key.scanCode : virtualKey);
  }
  return CallNextHookEx(nullptr, code, message, address);
}

HWND FindConsole() {
  HWND window = nullptr;
  while ((window = FindWindowExW(nullptr, window, nullptr, nullptr)) != nullptr) {
    wchar_t title[256] = L"";
    InternalGetWindowText(window, title, 256);
    if (std::wstring(title).find(L"orvanto-console") != std::wstring::npos) break;
  }
  return window;
}

// In Wine the keys open no menu of a console, and its window takes no characters that are not keys.
// So this looks at what the program does for its part: the text on the clipboard, the console in
// front, and the keys.
TEST_F(ScriptTest, PastesIntoAConsole) {
  WriteFile(folder_ / L"console.bat",
            "@title orvanto-console\r\n@set /p line=\r\n@echo pressed>" + In("got.txt") + "\r\n");
  Add("console", {"open('" + In("console.bat") + "')"});
  Add("paste", {"sendkeysdos('orvanto-console',Grüße +1)"});
  Add("enter", {"sendkeys('orvanto-console',~)"});
  Import(tasks_);
  const RunningProgram program;
  Run(program, "console");
  ASSERT_TRUE(WaitFor([] { return FindConsole() != nullptr; }));
  const HWND console = FindConsole();

  pressed.clear();
  {
    const win32::Handle<HHOOK, UnhookWindowsHookEx> hook(
        SetWindowsHookExW(WH_KEYBOARD_LL, NotePressed, GetModuleHandleW(nullptr), 0));
    Start(program, "paste");
    ASSERT_TRUE(WaitFor([&] {
      MSG message;  // the system calls the hook in here
      PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
      return Ended("paste");
    }));
  }
  EXPECT_EQ(pressed, (std::vector<DWORD>{VK_MENU, VK_SPACE, 'e', 'p'}));
  EXPECT_EQ(GetForegroundWindow(), console);
  ASSERT_TRUE(WaitFor([] { return OpenClipboard(nullptr) != 0; }));
  const auto* text = static_cast<const wchar_t*>(GetClipboardData(CF_UNICODETEXT));
  const std::wstring clipboard = text == nullptr ? L"" : text;
  CloseClipboard();
  EXPECT_EQ(clipboard, L"Grüße +1");

  Run(program, "enter");
  EXPECT_TRUE(WaitFor([&] { return !IsWindow(console); }));
  EXPECT_EQ(ReadFile(folder_ / L"got.txt"), "pressed\r\n");
  Exit(program);
}

TEST_F(ScriptTest, PrintsByTheProgramOfTheFile) {
  WriteFile(folder_ / L"orvanto-note.txt", "for the printer");
  Add("print", {"print('" + In("orvanto-note.txt") + "')"});
  Import(tasks_);
  const RunningProgram program;
  const std::vector<HWND> before = TopLevel(0, L"#32770");
  Run(program, "print");
  HWND dialog = nullptr;
  WaitFor([&] { return (dialog = FindNew(L"#32770", before)) != nullptr; },
          std::chrono::seconds(15));
  if (dialog == nullptr) GTEST_SKIP() << "the system prints, or fails to, without a dialog";
  // The dialog, or the complaint that there is no printer.
  DWORD id = 0;
  GetWindowThreadProcessId(dialog, &id);
  EXPECT_NE(id, program.Id());
  EndOwner(dialog);
}

// One minute's wait: two tasks of the same minute do an errand together, and nobody is there.
TEST_F(ScriptTest, DoesAnErrandAtItsMinuteThoughInvisible) {
  const std::string errand = In("tree\\a\\b\\orvanto-errand.txt");
  WriteFile(ToWide(errand), kByteOrderMark);
  WriteFile(folder_ / L"tree/c/other.txt", "not this one");
  // A program that takes as long as Notepad needs to open, or to save.
  WriteFile(folder_ / L"pause/pause.bat", "@ping -n 5 127.0.0.1 >nul\r\n");
  const std::string pause = "findopenwait('pause.bat'," + In("pause") + ")";
  const std::string window = "('orvanto-errand.txt - Notepad',";
  Add("find", {"findopen('orvanto-errand.txt'," + In("tree") + ")", pause});
  Add("write",
      {"*(the window is there by now)",
       "sendkeys" + window + "Done while +you were {(}äß€{)} away.~)", "sendkeys" + window + "^s)",
       "sendkeys" + window + "%{F4})", pause, "copy('" + errand + "'," + In("out") + ")"});
  const int due = DueSoon();
  Import(tasks_, due / 60, due % 60);

  const RunningProgram program(L"INVISIBLE");
  const HWND hidden = program.MainWindow();
  ASSERT_NE(hidden, nullptr);
  bool everShown = false;
  int began = -1;
  ASSERT_TRUE(WaitFor(
      [&] {
        everShown = everShown || IsWindowVisible(hidden);
        if (began < 0 && Ended("find")) began = MinuteOfTheDay();
        return Ended("write");
      },
      std::chrono::seconds(130)));
  EXPECT_FALSE(everShown);
  EXPECT_EQ(began, due);
  EXPECT_EQ(ReadFile(Out("orvanto-errand.txt")),
            std::string(kByteOrderMark) + "Done while You were (äß€) away.\r\n");
  EXPECT_EQ(FindNotepad(L"orvanto-errand.txt"), nullptr);
  EXPECT_FALSE(fs::exists(log_)) << ReadFile(log_);
}

}  // namespace
}  // namespace orvanto::desktop
