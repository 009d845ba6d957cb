// A tree of nodes, each with a key, a text and two images.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/forms/Control.h"

namespace orvanto::forms {

class TreeView : public Control {
 public:
  using NodeId = std::size_t;  // position in Nodes(), in order of adding; good until Clear

  struct Node {
    std::optional<NodeId> parent;  // none at root level
    std::string key;
    std::string text;
    std::string image;          // name of an icon resource
    std::string selectedImage;  // shown while selected
    bool expanded = false;
    bool faded = false;  // of less importance than the others
  };

  TreeView(Form& form, const Control* container, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  const std::vector<Node>& Nodes() const { return nodes_; }
  void Clear();                     // also clears the selection
  NodeId Add(Node node);            // after the last child of its parent
  void EnsureVisible(NodeId node);  // expands every node above it
  // Between the two the host need not redraw; they do not nest.
  void BeginUpdate();
  void EndUpdate();

  void Fade(NodeId node);

  std::optional<NodeId> Selected() const { return selected_; }
  void Select(std::optional<NodeId> node);

  // A node was clicked or reached by the keyboard; it is the selected one then.
  std::function<void()> onNodeClick;
  // A double click on a node without children, or Enter on any: the selected one.
  std::function<void()> onActivate;
  // The Delete key, while a node is selected.
  std::function<void()> onDelete;
  // What is told of a node on which the mouse rests, or to which the keyboard has come; empty:
  // nothing.
  std::function<std::string(NodeId node)> onTip;

  // user
  bool ClickNode(NodeId node);
  bool SetExpanded(NodeId node, bool expanded);
  bool Activate();
  bool PressDelete();

  bool Updating() const { return updating_; }

 private:
  std::vector<Node> nodes_;
  std::optional<NodeId> selected_;
  bool updating_ = false;
};

}  // namespace orvanto::forms
