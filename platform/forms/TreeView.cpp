#include "platform/forms/TreeView.h"

#include <utility>

#include "platform/forms/ControlVisitor.h"

namespace orvanto::forms {

TreeView::TreeView(Form& form, const Control* container, Bounds bounds)
    : Control(form, container, {}, bounds) {}

void TreeView::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

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

void TreeView::Fade(NodeId node) {
  nodes_.at(node).faded = true;
  Changed(Property::Drawing);
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

bool TreeView::Activate() {
  if (!Usable() || !selected_) return false;
  Raise(onActivate);
  return true;
}

bool TreeView::PressDelete() {
  if (!Usable() || !selected_) return false;
  Raise(onDelete);
  return true;
}

}  // namespace orvanto::forms
