#include "platform/forms/forms.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <utility>

namespace orvanto::forms {

Control::Control(Form& form, const Control* container, Kind kind, std::string text, Bounds bounds)
    : text_(std::move(text)), form_(form), container_(container), kind_(kind), bounds_(bounds) {
  form.controls_.push_back(this);
}

void Control::Changed(Property property) {
  if (form_.peer_) form_.peer_->ControlChanged(*this, property);
}

void Control::Raise(const std::function<void()>& event) const {
  // A copy: the handler may assign the event anew.
  if (auto handler = event) handler();
}

void Control::SetText(const std::string& text) {
  if (text == text_) return;
  text_ = text;
  Changed(Property::Text);
}

void Control::SetVisible(bool visible) {
  if (visible == visible_) return;
  visible_ = visible;
  Changed(Property::Visible);
}

void Control::SetEnabled(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  Changed(Property::Enabled);
}

void Control::SetBounds(const Bounds& bounds) {
  if (bounds == bounds_) return;
  bounds_ = bounds;
  Changed(Property::Bounds);
}

void Control::SetHeight(int height) {
  Bounds bounds = bounds_;
  bounds.height = height;
  SetBounds(bounds);
}

void Control::SetFocus() {
  form_.focus_ = this;
  form_.Changed(FormProperty::Focus);
}

bool Control::ShownToUser() const {
  for (const Control* control = this; control != nullptr; control = control->container_) {
    if (!control->visible_) return false;
  }
  return form_.Visible();
}

bool Control::Usable() const {
  for (const Control* control = this; control != nullptr; control = control->container_) {
    if (!control->enabled_) return false;
  }
  return ShownToUser();
}

bool Button::Press() {
  if (!Usable()) return false;
  Raise(onClick);
  return true;
}

void OptionButton::SetValue(bool value) {
  if (value == value_) return;
  value_ = value;
  Changed(Property::Value);
  if (!value) return;
  for (Control* control : Owner().controls_) {
    if (control == this || control->GetKind() != Kind::OptionButton) continue;
    if (control->Container() == Container()) static_cast<OptionButton*>(control)->SetValue(false);
  }
}

bool OptionButton::Choose() {
  if (!Usable()) return false;
  SetValue(true);
  Raise(onClick);
  return true;
}

bool TextBox::Type(const std::string& text) {
  if (!Usable() || style_.readOnly) return false;
  SetText(text);
  Raise(onChange);
  return true;
}

void ComboBox::SetItems(std::vector<std::string> items) {
  items_ = std::move(items);
  selected_ = kNone;
  text_.clear();
  Changed(Property::Items);
}

int ComboBox::SelectedIndex() const {
  if (!style_.editable) return selected_;
  const auto item = std::find(items_.begin(), items_.end(), text_);
  return item == items_.end() ? kNone : static_cast<int>(item - items_.begin());
}

void ComboBox::Select(int index) {
  const bool inside = index >= 0 && index < static_cast<int>(items_.size());
  selected_ = inside ? index : kNone;
  text_ = inside ? items_[static_cast<std::size_t>(index)] : "";
  Changed(Property::Selection);
}

bool ComboBox::Choose(int index) {
  if (!Usable() || index < 0 || index >= static_cast<int>(items_.size())) return false;
  Select(index);
  Raise(onChange);
  return true;
}

bool ComboBox::Type(const std::string& text) {
  if (!Usable() || !style_.editable) return false;
  SetText(text);
  Raise(onChange);
  return true;
}

bool UpDown::Step(int by) {
  if (!Usable()) return false;
  int number = least_;
  const std::string& text = buddy_.Text();
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    number = least_ - by;
  }
  return buddy_.Type(std::to_string(std::clamp(number + by, least_, most_)));
}

bool TextBox::PressEnter() {
  if (!Usable() || !onEnter) return false;
  Raise(onEnter);
  return true;
}

void Lamp::SetLit(bool lit) {
  const std::uint32_t colour = lit ? kLit : kDark;
  if (colour == colour_) return;
  colour_ = colour;
  Changed(Property::Value);
}

void TreeView::Clear() {
  nodes_.clear();
  selected_.reset();
  Changed(Property::Nodes);
}

TreeView::NodeId TreeView::Add(Node node) {
  nodes_.push_back(std::move(node));
  Changed(Property::Nodes);
  return nodes_.size() - 1;
}

