// Controls that hold the truth: text, visible, enabled, value, position. A host mirrors them into
// real windows or does not; forms and tests never see the difference.
//
// Positions and sizes are twips (1440 an inch, 15 a pixel at 96 dpi), relative to the container.
// A control belongs to the form that it was created with, as a member of it, and dies with it.
// The order of creation is the tab order.
//
// Two kinds of call: setters are the program's and raise no event unless said so; the calls under
// "user" are what a person does (the host and the tests call them): they return false and do
// nothing where a person could not do it, and raise the event otherwise.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace orvanto::forms {

class ControlVisitor;
class Form;
class MenuItem;
class OptionButton;

enum class Property {
  Text,
  Visible,
  Enabled,
  Bounds,
  Value,
  Items,
  LastItem,
  Nodes,
  Selection,
  Drawing
};

struct Bounds {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Bounds&) const = default;
};

class Control {
 public:
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual ~Control();

  // Tells the visitor which kind it is, by the one call that takes that kind.
  virtual void Accept(ControlVisitor& visitor) = 0;
  // Itself, if it is one; null otherwise.
  virtual OptionButton* AsOption() { return nullptr; }

  Form& Owner() const { return form_; }
  // The frame around it, or null when it stands on the form itself.
  const Control* Container() const { return container_; }

  // What a screen reader calls it where no label stands before it; to be set before the form loads.
  std::string spokenName;

  // That the right mouse button opens; null: none.
  MenuItem* contextMenu = nullptr;

  // Caption or contents, with '&' before the mnemonic where the kind has one.
  const std::string& Text() const { return text_; }
  void SetText(const std::string& text);

  // The control's own flag; a person sees it only when its containers are visible too.
  bool Visible() const { return visible_; }
  void SetVisible(bool visible);
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled);
  const Bounds& GetBounds() const { return bounds_; }
  void SetBounds(const Bounds& bounds);

  // Puts the keyboard here, at once or when the form is next in front. For one that a person could
  // use there.
  void SetFocus();

  bool ShownToUser() const;  // visible with all its containers, on a form that is visible
  bool Usable() const;       // shown and enabled with all its containers

 protected:
  Control(Form& form, const Control* container, std::string_view text, Bounds bounds);
  void Changed(Property property);
  void Raise(const std::function<void()>& event) const;

  std::string text_;

 private:
  Form& form_;
  const Control* container_;
  Bounds bounds_;
  bool visible_ = true;
  bool enabled_ = true;
};

}  // namespace orvanto::forms
