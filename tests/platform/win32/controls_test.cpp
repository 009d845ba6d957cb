#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>
#include <ole2.h>

#include <stdexcept>
#include <tuple>
#include <utility>

#include "platform/win32/Win32Clipboard.h"
#include "platform/win32/forms/Win32FormHost.h"

namespace orvanto::win32 {
namespace {

using forms::PictureBox;

// What the tests below look at.
struct Panel : forms::Form {
  explicit Panel(forms::FormHost& host) : Form(host, "Controls", {6000, 4200}) {
    check.SetValue(true);
    option.SetValue(true);
    secret.SetText("secret");
    box.onDrop = [this](const std::string& text) { box.SetText(text); };
    list.SetItems({"first", "second", "third, " + std::string(99, 'x')});
    list.Select(0);
    picture.AddBar({0, 0, 2000, 300}, 0x3399FF);
    picture.AddText("37%", {0, 0, 3600, 300}, 0x000000, PictureBox::Align::Centre);
    picture.AddText("right", {60, 300, 3480, 300}, 0x008000, PictureBox::Align::Right);
    progress.AddText("48%", {0, 0, 1680, 660}, 0x000000, PictureBox::Align::Centre);
    progress.AddInvertingBar({0, 0, 810, 660}, 0x000080);
    digits.takesKey = [](char32_t key) {
      if (key == 'x') throw std::runtime_error("from a key");
      return (key >= '0' && key <= '9') || key == 8;
    };
    defaultButton = &save;
  }
  forms::TabStrip tabs{*this, nullptr, {120, 120, 5760, 3360}};
  forms::TabPage first{*this, tabs, "First page"}, second{*this, tabs, "Second page"};
  forms::CheckBox check{*this, &first, "&Checked", {180, 180, 2400, 270}};
  forms::TextBox box{*this, &first, {}, {1440, 585, 2100, 345}};
  forms::TextBox secret{*this, &first, {.password = true}, {1440, 1050, 2100, 345}};
  forms::TextBox digits{*this, &first, {}, {3600, 1050, 1980, 345}};
  forms::Frame frame{*this, &first, "Frame", {180, 1560, 5400, 1260}};
  forms::OptionButton option{*this, &frame, "&One", {180, 300, 1200, 270}};
  forms::ListBox list{*this, &second, {180, 180, 5400, 1080}};
  forms::PictureBox picture{*this, &second, {180, 1380, 3600, 660}};
  forms::PictureBox progress{*this, &second, {3900, 1380, 1680, 660}};
  forms::TreeView tree{*this, &second, {180, 2160, 2400, 660}};
  forms::TextBox log{*this, &second, {.multiLine = true, .readOnly = true}, {}};
  forms::Button save{*this, nullptr, "&Save", {4590, 3660, 1290, 375}};
};

class Win32Controls : public testing::Test {
 protected:
  Win32Controls() { panel_.Show(); }

