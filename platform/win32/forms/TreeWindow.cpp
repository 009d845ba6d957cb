#include "platform/win32/forms/TreeWindow.h"

#include <uxtheme.h>

#include <algorithm>

#include "platform/win32/HiddenWindow.h"
#include "platform/win32/Text.h"
#include "platform/win32/forms/ControlKinds.h"
#include "platform/win32/forms/FormMenu.h"
#include "platform/win32/forms/Scale.h"

namespace orvanto::win32 {

using forms::Property;
using forms::TreeView;

namespace {

// As the trees of today's systems look, where the system's theme knows how.
void DressAsExplorer(HWND tree) {
  const HTHEME theme = OpenThemeData(tree, L"Explorer::TreeView");
  if (theme == nullptr) return;
  CloseThemeData(theme);
  SetWindowTheme(tree, L"Explorer", nullptr);
  SetWindowLongPtrW(tree, GWL_STYLE, GetWindowLongPtrW(tree, GWL_STYLE) & ~LONG_PTR{TVS_HASLINES});
}

}  // namespace

TreeWindow::TreeWindow(TreeView& tree, HWND parent, int id)
    : ControlWindow(tree,
                    {WC_TREEVIEWW,
                     WS_TABSTOP | TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT |
                         TVS_SHOWSELALWAYS | TVS_DISABLEDRAGDROP | TVS_NOTOOLTIPS,
                     WS_EX_CLIENTEDGE},
                    parent, id),
      tree_(tree),
      tip_(window_, [this](HTREEITEM item) { return TipOf(item); }),
      subclass_(window_, [this](UINT message, WPARAM wParam, LPARAM lParam) {
        return OnMessage(message, wParam, lParam);
      }) {
  DressAsExplorer(window_);
  TreeView_SetExtendedStyle(window_, TVS_EX_DOUBLEBUFFER, TVS_EX_DOUBLEBUFFER);
}

// What the person does may unload the form: nothing of ours is touched after it.
std::optional<LRESULT> TreeWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  // Wine's tree keeps Alt and F10 to itself; from here they come to the menu.
  if (message == WM_SYSKEYDOWN || message == WM_SYSKEYUP || message == WM_KEYUP) {
    return DefWindowProcW(window_, message, wParam, lParam);
  }
  const auto* const asked = reinterpret_cast<const MSG*>(lParam);
  if (message == WM_GETDLGCODE && asked != nullptr && asked->message == WM_KEYDOWN &&
      asked->wParam == VK_RETURN) {
    return DLGC_WANTMESSAGE;  // or it would be the default button's
  }
  tip_.OnMessage(message, wParam);
  if (message == WM_KEYDOWN && TakesKey(wParam)) return 0;
  if (message == WM_CHAR && wParam == VK_RETURN) return 0;  // it would beep
  if (message == WM_CONTEXTMENU && OpenMenu(lParam)) return 0;
  return std::nullopt;
}

void TreeWindow::Mirror(Property property) {
  if (property == Property::Nodes && !tree_.Updating()) Rebuild();
  if (property == Property::Drawing) InvalidateRect(window_, nullptr, FALSE);
  if (property == Property::Selection && !tree_.Updating()) MirrorSelection();
}

void TreeWindow::Place(const RECT& place) {
  ControlWindow::Place(place);
  ScrollToSelection();
}

void TreeWindow::ScrollToSelection() const {
  const HTREEITEM item = TreeView_GetSelection(window_);
  RECT line = {};
  RECT inside = {};
  GetClientRect(window_, &inside);
  const bool open = item != nullptr && TreeView_GetItemRect(window_, item, &line, FALSE);
  if (item == nullptr || (open && line.top >= 0 && line.bottom <= inside.bottom)) return;
  TreeView_EnsureVisible(window_, item);
  SendMessageW(window_, WM_HSCROLL, SB_LEFT, 0);  // it may have scrolled to a long line's end, too
}

