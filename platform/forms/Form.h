// A form and the two sides of it: Form is written by the program, FormPeer and FormHost by a host.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/forms/Buttons.h"
#include "platform/forms/Control.h"
#include "platform/forms/Menu.h"

namespace orvanto::forms {

enum class FormProperty { Caption, Visible, Position, Size, TopMost, Active, Focus };

struct Size {
  int width = 0;
  int height = 0;
};

// The real window of a loaded form, if the host makes one. Called on every change of the truth,
// before the setter returns; reads the rest from the form. Never calls back from inside, but for
// Resize where the system gives the window another size than was asked for. Once detached it
// touches neither the form nor its controls, which may be gone.
class FormPeer {
 public:
  virtual ~FormPeer() = default;
  virtual void FormChanged(FormProperty property) = 0;
  virtual void ControlChanged(const Control& control, Property property) = 0;
  virtual void MenuChanged(const MenuItem& item) = 0;
  virtual bool HasKeyboard() const = 0;
  // Where a person has put it, as Form::Place.
  virtual Bounds Place() const = 0;
};

class FormHost {
 public:
  virtual ~FormHost() = default;
  // Of a form that is being loaded: all its controls exist, it is not visible yet. The window is
  // made when the form is first shown.
  virtual std::unique_ptr<FormPeer> Attach(Form& form) = 0;
  // Takes the window of an unloaded form. A call of the peer's own may be on the stack, so a host
  // that dispatches from it destroys it later.
  virtual void Detach(std::unique_ptr<FormPeer> peer) = 0;
  virtual Size ScreenSize() const = 0;                 // the work area of the main screen, in twips
  virtual Size FrameSize(const Form& form) const = 0;  // what border, caption and menu add
  // What a text takes in lines of that width, as a label that breaks words shows it.
  virtual Size TextSize(const std::string& text, int width) const = 0;

  // A person asks for a page of the manual.
  std::function<void(const std::string& page)> onHelp;
};

class Form {
 public:
  Form(FormHost& host, std::string caption, Size clientSize);
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;
  virtual ~Form();

  const std::string& Caption() const { return caption_; }
  void SetCaption(const std::string& caption);
  Size ClientSize() const { return clientSize_; }
  void SetClientSize(Size size);
  int Left() const { return left_; }
  int Top() const { return top_; }
  bool Placed() const { return placed_; }  // given a position; else the system chooses one
  void CentreOnScreen();
  // Left and top from the corner of the main screen's work area, and the size of the client area.
  // What is asked for is moved to where it can be seen; what is told is where the window is or,
  // while it is maximized or minimized, where it is restored to. For a resizable form.
  Bounds Place() const;
  void SetPlace(const Bounds& place);
  bool Visible() const { return visible_; }
  bool TopMost() const { return topMost_; }
  void SetTopMost(bool topMost);

  // Load gives it to the host, hidden. Show loads when that is still to be done. Unload hides it,
  // raises onUnload and drops the window; the form may be loaded again. Each does nothing when it
  // is so already.
  bool Loaded() const { return loaded_; }
  void Load();
  void Show();
  void Activate();  // shows it and brings it to the front, restored where it was minimized
  void Hide();
  void Unload();

  std::function<void()> onUnload;

  // Where the program has put the keyboard since the form was loaded; a person may have moved it
  // on. Null: the first in the tab order.
  const Control* Focus() const { return focus_; }
  // Comes to the front, if it is shown, when this form had the keyboard and is hidden. Null: what
  // the system chooses.
  Form* formBehind = nullptr;

  // user: the close button of the frame, or Alt+F4. Unloads unless the form says otherwise.
  bool Close();
  std::function<void()> onClose;  // replaces the unloading

  // Enter and Esc press these; null for none.
  Button* defaultButton = nullptr;
  Button* cancelButton = nullptr;
  bool minimizeButton = false;

  // The page of the manual that is about it; empty: none.
  std::string helpPage;
  // user: the F1 key
  bool Help();

  // The person can change its size, though not below the one that it was made with; the form then
  // places its controls in onResize. To be set before it loads.
  bool resizable = false;
  std::function<void()> onResize;
  Size LeastSize() const { return leastSize_; }
  // user: what the client area is now, also maximized
  bool Resize(Size size);

  // For hosts.
  const std::vector<Control*>& Controls() const { return controls_; }
  const std::vector<MenuItem*>& MenuBar() const { return menuBar_; }

 private:
  friend class Control;
  friend class MenuItem;
  void Changed(FormProperty property);

  FormHost& host_;
  std::unique_ptr<FormPeer> peer_;
  std::string caption_;
  const Size leastSize_;
  Size clientSize_;
  int left_ = 0;
  int top_ = 0;
  bool placed_ = false;
  bool visible_ = false;
  bool loaded_ = false;
  bool topMost_ = false;
  const Control* focus_ = nullptr;
  std::vector<Control*> controls_;
  std::vector<MenuItem*> menuBar_;
};

}  // namespace orvanto::forms
