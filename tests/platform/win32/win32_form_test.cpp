#include <gtest/gtest.h>

#include "platform/win32/Win32FormHost.h"

namespace orvanto::win32 {
namespace {

// Enter in a line that acts on it itself; in any other it is the default button's.
TEST(Win32Form, EnterBelongsToTheLineThatTakesIt) {
  Win32Loop loop;
  Win32FormHost host(loop);
  struct : forms::Form {
    using Form::Form;
    forms::TextBox acting{*this, nullptr, {}, {0, 0, 900, 300}};
    forms::TextBox plain{*this, nullptr, {}, {0, 600, 900, 300}};
    forms::Button button{*this, nullptr, "OK", {0, 1200, 900, 300}};
  } form{host, "Enter", {3000, 1800}};
  int entered = 0;
  int pressed = 0;
  form.defaultButton = &form.button;
  form.acting.onEnter = [&] { ++entered; };
  form.button.onClick = [&] { ++pressed; };
  form.Show();
  const auto pressEnterIn = [&](HWND edit) {
    SetFocus(edit);
    // Not posted: the screen could take the focus away before it came.
    MSG key = {edit, WM_KEYDOWN, VK_RETURN, 1, 0, {}};
    EXPECT_TRUE(loop.preTranslate(key));
  };
  const HWND acting = FindWindowExW(host.MainWindow(), nullptr, WC_EDITW, nullptr);
  pressEnterIn(acting);
  EXPECT_EQ(entered, 1);
  EXPECT_EQ(pressed, 0);
  pressEnterIn(FindWindowExW(host.MainWindow(), acting, WC_EDITW, nullptr));
  EXPECT_EQ(entered, 1);
  EXPECT_EQ(pressed, 1);

  // The line may unload its form.
  form.acting.onEnter = [&] { form.Unload(); };
  pressEnterIn(acting);
  EXPECT_FALSE(form.Loaded());
}

}  // namespace
}  // namespace orvanto::win32