void TreeWindow::Rescale(UINT dpi) {
  imageSize_ = {GetSystemMetricsForDpi(SM_CXSMICON, dpi), GetSystemMetricsForDpi(SM_CYSMICON, dpi)};
  ImageList fresh(ImageList_Create(imageSize_.cx, imageSize_.cy, ILC_COLOR32, 4, 4));
  TreeView_SetImageList(window_, fresh.Get(), TVSIL_NORMAL);
  images_ = std::move(fresh);
  imageIndices_.clear();
  TreeView_SetIndent(window_, imageSize_.cx + ToPixels(45, dpi));
  TreeView_SetItemHeight(window_, -1);  // as font and images ask for
  TreeView_SetItemHeight(window_, TreeView_GetItemHeight(window_) + ToPixels(45, dpi));
  Rebuild();
}

int TreeWindow::ImageIndex(const std::string& name) {
  const auto found = imageIndices_.find(name);
  if (found != imageIndices_.end()) return found->second;
  const Handle<HICON, DestroyIcon> icon(static_cast<HICON>(
      LoadImageW(ThisModule(), ToWide(name).c_str(), IMAGE_ICON, imageSize_.cx, imageSize_.cy, 0)));
  const int index = icon ? ImageList_AddIcon(images_.Get(), icon.Get()) : I_IMAGENONE;
  imageIndices_[name] = index;
  return index;
}

void TreeWindow::Rebuild() {
  tip_.Hide();
  SendMessageW(window_, WM_SETREDRAW, FALSE, 0);
  TreeView_DeleteAllItems(window_);
  items_.clear();
  const auto& nodes = tree_.Nodes();
  std::vector<bool> hasChildren(nodes.size());
  for (const TreeView::Node& node : nodes) {
    std::wstring text = ToWide(node.text);
    TVINSERTSTRUCTW insert = {};
    insert.hParent = node.parent ? items_.at(*node.parent) : TVI_ROOT;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    insert.item.pszText = text.data();
    insert.item.lParam = static_cast<LPARAM>(items_.size());
    insert.item.iImage = ImageIndex(node.image);
    insert.item.iSelectedImage = ImageIndex(node.selectedImage);
    items_.push_back(TreeView_InsertItem(window_, &insert));
    if (node.parent) hasChildren.at(*node.parent) = true;
  }
  // A node can be expanded only once it has children.
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].expanded && hasChildren[i]) TreeView_Expand(window_, items_[i], TVE_EXPAND);
  }
  MirrorSelection();
  SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
  ScrollToSelection();
  InvalidateRect(window_, nullptr, TRUE);
}

void TreeWindow::MirrorSelection() {
  const auto selected = tree_.Selected();
  SelectItem(selected && *selected < items_.size() ? items_[*selected] : nullptr);
}

bool TreeWindow::TakesKey(WPARAM key) {
  if (key == VK_RETURN) return tree_.Activate();
  if (key == VK_DELETE) return tree_.PressDelete();
  return SelectFirst(key);
}

// Where the mouse is, of the node there; by the keyboard, below the selected one.
bool TreeWindow::OpenMenu(LPARAM where) {
  if (tree_.contextMenu == nullptr) return false;
  POINT place = {static_cast<short>(LOWORD(where)), static_cast<short>(HIWORD(where))};
  if (where == -1) {
    RECT line = {};
    const HTREEITEM item = TreeView_GetSelection(window_);
    if (item != nullptr) TreeView_GetItemRect(window_, item, &line, TRUE);
    place = {line.left, line.bottom};
    ClientToScreen(window_, &place);
  } else if (const HTREEITEM item = ItemUnderMouse(window_); item != nullptr) {
    if (const auto node = NodeOf(item)) tree_.ClickNode(*node);
  }
  forms::MenuItem* const chosen = ChooseFrom(*tree_.contextMenu, GetParent(window_), place);
  if (chosen != nullptr) chosen->Choose();
  return true;
}

// Without a selection the arrow keys would lead nowhere. True where that was all the key does.
bool TreeWindow::SelectFirst(WPARAM key) {
  if (key < VK_PRIOR || key > VK_DOWN || TreeView_GetSelection(window_) != nullptr) return false;
  const bool further = key == VK_END || key == VK_NEXT;
  SelectItem(TreeView_GetRoot(window_));
  return !further;
}

void TreeWindow::SelectItem(HTREEITEM item) {
  if (TreeView_GetSelection(window_) == item) return;
  selecting_ = true;  // until the window has reported it
  TreeView_SelectItem(window_, item);
}

