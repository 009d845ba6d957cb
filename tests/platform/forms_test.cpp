#include "platform/forms/forms.h"

#include <gtest/gtest.h>

namespace orvanto::forms {
namespace {

// A host whose forms have the keyboard, or do not; counts how often one was brought to the front.
struct KeyboardHost : HeadlessFormHost {
  struct Peer : FormPeer {
    explicit Peer(KeyboardHost& owner) : host(owner) {}
    void FormChanged(FormProperty property) override {
      host.activations += property == FormProperty::Active;
    }
    void ControlChanged(const Control&, Property) override {}
    void MenuChanged(const MenuItem&) override {}
    bool HasKeyboard() const override { return host.hasKeyboard; }
    Bounds Place() const override { return {}; }
    KeyboardHost& host;
  };
  std::unique_ptr<FormPeer> Attach(Form&) override { return std::make_unique<Peer>(*this); }
  bool hasKeyboard = false;
  int activations = 0;
};

TEST(Forms, TheKeyboardGoesToTheFormBehindAndIsNotTakenFromAnotherProgram) {
  KeyboardHost host;
  Form behind(host, "Behind", {});
  Form front(host, "Front", {});
  front.formBehind = &behind;
  for (const bool shown : {false, true}) {
    if (shown) behind.Show();
    for (const bool hasKeyboard : {false, true}) {
      front.Show();
      host.hasKeyboard = hasKeyboard;
      front.Unload();
      EXPECT_EQ(host.activations, shown && hasKeyboard ? 1 : 0);
    }
  }
}

// A form with a control of each kind that a person can act on.
struct Acts : Form {
  using Form::Form;
  Frame frame{*this, nullptr, "", {}};
  TabStrip tabs{*this, &frame, {0, 0, 6000, 3000}};
  TabPage first{*this, tabs, "First"}, second{*this, tabs, "Second"};
  Button button{*this, &first, "", {}};
  CheckBox check{*this, &first, "", {}};
  OptionButton option{*this, &first, "", {}}, other{*this, &first, "", {}};
  OptionButton elsewhere{*this, &frame, "", {}};
  TextBox box{*this, &first, {}, {}}, readOnly{*this, &first, {.readOnly = true}, {}};
  ComboBox combo{*this, &first, {.editable = true}, {}};
  UpDown upDown{*this, &first, box, 1, 31, {}};
  ListBox list{*this, &first, {}};
  TreeView tree{*this, &first, {}};
  MenuItem menu{*this, "Menu"}, item{menu, "Item"};
};

TEST(Forms, APersonCanActOnlyOnWhatIsShownAndEnabledWithAllAroundIt) {
  HeadlessFormHost host;
  Acts form(host, "Form", {6000, 3000});
  int events = 0;
  const auto count = [&] { ++events; };
  form.tabs.onChange = form.button.onClick = form.check.onClick = form.option.onClick = count;
  form.box.onChange = form.box.onEnter = form.combo.onChange = form.list.onChange = count;
  form.list.onEnter = count;
  form.tree.onNodeClick = form.item.onClick = count;
  form.box.onDrop = [&](const std::string&) { ++events; };
  form.combo.SetItems({"a"});
  form.list.SetItems({"a"});
  form.list.Add("b");
  form.tree.Add({});
  form.check.SetValue(true);
  form.elsewhere.SetValue(true);
  form.other.SetValue(true);
  form.list.Select(0);
  EXPECT_FALSE(form.second.Visible());
  form.tabs.Select(1);
  form.tabs.Select(0);
  EXPECT_EQ(events, 0);  // the program's own changes raise nothing
  EXPECT_FALSE(form.item.Choose());
  const std::pair<Control*, std::function<bool()>> acts[] = {
      {&form.button, [&] { return form.button.Press(); }},
      {&form.check, [&] { return form.check.Press(); }},
      {&form.option, [&] { return form.option.Choose(); }},
      {&form.box, [&] { return form.box.Type("1"); }},
      {&form.box, [&] { return form.box.PressEnter(); }},
      {&form.box, [&] { return form.box.Drop("text"); }},
      {&form.combo, [&] { return form.combo.Choose(0); }},
      {&form.combo, [&] { return form.combo.Type("1"); }},
      {&form.upDown, [&] { return form.upDown.Step(1); }},
      {&form.list, [&] { return form.list.Choose(1); }},
      {&form.list, [&] { return form.list.PressEnter(); }},
      {&form.tree, [&] { return form.tree.ClickNode(0); }},
      {&form.tabs, [&] { return form.tabs.Choose(1); }}};
  for (const auto& [control, act] : acts) {
    form.Hide();
    EXPECT_FALSE(act() || control->ShownToUser());
    form.Show();
    for (Control* each : {control, static_cast<Control*>(&form.frame)}) {
      each->SetVisible(false);
      EXPECT_FALSE(act() || control->ShownToUser());
      each->SetVisible(true);
      each->SetEnabled(false);
      EXPECT_FALSE(act() || !control->ShownToUser());
      each->SetEnabled(true);
    }
    form.tabs.Select(1);  // the other page
    EXPECT_TRUE(control == &form.tabs || !act());
    form.tabs.Select(0);
    EXPECT_EQ(events, 0);
    EXPECT_TRUE(act());
    EXPECT_EQ(std::exchange(events, 0), 1);
  }
  EXPECT_FALSE(form.check.Value() || form.other.Value());
  EXPECT_TRUE(form.option.Value() && form.elsewhere.Value());
  EXPECT_EQ(form.list.SelectedIndex(), 1);
  EXPECT_EQ(form.tabs.Selected(), 1);
  form.tabs.Select(0);
  EXPECT_FALSE(form.list.Choose(2) || form.tabs.Choose(2) || form.readOnly.Type("x"));
  EXPECT_TRUE(form.item.Choose());
  form.menu.SetEnabled(false);
  EXPECT_FALSE(form.item.Choose());
}

}  // namespace
}  // namespace orvanto::forms
