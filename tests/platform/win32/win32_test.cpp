// What the services and the forms of this host do beyond their contracts.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>
#include <ole2.h>

#include <set>
#include <stdexcept>
#include <thread>

#include "platform/win32/Handle.h"
#include "platform/win32/Services.h"
#include "platform/win32/Text.h"
#include "platform/win32/Win32Clipboard.h"
#include "platform/win32/forms/Dialogs.h"
#include "platform/win32/forms/Win32FormHost.h"
#include "tests/platform/host.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::win32 {
namespace {

using std::chrono::milliseconds;

// What other programs leave in the registry need not be as we would have written it.
TEST(Win32Registry, ReadsForeignStrings) {
  using namespace std::string_literals;
  // Type, what is stored exactly (without a NUL that is not here), what is read, with its NUL.
  const std::tuple<DWORD, std::wstring, std::string> cases[] = {
      {REG_SZ, L"te\u00e9\U0001F552\0"s, "te\u00e9\U0001F552\0"s},
      {REG_SZ, L"text", "text\0"s},
      {REG_SZ, L"", "\0"s},
      {REG_EXPAND_SZ, L"%TEMP%\\x\0"s, "%TEMP%\\x\0"s},
      {REG_SZ, std::wstring(9999, L'e') + L'\0', std::string(9999, 'e') + '\0'}};
  HostRegistry registry;
  Registry::Key key = 0;
  registry.CreateKey(RootKey::CurrentUser, "Software\\OrvantoTest", kQueryValue | kSetValue, key);
  for (const auto& [stored, bytes, read] : cases) {
    RegSetValueExW(reinterpret_cast<HKEY>(key), L"foreign", 0, stored,
                   reinterpret_cast<const BYTE*>(bytes.data()),
                   static_cast<DWORD>(bytes.size() * sizeof(wchar_t)));
    ValueType type{};
    std::uint32_t size = 0;
    registry.QueryValue(key, "foreign", type, nullptr, size);
    std::string text(size, '?');
    EXPECT_EQ(registry.QueryValue(key, "foreign", type, text.data(), size), kSuccess);
    EXPECT_TRUE(type == ValueType::String && text == read) << text;
  }
  registry.CloseKey(key);
}

// A message box handles messages by itself; what is due meanwhile has to come after it all the
// same. The box is answered from another thread, as a person would.
TEST(Win32MessageBoxes, HoldsTimers) {
  Win32Loop loop;
  const Win32FormHost forms(loop);
  Win32MessageBoxes boxes(loop, forms);
  int ticks = 0, shown = 0;
  loop.onTimerHeld = [&] { ++shown; };
  const auto timer = loop.NewTimer([&] { ++ticks; });
  timer->Start(milliseconds(10));
  const std::tuple<Buttons, WPARAM, Answer> cases[] = {
      {Buttons::OkCancel, IDCANCEL, Answer::Cancel},
      {Buttons::YesNo, IDYES, Answer::Yes},
      {Buttons::RetryCancel, IDCANCEL, Answer::Cancel}};
  for (const auto& [buttons, id, answer] : cases) {
    std::jthread person([id](const std::stop_token& stop) {
      while (!stop.stop_requested()) {
        std::this_thread::sleep_for(milliseconds(50));  // several periods of the timer
        const HWND box = FindWindowW(L"#32770", L"Held box");
        if (IsWindowVisible(box)) SendMessageW(box, WM_COMMAND, id, 0);
      }
    });
    EXPECT_EQ(boxes.Show("?", "Held box", buttons, BoxIcon::Question), answer);
    EXPECT_EQ(ticks, 0);
    EXPECT_GE(std::exchange(shown, 0), 1) << "the time goes on";
    loop.DoEvents();
    EXPECT_GE(std::exchange(ticks, 0), 1);
  }
}

std::wstring Long(const std::string& path) { return ToWide("\\\\?\\" + path); }

TEST(Win32Files, GoBeyondTheOldLimitOfPathsAndLeaveWhatIsLocked) {
  const TemporaryDirectory directory;
  const std::string top = directory / "", outer = top + std::string(150, 'f');
  const std::string deep = outer + '\\' + std::string(150, 'g');
  Win32Files files;
  for (const auto& folder : {outer, deep}) CreateDirectoryW(Long(folder).c_str(), nullptr);
  const std::pair<std::string, DWORD> made[] = {{deep + "\\plain", FILE_ATTRIBUTE_NORMAL},
                                                {deep + "\\hidden", FILE_ATTRIBUTE_HIDDEN},
                                                {deep + "\\system", FILE_ATTRIBUTE_SYSTEM}};
  for (const auto& [path, attributes] : made) {
    EXPECT_TRUE(files.Append(path, "x") && files.Exists(path));
    SetFileAttributesW(Long(path).c_str(), attributes);
  }
  const auto listed = [&](const std::string& folder) {
    std::set<std::string> names;
    files.ListFolder(folder, [&](const std::string& name, Files::EntryKind kind) {
      return names.insert(name + " *\\@"[static_cast<int>(kind)]).second;
    });
    return names;
  };
  EXPECT_EQ(listed(deep), (std::set<std::string>{"plain ", "hidden*", "system*"}));
  // Folders that each system links to.
  const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  EXPECT_TRUE(wine ? listed("Z:\\proc\\self").contains("cwd@")
                   : listed("C:\\").contains("Documents and Settings@"));
  EXPECT_EQ(files.Copy(deep + "\\plain", top + "a.txt"), "");

  // A file exists when its folder lists it.
  for (const std::string& none :
       {top + "a.txt.", top + "a.txt ", top + "a.*", top + "con", top + std::string("a.txt\0b", 7),
        std::string("c:"), std::string("c:\\"), std::string("con")}) {
    EXPECT_FALSE(files.Exists(none)) << none;
  }
  // What another writes can be read; what it has locked is left.
  constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  std::string got;
  for (const DWORD share : {DWORD{0}, kAll}) {
    const Handle<HANDLE, CloseHandle, -1> other(
        CreateFileW(Long(top + "a.txt").c_str(), share == 0 ? GENERIC_READ : GENERIC_WRITE, share,
                    nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(other);
    EXPECT_EQ(files.Read(top + "a.txt", got), share != 0);
    EXPECT_TRUE(share != 0 || !files.Copy(deep + "\\plain", top + "a.txt").empty());
    EXPECT_EQ(files.Remove(top + "a.txt").empty(), share != 0);
  }
  for (const auto& [path, attributes] : made) EXPECT_EQ(files.Remove(path), "");
  // Nobody else could.
  for (const auto& folder : {deep, outer}) EXPECT_TRUE(RemoveDirectoryW(Long(folder).c_str()));
}

// What the tests below look at.
struct Panel : forms::Form {
  explicit Panel(forms::FormHost& host) : Form(host, "Controls", {6000, 4200}) {
    check.SetValue(true);
    box.onDrop = [this](const std::string& text) { box.SetText(text); };
    box.takesKey = [](char32_t key) {
      if (key == 'x') throw std::runtime_error("from a key");
      return (key >= '0' && key <= '9') || key == 8;
    };
    list.SetItems({"first", "second", "third, " + std::string(99, 'x')});
    list.Select(0);
  }
  forms::TabStrip tabs{*this, nullptr, {120, 120, 5760, 3360}};
  forms::TabPage first{*this, tabs, "First page"}, second{*this, tabs, "Second page"};
  forms::CheckBox check{*this, &first, "&Checked", {180, 180, 2400, 270}};
  forms::TextBox box{*this, &first, {.password = true}, {1440, 585, 2100, 345}};
  forms::ListBox list{*this, &second, {180, 180, 5400, 1080}};
  forms::TreeView tree{*this, &second, {180, 2160, 2400, 660}};
};

class Win32Controls : public testing::Test {
 protected:
  Win32Controls() { panel_.Show(); }

  HWND Child(const wchar_t* windowClass) const {
    return FindWindowExW(host_.MainWindow(), nullptr, windowClass, nullptr);
  }
  bool Press(HWND window, WPARAM key) {
    MSG pressed = {window, WM_KEYDOWN, key, 1, 0, {}};
    return loop_.preTranslate(pressed);
  }

  Win32Loop loop_;
  Win32FormHost host_{loop_};
  Panel panel_{host_};
};

TEST_F(Win32Controls, ShowWhatTheFormHoldsAndTellWhatAPersonDoes) {
  const HWND check = Child(WC_BUTTONW);
  EXPECT_EQ(SendMessageW(check, BM_GETCHECK, 0, 0), BST_CHECKED);
  const HWND tabs = Child(WC_TABCONTROLW);
  const HWND list = Child(WC_LISTBOXW);
  TabCtrl_SetCurFocus(tabs, 1);
  EXPECT_TRUE(IsWindowVisible(list) && !IsWindowVisible(check));

  EXPECT_EQ(SendMessageW(list, LB_GETCURSEL, 0, 0), 0);
  const auto item = static_cast<int>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
  int entered = 0;
  panel_.list.onEnter = [&] { ++entered; };
  for (const UINT click : {WM_LBUTTONDOWN, WM_LBUTTONDBLCLK}) {
    SendMessageW(list, click, MK_LBUTTON, MAKELPARAM(5, item + item / 2));
    SendMessageW(list, WM_LBUTTONUP, 0, MAKELPARAM(5, item + item / 2));
    EXPECT_EQ(panel_.list.SelectedIndex(), 1);
  }
  SetFocus(list);
  Press(list, VK_RETURN);
  EXPECT_EQ(entered, 2);
  panel_.list.followsEnd = true;
  for (const bool scrolledBack : {false, true}) {
    if (scrolledBack) SendMessageW(list, LB_SETTOPINDEX, 2, 0);
    for (int i = 0; i < 20; ++i) panel_.list.Add("more");
    if (scrolledBack) panel_.list.SetItems({panel_.list.Items()});
    const LRESULT top = SendMessageW(list, LB_GETTOPINDEX, 0, 0);
    EXPECT_TRUE(scrolledBack ? top == 2 : top > 10) << top;
  }

  panel_.tabs.Select(0);
  EXPECT_EQ(TabCtrl_GetCurSel(tabs), 0);
  const HWND box = Child(WC_EDITW);
  for (const WPARAM key : {'7', 'x', '8', '9', ':', '\b'}) SendMessageW(box, WM_CHAR, key, 1);
  EXPECT_EQ(panel_.box.Text(), "78");
  EXPECT_NE(SendMessageW(box, EM_GETPASSWORDCHAR, 0, 0), 0);
}

TEST_F(Win32Controls, ALineTakesWhatIsDroppedAndItsEnterMayUnloadTheForm) {
  Win32Clipboard clipboard;
  ASSERT_TRUE(clipboard.SetText("http://caf\u00e9/"));
  EXPECT_EQ(clipboard.Text(), "http://caf\u00e9/");
  IDataObject* data = nullptr;
  ASSERT_EQ(OleGetClipboard(&data), S_OK);
  const HWND box = Child(WC_EDITW);
  // As the system hands over what another program drags here.
  auto* const target = static_cast<IDropTarget*>(GetPropW(box, L"OleDropTargetInterface"));
  DWORD effect = DROPEFFECT_COPY | DROPEFFECT_MOVE;
  target->DragEnter(data, MK_LBUTTON, {}, &effect);
  EXPECT_EQ(effect, DWORD{DROPEFFECT_COPY});
  target->Drop(data, MK_LBUTTON, {}, &effect);
  data->Release();
  EXPECT_EQ(panel_.box.Text(), "") << "not while the other program waits";
  loop_.DoEvents();
  EXPECT_EQ(WindowText(box), "http://caf\u00e9/");

  SetFocus(box);
  panel_.box.onEnter = [&] { panel_.Unload(); };
  // Not posted: the screen could take the focus away before it came.
  EXPECT_TRUE(Press(box, VK_RETURN));
  EXPECT_FALSE(panel_.Loaded());
}

TEST_F(Win32Controls, AFormStaysOnTheScreenWhateverIsDoneToIt) {
  forms::Form sized(host_, "Sized", {6000, 3000});
  sized.resizable = true;
  sized.helpPage = "page";
  sized.Show();
  const HWND window = FindWindowW(nullptr, L"Sized");
  const auto isOnScreen = [&] {
    RECT place, work, common;
    GetWindowRect(window, &place);
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    return IntersectRect(&common, &place, &work) && EqualRect(&common, &place);
  };
  sized.SetPlace({-30000, 100000, 90000, 3000});
  EXPECT_TRUE(isOnScreen());
  const forms::Bounds place = sized.Place();
  sized.SetPlace(place);
  EXPECT_EQ(sized.Place(), place);
  EXPECT_EQ(sized.ClientSize().width, place.width) << "which the screen has";
  int resized = 0;
  sized.onResize = [&] { ++resized; };
  SetWindowPos(window, nullptr, 5000, 10, 10, 10, SWP_NOZORDER);
  EXPECT_EQ(sized.ClientSize().width, 6000);
  EXPECT_EQ(resized, 1);
  EXPECT_FALSE(isOnScreen()) << "a person may";
  SendMessageW(window, WM_DISPLAYCHANGE, 32, MAKELPARAM(640, 480));
  EXPECT_TRUE(isOnScreen());
  ShowWindow(window, SW_MAXIMIZE);
  sized.Hide();
  sized.Show();
  EXPECT_TRUE(IsZoomed(window)) << "as it was left";
  std::string asked;
  host_.onHelp = [&](const std::string& page) { asked = page; };
  SendMessageW(window, WM_HELP, 0, 0);
  EXPECT_EQ(asked, "page");
}

// Who closes a group that the selected task is in has the group selected then.
TEST_F(Win32Controls, AClosedGroupTakesTheSelection) {
  panel_.tabs.Select(1);
  const auto group = panel_.tree.Add({{}, "", "group", "", ""});
  const auto task = panel_.tree.Add({group, "", "task", "", ""});
  panel_.tree.EnsureVisible(task);
  panel_.tree.ClickNode(task);
  int clicks = 0;
  panel_.tree.onNodeClick = [&] { ++clicks; };
  const HWND window = Child(WC_TREEVIEWW);
  TVHITTESTINFO hit = {};
  hit.pt = {1, 5};
  while (hit.pt.x < 100 && (TreeView_HitTest(window, &hit), hit.flags != TVHT_ONITEMBUTTON)) {
    ++hit.pt.x;
  }
  const LPARAM place = MAKELPARAM(hit.pt.x, hit.pt.y);
  PostMessageW(window, WM_LBUTTONUP, 0, place);
  SendMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, place);
  EXPECT_FALSE(panel_.tree.Nodes()[group].expanded);
  EXPECT_EQ(TreeView_GetSelection(window), TreeView_GetRoot(window));
  EXPECT_EQ(panel_.tree.Selected(), group);
  EXPECT_EQ(clicks, 1);
}

}  // namespace
}  // namespace orvanto::win32
