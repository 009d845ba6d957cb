// What needs no host: forms, events, texts.
#include "platform/forms/forms.h"

#include <gtest/gtest.h>

#include "platform/Event.h"
#include "platform/text/Case.h"
#include "platform/text/PrintableLine.h"

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
  form.list.onEnter = form.tree.onNodeClick = form.item.onClick = count;
  form.box.onDrop = [&](const std::string&) { ++events; };
  form.combo.SetItems({"a"});
  form.list.SetItems({"a", "b"});
  form.tree.Add({});
  form.check.SetValue(true);
  form.elsewhere.SetValue(true);
  form.other.SetValue(true);
  form.list.Select(0);
  EXPECT_FALSE(form.second.Visible());
  form.tabs.Select(1);
  EXPECT_FALSE(form.first.Visible());
  form.tabs.Select(0);
  EXPECT_EQ(events, 0) << "the program's own changes raise nothing";
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
  EXPECT_FALSE(form.item.Choose());
  for (const auto& [control, act] : acts) {
    EXPECT_FALSE(act() || control->ShownToUser()) << "the form is hidden";
    form.Show();
    for (Control* each : {control, static_cast<Control*>(&form.frame)}) {
      each->SetVisible(false);
      EXPECT_FALSE(act() || control->ShownToUser());
      each->SetVisible(true);
      each->SetEnabled(false);
      EXPECT_FALSE(act() || !control->ShownToUser());
      each->SetEnabled(true);
    }
    EXPECT_TRUE(act());
    EXPECT_EQ(std::exchange(events, 0), 1);
    form.Hide();
  }
  form.Show();
  EXPECT_FALSE(form.check.Value() || form.other.Value());
  EXPECT_TRUE(form.option.Value() && form.elsewhere.Value());
  form.tabs.Select(0);
  EXPECT_FALSE(form.list.Choose(2) || form.tabs.Choose(2) || form.readOnly.Type("x"));
  EXPECT_TRUE(form.item.Choose());
  form.menu.SetEnabled(false);
  EXPECT_FALSE(form.item.Choose());
}

TEST(Event, TellsWhoListensInOrderAsLongAsTheyDo) {
  Event<> event;
  std::string heard;
  const auto listener = [&](char name) {
    return event.Subscribe([&heard, name] { heard += name; });
  };
  Subscription one = listener('1'), two, three, late;
  // Ends the next, and itself while it is being called, and subscribes another.
  two = event.Subscribe([&] {
    heard += '2';
    three.reset();
    late = listener('L');
    two.reset();
    event.Raise();
  });
  three = listener('3');
  event.Raise();
  one.reset();
  event.Raise();
  EXPECT_EQ(heard, "121LL");
}

TEST(Text, APrintableLineHoldsNothingThatATerminalObeys) {
  const std::pair<std::string, std::string> cases[] = {
      {"Grüße ~ \u00a0Ж € \U0001D11E", "Grüße ~ \u00a0Ж € \U0001D11E"},
      {std::string("\0\x07\t\r\n\x1B[2J\x1F\x7F", 11), "??????[2J??"},
      {"\xC2\x80\xC2\x9B\xC2\x9F", "???"},
      {"\xC3(a\xE2\x82", "?(a??"},                         // cut off
      {"\xC0\x9B\xE0\x80\x9B \xED\xA0\x80", "????? ???"},  // overlong, a surrogate
      {"\xF4\x90\x80\x80 \xE0\x90\x80", "???? ???"}};
  for (const auto& [text, line] : cases) EXPECT_EQ(PrintableLine(text), line);
}

TEST(Text, FoldsThePairsOfLatinGreekAndCyrillic) {
  const std::pair<const char*, const char*> cases[] = {
      {"ABCXYZ_09[", "abcxyz_09["}, {"ÀÉÖ×ØÞß", "àéö×øþß"},     {"ĀĲĹŇŊŶŸŹŽǍǛ", "āĳĺňŋŷÿźžǎǜ"},
      {"ΆΈΊΌΎΏΑΡΣΫ", "άέίόύώαρσϋ"}, {"ЀЏАЯѢҐӀӁӐ", "ѐџаяѣґӏӂӑ"}, {"\xC3", "\xC3"},
      {"\xFF\x80Q", "\xFF\x80q"}};
  for (const auto& [upper, lower] : cases) {
    EXPECT_EQ(FoldCase(upper), lower);
    EXPECT_EQ(FoldCase(lower), lower);
  }
}

}  // namespace
}  // namespace orvanto::forms