std::optional<TreeView::NodeId> TreeWindow::NodeOf(HTREEITEM item) const {
  const auto found = std::find(items_.begin(), items_.end(), item);
  if (found == items_.end()) return std::nullopt;
  return static_cast<TreeView::NodeId>(found - items_.begin());
}

std::optional<TreeView::NodeId> TreeWindow::NodeOf(LPARAM data) const {
  const auto node = static_cast<TreeView::NodeId>(data);
  if (node >= items_.size()) return std::nullopt;
  return node;
}

bool TreeWindow::IsAboveSelection(TreeView::NodeId node) const {
  auto each = tree_.Selected();
  while (each && each != node) each = tree_.Nodes()[*each].parent;
  return each && each != tree_.Selected();
}

LRESULT TreeWindow::Colour(const NMHDR& header) const {
  auto& draw = const_cast<NMTVCUSTOMDRAW&>(reinterpret_cast<const NMTVCUSTOMDRAW&>(header));
  if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
  if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT) return CDRF_DODEFAULT;
  const auto node = NodeOf(draw.nmcd.lItemlParam);
  const bool selected = (draw.nmcd.uItemState & CDIS_SELECTED) != 0;
  if (node && tree_.Nodes()[*node].faded && !selected) draw.clrText = GetSysColor(COLOR_GRAYTEXT);
  return CDRF_DODEFAULT;
}

std::wstring TreeWindow::TipOf(HTREEITEM item) const {
  const auto node = NodeOf(item);
  return node && tree_.onTip ? ToWide(tree_.onTip(*node)) : L"";
}

LRESULT TreeWindow::OnNotify(const NMHDR& header, bool person) {
  if (header.code == NM_CUSTOMDRAW) return Colour(header);
  const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
  // The window selects a node by itself when it gets the focus: nobody has chosen that one.
  if (header.code == TVN_SELCHANGINGW && change.action == TVC_UNKNOWN && !selecting_) return TRUE;
  if (header.code == TVN_SELCHANGEDW) selecting_ = false;
  if (!person) return 0;
  switch (header.code) {
    case TVN_SELCHANGEDW:
      clickTold_ = change.action == TVC_BYMOUSE;
      if (change.action == TVC_BYKEYBOARD) tip_.OnKeyboard();
      if (change.itemNew.hItem == nullptr) break;
      if (const auto node = NodeOf(change.itemNew.lParam)) tree_.ClickNode(*node);
      break;
    case NM_CLICK: {
      // A click on the selected node is one too, though it selects nothing new.
      if (std::exchange(clickTold_, false)) break;
      const HTREEITEM item = ItemUnderMouse(window_);
      const auto selected = tree_.Selected();
      if (item != nullptr && selected && NodeOf(static_cast<LPARAM>(*selected)) &&
          items_[*selected] == item) {
        tree_.ClickNode(*selected);
      }
      break;
    }
    case NM_DBLCLK: {
      const HTREEITEM item = ItemUnderMouse(window_);
      if (item == nullptr || TreeView_GetChild(window_, item) != nullptr) break;
      tree_.Activate();
      return 1;
    }
    case NM_RCLICK:
      // The window has swallowed the button's release, of which WM_CONTEXTMENU would come.
      return OpenMenu(static_cast<LPARAM>(GetMessagePos())) ? 1 : 0;
    case TVN_ITEMEXPANDINGW:
      // Who closes a node over the selected one selects it. The window does so on its own, but not
      // every system tells.
      if (const auto node = NodeOf(change.itemNew.lParam);
          node && change.action == TVE_COLLAPSE && IsAboveSelection(*node)) {
        tree_.ClickNode(*node);
      }
      break;
    case TVN_ITEMEXPANDEDW:
      if (const auto node = NodeOf(change.itemNew.lParam)) {
        tree_.SetExpanded(*node, change.action == TVE_EXPAND);
      }
      break;
    default:
      break;
  }
  return 0;
}

NewControlWindow MakeWindow(forms::TreeView& tree, HWND parent, int id) {
  return std::make_unique<TreeWindow>(tree, parent, id);
}

}  // namespace orvanto::win32
