// The window of a tree.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/win32/forms/ControlWindow.h"
#include "platform/win32/forms/NodeTip.h"
#include "platform/win32/forms/Subclass.h"

namespace orvanto::win32 {

class TreeWindow : public ControlWindow {
 public:
  TreeWindow(forms::TreeView& tree, HWND parent, int id);

  void Mirror(forms::Property property) override;
  void Place(const RECT& place) override;
  void Rescale(UINT dpi) override;
  LRESULT OnNotify(const NMHDR& header, bool person) override;
  bool WantsTip() const override { return false; }

 private:
  using ImageList = Handle<HIMAGELIST, ImageList_Destroy>;

  void Rebuild();
  void MirrorSelection();
  void ScrollToSelection() const;
  std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
  bool TakesKey(WPARAM key);
  bool SelectFirst(WPARAM key);
  bool OpenMenu(LPARAM where);
  LRESULT Colour(const NMHDR& header) const;
  std::wstring TipOf(HTREEITEM item) const;
  void SelectItem(HTREEITEM item);
  int ImageIndex(const std::string& name);
  // The node of an item, if it is one of the tree's present nodes.
  std::optional<forms::TreeView::NodeId> NodeOf(LPARAM data) const;
  std::optional<forms::TreeView::NodeId> NodeOf(HTREEITEM item) const;
  bool IsAboveSelection(forms::TreeView::NodeId node) const;

  forms::TreeView& tree_;
  NodeTip tip_;
  Subclass subclass_;
  std::vector<HTREEITEM> items_;  // by node
  ImageList images_;
  std::map<std::string, int> imageIndices_;
  SIZE imageSize_ = {};
  bool selecting_ = false;  // by SelectItem
  bool clickTold_ = false;
};

}  // namespace orvanto::win32
