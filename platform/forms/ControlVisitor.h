// One call for each kind of control: what a host has to answer.
#pragma once

namespace orvanto::forms {

class Button;
class CheckBox;
class ComboBox;
class Frame;
class Label;
class Lamp;
class ListBox;
class OptionButton;
class PictureBox;
class TabPage;
class TabStrip;
class TextBox;
class TreeView;
class UpDown;

class ControlVisitor {
 public:
  virtual ~ControlVisitor() = default;
  virtual void Visit(Button& button) = 0;
  virtual void Visit(CheckBox& check) = 0;
  virtual void Visit(ComboBox& combo) = 0;
  virtual void Visit(Frame& frame) = 0;
  virtual void Visit(Label& label) = 0;
  virtual void Visit(Lamp& lamp) = 0;
  virtual void Visit(ListBox& list) = 0;
  virtual void Visit(OptionButton& option) = 0;
  virtual void Visit(PictureBox& picture) = 0;
  virtual void Visit(TabPage& page) = 0;
  virtual void Visit(TabStrip& tabs) = 0;
  virtual void Visit(TextBox& box) = 0;
  virtual void Visit(TreeView& tree) = 0;
  virtual void Visit(UpDown& upDown) = 0;
};

}  // namespace orvanto::forms
