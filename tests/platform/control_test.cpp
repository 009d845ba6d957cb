#include <gtest/gtest.h>

#include "platform/forms/forms.h"

namespace orvanto::forms {
namespace {

TEST(Controls, APersonReachesWhatIsShownAndEnabledWithAllAroundIt) {
  HeadlessFormHost host;
  struct : Form {
    using Form::Form;
    Frame outer{*this, nullptr, "", {}};
    Frame inner{*this, &outer, "", {}};
    Button button{*this, &inner, "", {}};
    TextBox readOnly{*this, &inner, {.readOnly = true}, {}};
    OptionButton one{*this, &inner, "", {}};
    OptionButton other{*this, &inner, "", {}};
    OptionButton elsewhere{*this, &outer, "", {}};
    MenuItem menu{*this, "Menu"};
    MenuItem item{menu, "Item"};
  } form{host, "Form", {}};
  EXPECT_FALSE(form.button.Press() || form.item.Choose() || form.button.ShownToUser());
  form.Show();
  EXPECT_FALSE(form.readOnly.Type("x"));
  for (Control* control : std::initializer_list<Control*>{&form.outer, &form.inner, &form.button}) {
    control->SetEnabled(false);
    EXPECT_FALSE(form.button.Press());
    EXPECT_TRUE(form.button.ShownToUser());
    control->SetEnabled(true);
    control->SetVisible(false);
    EXPECT_FALSE(form.button.Press() || form.button.ShownToUser());
    control->SetVisible(true);
    EXPECT_TRUE(form.button.Press());
  }
  for (OptionButton* option : {&form.elsewhere, &form.one, &form.other}) {
    EXPECT_TRUE(option->Choose());
  }
  EXPECT_TRUE(form.elsewhere.Value() && !form.one.Value() && form.other.Value());
  EXPECT_TRUE(form.item.Choose());
  form.menu.SetEnabled(false);
  EXPECT_FALSE(form.item.Choose());
}

}  // namespace
}  // namespace orvanto::forms
