#include "platform/forms/forms.h"

#include <gtest/gtest.h>

namespace orvanto::forms {
namespace {

// A host whose forms have the keyboard, or do not; counts how often one was brought to the front.
class KeyboardHost : public HeadlessFormHost {
 public:
  std::unique_ptr<FormPeer> Attach(Form&) override { return std::make_unique<Peer>(*this); }
  bool hasKeyboard = false;
  int activations = 0;

 private:
  struct Peer : FormPeer {
    explicit Peer(KeyboardHost& owner) : host(owner) {}
    void FormChanged(FormProperty property) override {
      host.activations += property == FormProperty::Active;
    }
    void ControlChanged(const Control&, Property) override {}
    void MenuChanged(const MenuItem&) override {}
    bool HasKeyboard() const override { return host.hasKeyboard; }
    KeyboardHost& host;
  };
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
  TabStrip tabs{*this, nullptr, {0, 0, 6000, 3000}};
  TabPage first{*this, tabs, "First"}, second{*this, tabs, "Second"};
  Button button{*this, &first, "", {}};
  CheckBox check{*this, &first, "", {}};
  OptionButton option{*this, &first, "", {}}, other{*this, &first, "", {}};
  TextBox box{*this, &first, {}, {}};
  ComboBox combo{*this, &first, {.editable = true}, {}};
  UpDown upDown{*this, &first, box, 1, 31, {}};
  ListBox list{*this, &first, {}};
  TreeView tree{*this, &first, {}};
};

TEST(Forms, APersonCanActOnlyOnWhatIsShownAndEnabled) {
  HeadlessFormHost host;
  Acts form(host, "Form", {6000, 3000});
  int events = 0;
  const auto count = [&] { ++events; };
  form.tabs.onChange = form.button.onClick = form.check.onClick = form.option.onClick = count;
  form.box.onChange = form.box.onEnter = form.combo.onChange = form.list.onChange = count;
  form.tree.onNodeClick = count;
  form.box.onDrop = [&](const std::string&) { ++events; };
  form.combo.SetItems({"a"});
  form.list.SetItems({"a"});
  form.list.Add("b");
  form.tree.Add({});
  form.check.SetValue(true);
  form.option.SetValue(true);
  form.list.Select(0);
  form.tabs.Select(1);
  form.tabs.Select(0);
  EXPECT_EQ(events, 0);  // the program's own changes raise nothing
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
      {&form.tree, [&] { return form.tree.ClickNode(0); }},
      {&form.tabs, [&] { return form.tabs.Choose(1); }}};
  for (const auto& [control, act] : acts) {
    form.Hide();
    EXPECT_FALSE(act());
    form.Show();
    control->SetVisible(false);
    EXPECT_FALSE(act());
    control->SetVisible(true);
    control->SetEnabled(false);
    EXPECT_FALSE(act());
    control->SetEnabled(true);
    form.tabs.Select(1);  // the other page
    if (control != &form.tabs) EXPECT_FALSE(act());
    form.tabs.Select(0);
    EXPECT_EQ(events, 0);
    EXPECT_TRUE(act());
    EXPECT_EQ(std::exchange(events, 0), 1);
  }
  EXPECT_FALSE(form.check.Value());
  EXPECT_EQ(form.list.SelectedIndex(), 1);
  EXPECT_EQ(form.tabs.Selected(), 1);
  EXPECT_FALSE(form.list.Choose(2) || form.tabs.Choose(2));
}

}  // namespace
}  // namespace orvanto::forms
