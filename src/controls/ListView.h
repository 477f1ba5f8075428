#pragma once
// The report-view list control. Items keep the order in which they were added;
// when Sorted is on, Item(i) and SelectedItem follow the sort by the texts of
// the SortKey column, as the platform's list view sorts.
//
// A list may hold millions of items (one per member of an archive), so an item
// is kept small: the columns that a list of files shows, two numbers and the
// extension of the name, are held as a number and as a mark and become texts
// only when they are asked for. An item given any other text for a column
// keeps its column texts as texts.
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "controls/Controls.h"

class ListItem;

// Room for the text of a number column.
struct SubItemBuffer {
    char text[24];
};

// SubItems(i) of an item that may be changed: reads as the column's text and
// takes a new text by assignment.
class SubItemRef {
public:
    SubItemRef(ListItem& item, int32_t index) : item_(item), index_(index) {}
    SubItemRef(const SubItemRef&) = default;
    SubItemRef& operator=(std::string_view text);
    SubItemRef& operator=(const std::string& text) { return *this = std::string_view(text); }
    SubItemRef& operator=(const char* text) { return *this = std::string_view(text); }
    SubItemRef& operator=(const SubItemRef& other);

    operator std::string() const;
    std::string str() const { return *this; }

    friend bool operator==(const SubItemRef& a, std::string_view b);
    friend std::ostream& operator<<(std::ostream& out, const SubItemRef& ref);

private:
    ListItem& item_;
    int32_t index_;
};

class ListItem {
public:
    ListItem() = default;
    ~ListItem();
    ListItem(const ListItem& other);
    ListItem& operator=(const ListItem& other);

    std::string Text;
    int32_t Tag = 0;
    bool Selected = false;

    // SubItems(1) to SubItems(64); index from 1, as the columns after the
    // first. Another index raises error 35600.
    SubItemRef SubItems(int32_t index) { return {*this, CheckedIndex(index)}; }
    std::string SubItems(int32_t index) const;
    // The text of a column without making a string: it stands in `buffer`, in
    // Text or in the item, and lasts while these do and the item is unchanged.
    // Index 0 is Text.
    std::string_view ColumnText(int32_t index, SubItemBuffer& buffer) const;

    // Sets a column to a number, shown as its decimal digits with blanks in
    // front up to 16 characters, so that a sort by text orders the column by
    // value.
    void SetSubItemNumber(int32_t index, int32_t value);
    // Sets a column to the text behind the last "." of Text (empty when there
    // is none), whatever Text holds when the column is read.
    void SetSubItemExtension(int32_t index);
    // Sets a column to a text.
    void SetSubItemText(int32_t index, std::string_view text);

private:
    // What a column of the compact form holds.
    enum Kind : uint8_t { kEmpty = 0, kNumber = 1, kExtension = 2 };
    static constexpr uint8_t kTexts = 0x80;  // the columns are held as texts
    static int32_t CheckedIndex(int32_t index);
    Kind KindOf(int32_t index) const { return static_cast<Kind>((form_ >> (2 * (index - 1))) & 3); }
    void SetKind(int32_t index, Kind kind);
    bool IsTexts() const { return (form_ & kTexts) != 0; }
    // Turns the compact form into texts.
    std::vector<std::string>& Texts();

    // Columns 1 to 3 in two bits each, and the texts flag.
    uint8_t form_ = 0;
    union {
        int32_t numbers_[2] = {0, 0};  // columns 1 and 2
        std::vector<std::string>* texts_;
    };
};

struct ColumnHeader {
    std::string Text;
    int32_t Width = 0;  // hundredths of a millimetre
    std::string Icon;   // key of an image ("ASC", "DESC"), or empty
};

// The items in the order of addition, as pointers: items[i] is the (i+1)th
// item added. Valid until the list is cleared.
class ListItemRange {
public:
    class iterator {
    public:
        using value_type = ListItem*;
        using difference_type = std::ptrdiff_t;
        iterator(const ListItemRange* range, size_t index) : range_(range), index_(index) {}
        ListItem* operator*() const { return (*range_)[index_]; }
        iterator& operator++() {
            ++index_;
            return *this;
        }
        bool operator==(const iterator& other) const { return index_ == other.index_; }

    private:
        const ListItemRange* range_;
        size_t index_;
    };

    // Items live in chunks of this many, which never move.
    static constexpr size_t kChunk = 1024;

    // Room for kChunk items, of which only those added are made: a short
    // list costs its items, not a whole chunk of them.
    class Chunk {
    public:
        Chunk();
        ~Chunk();
        Chunk(const Chunk&) = delete;
        Chunk& operator=(const Chunk&) = delete;
        ListItem& Emplace();
        ListItem& operator[](size_t i) const { return slots_[i]; }

    private:
        ListItem* slots_;
        size_t made_ = 0;
    };

    ListItemRange(const std::vector<std::unique_ptr<Chunk>>* chunks, size_t count)
        : chunks_(chunks), count_(count) {}
    size_t size() const { return count_; }
    bool empty() const { return count_ == 0; }
    ListItem* operator[](size_t i) const;
    // Raises std::out_of_range beyond the end.
    ListItem* at(size_t i) const;
    iterator begin() const { return {this, 0}; }
    iterator end() const { return {this, count_}; }

private:
    const std::vector<std::unique_ptr<Chunk>>* chunks_;
    size_t count_;
};

class ListView : public Control {
public:
    using Control::Control;

    // ListItems: Add (text only), Clear, Count, Item(i) from 1 in display order.
    ListItem& Add(const std::string& text);
    void Clear();
    int32_t Count() const { return static_cast<int32_t>(count_); }
    ListItem& Item(int32_t index);
    // Items in the order they were added (the directory order of a PAK).
    ListItemRange ItemsInAddOrder() const { return {&chunks_, count_}; }

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
    ListItem* At(size_t addIndex) const { return ItemsInAddOrder()[addIndex]; }
    void EnsureOrder();
    // Items live in chunks that never move, so an item stays where it is
    // while the list grows, and a growing list never holds two copies.
    std::vector<std::unique_ptr<ListItemRange::Chunk>> chunks_;
    size_t count_ = 0;
    std::vector<ListItem*> order_;  // display order, when sorted
    bool orderDirty_ = true;
    bool orderSorted_ = false;  // Sorted when the order was last made
    uint64_t revision_ = 0;
    ListItem* focus_ = nullptr;
    int32_t sortKey_ = 0;
    int32_t sortOrder_ = 0;
};