void TreeView::EnsureVisible(NodeId node) {
  for (auto above = nodes_.at(node).parent; above; above = nodes_.at(*above).parent) {
    nodes_.at(*above).expanded = true;
  }
  Changed(Property::Nodes);
}

void TreeView::BeginUpdate() { updating_ = true; }

void TreeView::EndUpdate() {
  updating_ = false;
  Changed(Property::Nodes);
}

void TreeView::Select(std::optional<NodeId> node) {
  if (node == selected_) return;
  selected_ = node;
  Changed(Property::Selection);
}

bool TreeView::ClickNode(NodeId node) {
  if (!Usable() || node >= nodes_.size()) return false;
  Select(node);
  Raise(onNodeClick);
  return true;
}

bool TreeView::SetExpanded(NodeId node, bool expanded) {
  if (!Usable() || node >= nodes_.size()) return false;
  nodes_[node].expanded = expanded;
  return true;
}

MenuItem::MenuItem(Form& form, std::string caption) : form_(form), caption_(std::move(caption)) {
  form.menuBar_.push_back(this);
}

MenuItem::MenuItem(MenuItem& parent, std::string caption)
    : form_(parent.form_), parent_(&parent), caption_(std::move(caption)) {
  parent.items_.push_back(this);
}

void MenuItem::SetEnabled(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  if (form_.peer_) form_.peer_->MenuChanged(*this);
}

void MenuItem::SetChecked(bool checked) {
  if (checked == checked_) return;
  checked_ = checked;
  if (form_.peer_) form_.peer_->MenuChanged(*this);
}

bool MenuItem::Choose() {
  if (!form_.Visible() || !items_.empty() || IsSeparator()) return false;
  for (const MenuItem* item = this; item != nullptr; item = item->parent_) {
    if (!item->enabled_) return false;
  }
  if (auto handler = onClick) handler();
  return true;
}

Form::Form(FormHost& host, std::string caption, Size clientSize)
    : host_(host), caption_(std::move(caption)), clientSize_(clientSize) {}

Form::~Form() {
  if (peer_) host_.Detach(std::move(peer_));
}

void Form::Changed(FormProperty property) {
  if (peer_) peer_->FormChanged(property);
}

void Form::SetCaption(const std::string& caption) {
  if (caption == caption_) return;
  caption_ = caption;
  Changed(FormProperty::Caption);
}

void Form::SetClientSize(Size size) {
  clientSize_ = size;
  Changed(FormProperty::Size);
}

void Form::CentreOnScreen() {
  const Size screen = host_.ScreenSize();
  const Size frame = host_.FrameSize(*this);
  left_ = (screen.width - clientSize_.width - frame.width) / 2;
  top_ = (screen.height - clientSize_.height - frame.height) / 2;
  Changed(FormProperty::Position);
}

void Form::SetTopMost(bool topMost) {
  topMost_ = topMost;
  Changed(FormProperty::TopMost);
}

void Form::Load() {
  if (loaded_) return;
  loaded_ = true;
  focus_ = nullptr;
  peer_ = host_.Attach(*this);
}

void Form::Show() {
  Load();
  if (visible_) return;
  visible_ = true;
  Changed(FormProperty::Visible);
}

void Form::Activate() {
  Show();
  Changed(FormProperty::Active);
}

void Form::Hide() {
  if (!visible_) return;
  // First: in between the system would choose a window, maybe of another program.
  if (formBehind && formBehind->Visible() && peer_ && peer_->HasKeyboard()) formBehind->Activate();
  visible_ = false;
  Changed(FormProperty::Visible);
}

void Form::Unload() {
  if (!loaded_) return;
  loaded_ = false;
  Hide();
  if (auto handler = onUnload) handler();
  if (peer_) host_.Detach(std::move(peer_));
}

bool Form::Close() {
  if (!visible_) return false;
  if (auto handler = onClose) {
    handler();
  } else {
    Unload();
  }
  return true;
}

Size HeadlessFormHost::TextSize(const std::string& text, int width) const {
  constexpr int kCharacter = 90;
  constexpr int kLine = 225;
  Size size;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const int length = static_cast<int>(line.size()) * kCharacter;
    size.width = std::max(size.width, std::min(length, width));
    size.height += (std::max(length - 1, 0) / width + 1) * kLine;
  }
  return size;
}

}  // namespace orvanto::forms
