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

std::vector<std::string> LinesOf(const fs::path& file) {
  std::ifstream in(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
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
    for (const wchar_t* file : {L"orvanto-note.txt", L"orvanto-errand.txt"}) {
      if (const HWND left = FindNotepad(file)) EndOwner(left);
    }
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

TEST_F(ScriptTest, TypesIntoAnotherProgramAndMovesItsWindow) {
  const fs::path note = folder_ / L"orvanto-note.txt";
  WriteFile(note, kByteOrderMark);
  const std::string title = "'orvanto-note.txt - Notepad'";
  Add("open", {"open('" + In("orvanto-note.txt") + "')"});
  Add("type", {"sendkeys(" + title +
               ",Hello, World: +(abc){x 3} {+}{^}{%}{~}{(}{)}{{}{}}{[}{]} \"'&<>@#$\\{ENTER}" +
               "ÄÖÜ äöü ß €~end)"});
  Add("minimize", {"minimize(" + title + ")"});
  Add("maximize", {"maximize(" + title + ")"});
  Add("focus", {"setfocus(" + title + ")"});
  Add("close", {"sendkeys(" + title + ",^s)", "sendkeys(" + title + ",%{F4})"});
  Import(tasks_);
  const std::wstring typed = L"Hello, World: ABCxxx +^%~(){}[] \"'&<>@#$\\\r\nÄÖÜ äöü ß €\r\nend";

  const RunningProgram program;
  Run(program, "open");
  HWND notepad = nullptr;
  ASSERT_TRUE(WaitFor([&] { return (notepad = FindNotepad(L"orvanto-note.txt")) != nullptr; }));
  const HWND edit = FindWindowExW(notepad, nullptr, L"Edit", nullptr);
  Run(program, "type");
  EXPECT_TRUE(WaitFor([&] { return TextOf(edit) == typed; })) << ToUtf8(TextOf(edit));

  Run(program, "minimize");
  EXPECT_TRUE(WaitFor([&] { return IsIconic(notepad) != 0; }));
  Run(program, "maximize");
  EXPECT_TRUE(WaitFor([&] { return IsZoomed(notepad) != 0; }));
  SetForegroundWindow(program.MainWindow());
  Run(program, "focus");
  EXPECT_TRUE(WaitFor([&] {
    return GetForegroundWindow() == notepad && !IsZoomed(notepad) && !IsIconic(notepad);
  }));

  Run(program, "close");
  EXPECT_TRUE(WaitFor([&] { return !IsWindow(notepad); }));
  EXPECT_EQ(ReadFile(note), std::string(kByteOrderMark) + ToUtf8(typed));
  Exit(program);
}

TEST_F(ScriptTest, GoesOnOrEndsByTheAnswer) {
  const struct {
    const char* name;
    const char* arguments;
    int answer;  // 0: there is no box
    bool goesOn;
  } cases[] = {
      {"plain", "'Go on?'", IDOK, true},
      {"ok", "'Go on?',okcancel", IDOK, true},
      {"cancel", "'Go on?',okcancel", IDCANCEL, false},
      {"yes", "'Go on?',yesno", IDYES, true},
      {"no", "'Go on?',yesno", IDNO, false},
      {"nostop", "'Go on?',nostop", 0, true},
      {"unknown", "'Go on?',maybe", 0, true},
  };
  for (const auto& each : cases) Add(each.name, {"msgbox(" + std::string(each.arguments) + ")"});
  Import(tasks_);

  const RunningProgram program;
  const HWND main = program.MainWindow();
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Start(program, each.name);
    if (each.answer != 0) {
      ASSERT_TRUE(WaitFor([&] { return program.Box() != nullptr; }));
      const HWND box = program.Box();
      EXPECT_EQ(TextOf(box), L"Orvanto");
      EXPECT_EQ(TextOf(GetDlgItem(box, 0xFFFF)), L"Go on?");
      EXPECT_FALSE(Ended(each.name));
      PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(each.answer), 0);
      ASSERT_TRUE(WaitFor([&] { return !IsWindow(box) && IsWindowEnabled(main); }));
    }
    if (each.goesOn) {
      EXPECT_TRUE(WaitFor([&] { return Ended(each.name); }));
    }
    EXPECT_EQ(program.Box(), nullptr);
    if (std::string(each.name) == "nostop") {
      const HWND message = program.InFront(L"Orvanto");
      ASSERT_NE(message, nullptr);
      program.Press(message, L"&OK");
      EXPECT_TRUE(WaitFor([&] { return !IsWindow(message) || !IsWindowVisible(message); }));
    }
  }
  // The next scripts, and the exit, came after whatever the ended ones still did.
  Exit(program);
  for (const auto& each : cases) EXPECT_EQ(Ended(each.name), each.goesOn) << each.name;
}

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

