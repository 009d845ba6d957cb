#include "platform/forms/Form.h"

#include <algorithm>
#include <utility>

namespace orvanto::forms {

Form::Form(FormHost& host, std::string caption, Size clientSize)
    : host_(host), caption_(std::move(caption)), leastSize_(clientSize), clientSize_(clientSize) {}

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
  placed_ = true;
  Changed(FormProperty::Position);
}

Bounds Form::Place() const {
  return peer_ ? peer_->Place() : Bounds{left_, top_, clientSize_.width, clientSize_.height};
}

void Form::SetPlace(const Bounds& place) {
  left_ = place.left;
  top_ = place.top;
  placed_ = true;
  Resize({place.width, place.height});
  Changed(FormProperty::Size);
  Changed(FormProperty::Position);
}

bool Form::Resize(Size size) {
  if (!resizable || !loaded_) return false;
  clientSize_ = {std::max(size.width, leastSize_.width), std::max(size.height, leastSize_.height)};
  if (const auto handler = onResize) handler();
  return true;
}

bool Form::Help() {
  if (!visible_ || helpPage.empty() || !host_.onHelp) return false;
  const auto handler = host_.onHelp;
  handler(helpPage);
  return true;
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

}  // namespace orvanto::forms
