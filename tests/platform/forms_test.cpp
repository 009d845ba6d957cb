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

}  // namespace
}  // namespace orvanto::forms
