// How long the Windows program takes from its start to its visible window and until it waits for
// input, and its private memory then, beside a program of one list. Both are started in turn, with
// no task and with 100; that each has shown its lines and ends well is checked.
// Usage: start_bench [ROUNDS]   (the two programs lie beside it; replaces the user's own tasks)
#include <windows.h>

#include <commctrl.h>
#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const wchar_t* kStore = L"Software\\Quellmark\\Orvanto";
constexpr int kGroups = 4;
constexpr DWORD kLongest = 20000;  // milliseconds, for anything

struct Subject {
  const wchar_t* program;
  const wchar_t* windowClass;
  const wchar_t* listClass;
  UINT countMessage;
  int groups;  // lines beside those of the tasks
};
constexpr Subject kSubjects[] = {
    {L"one_list.exe", L"OneList", L"ListBox", LB_GETCOUNT, 0},
    {L"orvanto.exe", L"OrvantoForm", L"SysTreeView32", TVM_GETCOUNT, kGroups}};

struct Start {
  double visible;  // milliseconds
  double idle;
  double memory;  // KiB
};

void Check(bool fine, const char* what) {
  if (fine) return;
  std::fprintf(stderr, "start_bench: %s (%lu)\n", what, GetLastError());
  std::exit(1);
}

void Store(const std::wstring& section, const wchar_t* name, const std::wstring& text) {
  const std::wstring path = kStore + (L"\\" + section);
  Check(RegSetKeyValueW(HKEY_CURRENT_USER, path.c_str(), name, REG_SZ, text.c_str(),
                        static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) == 0,
        "the tasks cannot be stored");
}

void StoreTasks(int tasks) {
  RegDeleteTreeW(HKEY_CURRENT_USER, kStore);
  Store(L"General", L"NoTasks", std::to_wstring(tasks));
  for (int i = 1; i <= tasks; ++i) {
    const std::wstring name = L"Backup of folder " + std::to_wstring(i);
    Store(L"General", (L"Task" + std::to_wstring(i)).c_str(), name);
    const std::pair<const wchar_t*, std::wstring> values[] = {
        {L"Group", L"Group " + std::to_wstring(i % kGroups)},
        {L"TimeType", L"2"},
        {L"TimeHour", L"03"},
        {L"TimeMinute", L"30"},
        {L"Every", L"12"},
        {L"In", L"1"},
        {L"TaskType", L"2"},
        {L"Path", L"c:\\programs\\backup.exe"},
        {L"CmdLine", L"/quiet"},
        {L"WinStyle", L"1"}};
    for (const auto& [value, text] : values) Store(name, value, text);
  }
}

// Null until the process has a visible window of that class.
HWND VisibleWindow(const wchar_t* windowClass, DWORD process) {
  HWND window = nullptr;
  while ((window = FindWindowExW(nullptr, window, windowClass, nullptr)) != nullptr) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == process && IsWindowVisible(window)) break;
  }
  return window;
}

Start Measure(const Subject& subject, int tasks) {
  std::wstring commandLine(subject.program);
  if (subject.groups == 0) commandLine += L" " + std::to_wstring(tasks);
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  const auto begin = Clock::now();
  const auto sinceBegin = [begin] {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
  };
  Check(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                       &startup, &process) != 0,
        "the program does not start");
  HWND window = nullptr;
  while ((window = VisibleWindow(subject.windowClass, process.dwProcessId)) == nullptr) {
    const bool waiting = WaitForSingleObject(process.hProcess, 1) == WAIT_TIMEOUT;
    if (!waiting || sinceBegin() > kLongest) {
      TerminateProcess(process.hProcess, 1);
      Check(false, "no window came");
    }
  }
  Start start = {};
  start.visible = sinceBegin();
  WaitForInputIdle(process.hProcess, kLongest);
  start.idle = sinceBegin();
  // All has been drawn by now.
  const HWND list = FindWindowExW(window, nullptr, subject.listClass, nullptr);
  const auto lines = SendMessageW(list, subject.countMessage, 0, 0);
  PROCESS_MEMORY_COUNTERS memory = {};
  GetProcessMemoryInfo(process.hProcess, &memory, sizeof memory);
  start.memory = static_cast<double>(memory.PagefileUsage) / 1024;
  PostMessageW(window, WM_CLOSE, 0, 0);
  const bool ended = WaitForSingleObject(process.hProcess, kLongest) == WAIT_OBJECT_0;
  DWORD code = 1;
  GetExitCodeProcess(process.hProcess, &code);
  if (!ended) TerminateProcess(process.hProcess, 1);
  Check(ended && code == 0, "the program did not end well");
  Check(lines == tasks + (tasks > 0 ? subject.groups : 0), "not all lines are there");
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return start;
}

double Median(const std::vector<Start>& starts, double Start::*figure) {
  std::vector<double> sorted;
  for (const Start& start : starts) sorted.push_back(start.*figure);
  std::sort(sorted.begin(), sorted.end());
  return (sorted[(sorted.size() - 1) / 2] + sorted[sorted.size() / 2]) / 2;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  const int rounds = count > 1 ? std::stoi(arguments[1]) : 20;
  std::wstring folder(MAX_PATH, L'\0');
  folder.resize(GetModuleFileNameW(nullptr, folder.data(), MAX_PATH));
  SetCurrentDirectoryW(folder.substr(0, folder.find_last_of(L'\\')).c_str());
  for (const int tasks : {0, 100}) {
    StoreTasks(tasks);
    std::vector<Start> starts[2];
    for (int round = 0; round <= rounds; ++round) {
      for (int i = 0; i < 2; ++i) {
        const Start start = Measure(kSubjects[i], tasks);
        if (round > 0) starts[i].push_back(start);  // the first fills the caches
      }
    }
    for (const auto& [what, figure] : {std::pair{"ms to the visible window", &Start::visible},
                                       {"ms until it waits for input", &Start::idle},
                                       {"KiB of private memory", &Start::memory}}) {
      const double least = Median(starts[0], figure);
      const double own = Median(starts[1], figure);
      std::printf("%d tasks, %s: %.0f, one list: %.0f (%.2f)\n", tasks, what, own, least,
                  own / least);
    }
  }
  RegDeleteTreeW(HKEY_CURRENT_USER, kStore);
  return 0;
}
