#pragma once
// The report-view list control. Items keep the order in which they were added;
// when Sorted is on, Item(i) and SelectedItem follow the sort by the texts of
// the SortKey column, as the platform's list view sorts.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "controls/Controls.h"

class ListItem {
public:
    std::string Text;
    int32_t Tag = 0;
    bool Selected = false;
    // SubItems(1) to SubItems(3); index from 1, as the columns after the first.
    std::string& SubItems(int32_t index);
    const std::string& SubItems(int32_t index) const;
    // Position in the order of addition, from 1.
    int32_t AddIndex = 0;

private:
    std::vector<std::string> sub_;
};

struct ColumnHeader {
    std::string Text;
    int32_t Width = 0;  // hundredths of a millimetre
    std::string Icon;   // key of an image ("ASC", "DESC"), or empty
};

class ListView : public Control {
public:
    using Control::Control;

    // ListItems: Add (text only), Clear, Count, Item(i) from 1 in display order.
    ListItem& Add(const std::string& text);
    void Clear();
    int32_t Count() const { return static_cast<int32_t>(items_.size()); }
    ListItem& Item(int32_t index);
    // Items in the order they were added (the directory order of a PAK).
    const std::vector<std::shared_ptr<ListItem>>& ItemsInAddOrder() const { return items_; }

    // The focused selected item; nullptr when none is selected.
    ListItem* SelectedItem();
    // Selects exactly one item (by display index from 1) and makes it the
    // selected item, as a click does.
    void SelectOnly(int32_t index);
    // Adds or removes an item from the selection, as Ctrl+click does.
    void SetSelected(int32_t index, bool selected);
    // Makes an item the one SelectedItem gives, without changing the others.
    void SetFocusItem(int32_t index);

    std::vector<ColumnHeader> ColumnHeaders;  // index 1 is ColumnHeaders[0]
    ColumnHeader& Column(int32_t index);

    bool Sorted = true;
    int32_t SortKey() const { return sortKey_; }
    void SetSortKey(int32_t k);
    int32_t SortOrder() const { return sortOrder_; }  // 0 ascending, 1 descending
    void SetSortOrder(int32_t o);
    // Notifies the view after items or their texts changed.
    void Refresh();
    // Counts the changes of the items or of their order, so that a view told
    // of a change can tell a new list from a new selection.
    uint64_t Revision() const { return revision_; }

    // Events of the list.
    Event<int32_t> ColumnClick;  // index of the column, from 1
    Event<> DblClick;
    Event<int16_t> KeyPress;

private:
    void EnsureOrder();
    std::vector<std::shared_ptr<ListItem>> items_;
    std::vector<ListItem*> order_;
    bool orderDirty_ = true;
    uint64_t revision_ = 0;
    ListItem* focus_ = nullptr;
    int32_t sortKey_ = 0;
    int32_t sortOrder_ = 0;
};