  HWND Child(const wchar_t* windowClass, const wchar_t* text = nullptr) const {
    return FindWindowExW(host_.MainWindow(), nullptr, windowClass, text);
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
  const HWND check = Child(WC_BUTTONW, L"&Checked");
  EXPECT_EQ(SendMessageW(check, BM_GETCHECK, 0, 0), BST_CHECKED);
  const HWND tabs = Child(WC_TABCONTROLW);
  const HWND list = Child(WC_LISTBOXW);
  SetFocus(tabs);
  Press(tabs, VK_TAB);
  EXPECT_EQ(GetFocus(), check);
  EXPECT_FALSE(IsWindowVisible(list));
  TabCtrl_SetCurFocus(tabs, 1);
  EXPECT_EQ(panel_.tabs.Selected(), 1);
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
  panel_.list.Add("last");
  EXPECT_EQ(SendMessageW(list, LB_GETCOUNT, 0, 0), 4);
  panel_.list.followsEnd = true;
  for (const bool scrolledBack : {false, true}) {
    if (scrolledBack) SendMessageW(list, LB_SETTOPINDEX, 2, 0);
    for (int i = 0; i < 20; ++i) panel_.list.Add("more");
    if (scrolledBack) panel_.list.SetItems({panel_.list.Items()});
    const LRESULT top = SendMessageW(list, LB_GETTOPINDEX, 0, 0);
    EXPECT_TRUE(scrolledBack ? top == 2 : top > 10) << top;
  }

  const std::tuple<const wchar_t*, int, COLORREF> pixels[] = {
      {L"37% right", 5, RGB(0x33, 0x99, 0xFF)},
      {L"48%", 5, RGB(0, 0, 0x80)},
      {L"48%", 90, RGB(0xFF, 0xFF, 0xFF)}};
  for (const auto& [text, x, colour] : pixels) {
    const HWND picture = Child(WC_STATICW, text);
    UpdateWindow(picture);
    const HDC shown = GetDC(picture);
    EXPECT_EQ(GetPixel(shown, x, 5), colour) << x;
    ReleaseDC(picture, shown);
  }

  panel_.tabs.Select(0);
  EXPECT_EQ(TabCtrl_GetCurSel(tabs), 0);
  const HWND digits = GetNextDlgTabItem(host_.MainWindow(), Child(WC_BUTTONW, L"&One"), TRUE);
  for (const WPARAM key : {'7', 'x', '8', '9', ':', '\b'}) SendMessageW(digits, WM_CHAR, key, 1);
  EXPECT_EQ(panel_.digits.Text(), "78");
  const HWND secret = GetNextDlgTabItem(host_.MainWindow(), digits, TRUE);
  EXPECT_EQ(WindowText(secret), "secret");
  // A client of the remote control may type a NUL.
  panel_.log.SetText(std::string("a\0\u00e4", 4));
  HWND last = nullptr;
  while (const HWND next = FindWindowExW(host_.MainWindow(), last, WC_EDITW, nullptr)) last = next;
  EXPECT_EQ(WindowText(last), "a \u00e4");
  EXPECT_NE(SendMessageW(secret, EM_GETPASSWORDCHAR, 0, 0), 0);
}

TEST_F(Win32Controls, OfAnotherFormComeWhenItIsShown) {
  Panel other(host_);
  other.Load();
  other.digits.SetText("7");
  other.digits.SetFocus();
  const HWND first = FindWindowW(L"OrvantoForm", nullptr);
  EXPECT_EQ(FindWindowExW(nullptr, first, L"OrvantoForm", nullptr), nullptr);
  other.Show();
  EXPECT_EQ(WindowText(GetFocus()), "7");
}

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

// A person who drags the text on the clipboard onto a window, with OLE and the real mouse. False
// when the window does not take it.
bool DropClipboardOn(HWND window) {
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

TEST_F(Win32Controls, TakeTextThatIsDropped) {
  Win32Clipboard clipboard;
  ASSERT_TRUE(clipboard.SetText("http://caf\u00e9/"));
  EXPECT_EQ(clipboard.Text(), "http://caf\u00e9/");
  const HWND box = GetNextDlgTabItem(host_.MainWindow(), Child(WC_BUTTONW, L"&Checked"), FALSE);
  for (const bool open : {false, true}) {  // a message box disables the form
    EnableWindow(host_.MainWindow(), open);
    EXPECT_EQ(DropClipboardOn(box), open);
    EXPECT_EQ(panel_.box.Text(), "");  // not while the other program waits
    loop_.DoEvents();
    EXPECT_EQ(panel_.box.Text(), open ? "http://caf\u00e9/" : "");
  }
}

// Enter in a line that acts on it itself; in any other it is the default button's.
TEST_F(Win32Controls, EnterBelongsToTheLineThatTakesIt) {
  std::string did;
  panel_.save.onClick = [&] { did += "pressed "; };
  const HWND box = GetNextDlgTabItem(host_.MainWindow(), Child(WC_BUTTONW, L"&Checked"), FALSE);
  SetFocus(box);
  // Not posted: the screen could take the focus away before it came.
  EXPECT_TRUE(Press(box, VK_RETURN));
  panel_.box.onEnter = [&] { did += "entered "; };
  EXPECT_TRUE(Press(box, VK_RETURN));
  EXPECT_EQ(did, "pressed entered ");
  panel_.box.onEnter = [&] { panel_.Unload(); };  // the line may unload its form
  Press(box, VK_RETURN);
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
