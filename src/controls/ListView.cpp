#include "controls/ListView.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

#include "platform/Runtime.h"

namespace {
[[noreturn]] void OutOfBounds() { RaiseError(35600, {}, "Index out of bounds"); }
}  // namespace

std::string& ListItem::SubItems(int32_t index) {
    if (index < 1 || index > 64) OutOfBounds();
    if (static_cast<size_t>(index) > sub_.size()) sub_.resize(static_cast<size_t>(index));
    return sub_[static_cast<size_t>(index) - 1];
}

const std::string& ListItem::SubItems(int32_t index) const {
    static const std::string empty;
    if (index < 1 || index > 64) OutOfBounds();
    if (static_cast<size_t>(index) > sub_.size()) return empty;
    return sub_[static_cast<size_t>(index) - 1];
}

ListItem& ListView::Add(const std::string& text) {
    auto item = std::make_shared<ListItem>();
    item->Text = text;
    item->AddIndex = Count() + 1;
    items_.push_back(item);
    orderDirty_ = true;
    ++revision_;
    return *item;
}

void ListView::Clear() {
    items_.clear();
    order_.clear();
    focus_ = nullptr;
    orderDirty_ = true;
    ++revision_;
    Notify();
}

void ListView::EnsureOrder() {
    if (!orderDirty_) return;
    order_.clear();
    order_.reserve(items_.size());
    for (auto& p : items_) order_.push_back(p.get());
    if (Sorted) {
        const int32_t key = sortKey_;
        auto text = [key](const ListItem* i) -> const std::string& {
            return key == 0 ? i->Text : i->SubItems(key);
        };
        auto less = [&](const ListItem* a, const ListItem* b) {
            return strcasecmp(text(a).c_str(), text(b).c_str()) < 0;
        };
        if (sortOrder_ == 0) {
            std::stable_sort(order_.begin(), order_.end(), less);
        } else {
            std::stable_sort(order_.begin(), order_.end(),
                             [&](const ListItem* a, const ListItem* b) { return less(b, a); });
        }
    }
    orderDirty_ = false;
}

ListItem& ListView::Item(int32_t index) {
    EnsureOrder();
    if (index < 1 || index > Count()) OutOfBounds();
    return *order_[static_cast<size_t>(index) - 1];
}

ListItem* ListView::SelectedItem() {
    if (focus_ != nullptr && focus_->Selected) return focus_;
    EnsureOrder();
    for (ListItem* i : order_)
        if (i->Selected) return i;
    return nullptr;
}

void ListView::SelectOnly(int32_t index) {
    ListItem& chosen = Item(index);
    for (auto& p : items_) p->Selected = false;
    chosen.Selected = true;
    focus_ = &chosen;
    Notify();
}

void ListView::SetSelected(int32_t index, bool selected) {
    ListItem& item = Item(index);
    item.Selected = selected;
    if (selected) focus_ = &item;
    Notify();
}

void ListView::SetFocusItem(int32_t index) {
    focus_ = &Item(index);
    Notify();
}

ColumnHeader& ListView::Column(int32_t index) {
    if (index < 1 || index > static_cast<int32_t>(ColumnHeaders.size())) OutOfBounds();
    return ColumnHeaders[static_cast<size_t>(index) - 1];
}

void ListView::SetSortKey(int32_t k) {
    if (k < 0 || k >= 64) OutOfBounds();
    sortKey_ = k;
    orderDirty_ = true;
    ++revision_;
    Notify();
}

void ListView::SetSortOrder(int32_t o) {
    sortOrder_ = o == 0 ? 0 : 1;
    orderDirty_ = true;
    ++revision_;
    Notify();
}

void ListView::Refresh() {
    orderDirty_ = true;
    ++revision_;
    Notify();
}