TEST_F(ScriptTest, HandlesFilesAndLogsWhatResists) {
  for (const char* file : {"copied.txt", "moved.txt", "deleted.txt", "locked.txt",
                           "tree/one/found.txt", "tree/two/deep/found.txt", "tree/two/kept.txt"}) {
    WriteFile(folder_ / file, file);
  }
  const std::string locked = In("locked.txt");
  Add("files",
      {"*(what resists comes first)", "copy('" + locked + "'," + In("out") + ")",
       "move('" + locked + "'," + In("out") + ")", "delete('" + locked + "')",
       "delete('" + In("not there.txt") + "')",
       "copy('" + In("copied.txt") + "'," + In("out") + ")",
       "move('" + In("moved.txt") + "'," + In("out") + ")", "delete('" + In("deleted.txt") + "')",
       "finddelete('found.txt'," + In("tree") + ")"});
  Add("broken", {"nosuch('" + In("copied.txt") + "')"});
  Import(tasks_);
  const RunningProgram program;
  {
    const win32::Handle<HANDLE, CloseHandle, -1> open(
        CreateFileW(ToWide(locked).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(open);
    Run(program, "files");
  }
  EXPECT_EQ(ReadFile(folder_ / L"copied.txt"), "copied.txt");
  EXPECT_EQ(ReadFile(Out("copied.txt")), "copied.txt");
  EXPECT_FALSE(fs::exists(folder_ / L"moved.txt"));
  EXPECT_EQ(ReadFile(Out("moved.txt")), "moved.txt");
  EXPECT_FALSE(fs::exists(folder_ / L"deleted.txt"));
  EXPECT_FALSE(fs::exists(folder_ / L"tree/one/found.txt"));
  EXPECT_FALSE(fs::exists(folder_ / L"tree/two/deep/found.txt"));
  EXPECT_TRUE(fs::exists(folder_ / L"tree/two/kept.txt"));
  EXPECT_TRUE(fs::exists(folder_ / L"locked.txt"));
  EXPECT_FALSE(fs::exists(Out("locked.txt")));

  Start(program, "broken");
  EXPECT_TRUE(WaitFor([&] { return LinesOf(log_).size() >= 5; }));
  Exit(program);
  EXPECT_FALSE(Ended("broken"));
  const std::vector<std::string> lines = LinesOf(log_);
  ASSERT_EQ(lines.size(), 5u) << ReadFile(log_);
  const char* const whats[] = {"could not be copied to ", "could not be copied to ",
                               "could not be deleted: "};
  for (std::size_t i = 0; i < std::size(whats); ++i) {
    EXPECT_NE(lines[i].find("locked.txt " + std::string(whats[i])), std::string::npos) << lines[i];
    // The reason stands between the last colon and the quotation mark.
    EXPECT_GT(lines[i].size() - lines[i].rfind(": "), 8u) << lines[i];
  }
  for (const std::size_t i : {3u, 4u}) {
    EXPECT_EQ(lines[i], "\"File: broken.txt not found or file empty\"");
  }
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
  DWORD id = 0;
  GetWindowThreadProcessId(dialog, &id);
  const win32::Handle<HANDLE, CloseHandle> owner(
      OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_TERMINATE, FALSE, id));
  wchar_t path[1024] = L"";
  DWORD size = 1024;
  QueryFullProcessImageNameW(owner.Get(), 0, path, &size);
  EXPECT_TRUE(std::wstring(CharLowerW(path)).ends_with(L"\\notepad.exe"));
  // The dialog, or the complaint that there is no printer.
  PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
  EXPECT_TRUE(WaitFor([&] { return !IsWindow(dialog); }));
  TerminateProcess(owner.Get(), 0);
  Exit(program);
}

// One minute's wait: two tasks of the same minute do an errand together, and nobody is there.
TEST_F(ScriptTest, DoesAnErrandAtItsMinute) {
  const std::string errand = In("tree\\a\\b\\orvanto-errand.txt");
  WriteFile(ToWide(errand), kByteOrderMark);
  WriteFile(folder_ / L"tree/c/other.txt", "not this one");
  // A program that takes as long as Notepad needs to open, or to save.
  WriteFile(folder_ / L"pause/pause.bat", "@ping -n 5 127.0.0.1 >nul\r\n");
  const std::string pause = "findopenwait('pause.bat'," + In("pause") + ")";
  Add("find", {"findopen('orvanto-errand.txt'," + In("tree") + ")", pause});
  Add("write", {"*(the window is there by now)",
                "sendkeys('orvanto-errand.txt - Notepad',Done while you were away.~)",
                "sendkeys('orvanto-errand.txt - Notepad',^s)",
                "sendkeys('orvanto-errand.txt - Notepad',%{F4})", pause,
                "copy('" + errand + "'," + In("out") + ")"});
  const int due = DueSoon();
  Import(tasks_, due / 60, due % 60);

  const RunningProgram program;
  ASSERT_NE(program.MainWindow(), nullptr);
  EXPECT_FALSE(Ended("find"));
  ASSERT_TRUE(WaitFor([&] { return Ended("write"); }, std::chrono::seconds(130)));
  EXPECT_TRUE(Ended("find"));
  EXPECT_EQ(ReadFile(Out("orvanto-errand.txt")),
            std::string(kByteOrderMark) + "Done while you were away.\r\n");
  EXPECT_EQ(FindNotepad(L"orvanto-errand.txt"), nullptr);
  EXPECT_FALSE(fs::exists(log_)) << ReadFile(log_);
  Exit(program);
}

}  // namespace
}  // namespace orvanto::desktop
