#include "controls/ListView.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>
#include <ostream>
#include <stdexcept>

#include "platform/Runtime.h"

namespace {

[[noreturn]] void OutOfBounds() { RaiseError(35600, {}, "Index out of bounds"); }

constexpr int32_t kMaxSubItems = 64;
// Columns 1 to 3 have a compact form; columns 1 and 2 can hold a number.
constexpr int32_t kCompactColumns = 3;
constexpr int32_t kNumberColumns = 2;
constexpr size_t kNumberWidth = 16;

std::string_view PadNumber(int32_t value, SubItemBuffer& buffer) {
    char digits[16];
    char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    const auto length = static_cast<size_t>(end - digits);
    const size_t blanks = length < kNumberWidth ? kNumberWidth - length : 0;
    std::memset(buffer.text, ' ', blanks);
    std::memcpy(buffer.text + blanks, digits, length);
    return {buffer.text, blanks + length};
}

std::string_view ExtensionOf(const std::string& text) {
    const size_t dot = text.rfind('.');
    if (dot == std::string::npos) return {};
    return std::string_view(text).substr(dot + 1);
}

// The platform's list view compares texts as C strings, ignoring case: a text
// ends at its first zero byte.
int CompareNoCase(std::string_view a, std::string_view b) {
    a = a.substr(0, std::min(a.size(), a.find('\0')));
    b = b.substr(0, std::min(b.size(), b.find('\0')));
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        const auto ca = static_cast<unsigned char>(VbLCaseChar(a[i]));
        const auto cb = static_cast<unsigned char>(VbLCaseChar(b[i]));
        if (ca != cb) return ca < cb ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

}  // namespace

// ---- SubItemRef -----------------------------------------------------------------

SubItemRef& SubItemRef::operator=(std::string_view text) {
    item_.SetSubItemText(index_, text);
    return *this;
}

SubItemRef& SubItemRef::operator=(const SubItemRef& other) {
    // The text is taken first: both may be columns of the same item.
    const std::string text = other;
    item_.SetSubItemText(index_, text);
    return *this;
}

SubItemRef::operator std::string() const {
    SubItemBuffer buffer;
    return std::string(item_.ColumnText(index_, buffer));
}

bool operator==(const SubItemRef& a, std::string_view b) {
    SubItemBuffer buffer;
    return a.item_.ColumnText(a.index_, buffer) == b;
}

std::ostream& operator<<(std::ostream& out, const SubItemRef& ref) {
    SubItemBuffer buffer;
    return out << ref.item_.ColumnText(ref.index_, buffer);
}

// ---- ListItem ---------------------------------------------------------------------

// An archive of millions of members is listed whole; its items must stay small.
static_assert(sizeof(ListItem) <= sizeof(std::string) + 16);

ListItem::~ListItem() {
    if (IsTexts()) delete texts_;
}

ListItem::ListItem(const ListItem& other) : Text(other.Text), Tag(other.Tag), Selected(other.Selected) {
    form_ = other.form_;
    if (other.IsTexts()) {
        texts_ = new std::vector<std::string>(*other.texts_);
    } else {
        numbers_[0] = other.numbers_[0];
        numbers_[1] = other.numbers_[1];
    }
}

ListItem& ListItem::operator=(const ListItem& other) {
    if (this == &other) return *this;
    // Everything is copied before anything changes, so a failure leaves the
    // item as it was.
    std::string text = other.Text;
    std::unique_ptr<std::vector<std::string>> texts;
    if (other.IsTexts()) texts = std::make_unique<std::vector<std::string>>(*other.texts_);
    if (IsTexts()) delete texts_;
    Text = std::move(text);
    Tag = other.Tag;
    Selected = other.Selected;
    form_ = other.form_;
    if (texts) {
        texts_ = texts.release();
    } else {
        numbers_[0] = other.numbers_[0];
        numbers_[1] = other.numbers_[1];
    }
    return *this;
}

int32_t ListItem::CheckedIndex(int32_t index) {
    if (index < 1 || index > kMaxSubItems) OutOfBounds();
    return index;
}

void ListItem::SetKind(int32_t index, Kind kind) {
    const int shift = 2 * (index - 1);
    form_ = static_cast<uint8_t>((form_ & ~(3 << shift)) | (kind << shift));
}

std::vector<std::string>& ListItem::Texts() {
    if (IsTexts()) return *texts_;
    auto texts = std::make_unique<std::vector<std::string>>();
    for (int32_t i = kCompactColumns; i >= 1; --i) {
        if (KindOf(i) == kEmpty && texts->empty()) continue;
        if (texts->empty()) texts->resize(static_cast<size_t>(i));
        SubItemBuffer buffer;
        (*texts)[static_cast<size_t>(i) - 1] = std::string(ColumnText(i, buffer));
    }
    texts_ = texts.release();
    form_ = kTexts;
    return *texts_;
}

std::string ListItem::SubItems(int32_t index) const {
    SubItemBuffer buffer;
    return std::string(ColumnText(CheckedIndex(index), buffer));
}

std::string_view ListItem::ColumnText(int32_t index, SubItemBuffer& buffer) const {
    if (index == 0) return Text;
    if (IsTexts()) {
        if (static_cast<size_t>(index) > texts_->size()) return {};
        return (*texts_)[static_cast<size_t>(index) - 1];
    }
    if (index > kCompactColumns) return {};
    switch (KindOf(index)) {
        case kNumber: return PadNumber(numbers_[index - 1], buffer);
        case kExtension: return ExtensionOf(Text);
        default: return {};
    }
}

void ListItem::SetSubItemNumber(int32_t index, int32_t value) {
    CheckedIndex(index);
    if (!IsTexts() && index <= kNumberColumns) {
        numbers_[index - 1] = value;
        SetKind(index, kNumber);
        return;
    }
    SubItemBuffer buffer;
    SetSubItemText(index, PadNumber(value, buffer));
}

void ListItem::SetSubItemExtension(int32_t index) {
    CheckedIndex(index);
    if (!IsTexts() && index <= kCompactColumns) {
        SetKind(index, kExtension);
        return;
    }
    SetSubItemText(index, ExtensionOf(Text));
}

void ListItem::SetSubItemText(int32_t index, std::string_view text) {
    CheckedIndex(index);
    // An empty column needs no text.
    if (!IsTexts() && index <= kCompactColumns && text.empty()) {
        SetKind(index, kEmpty);
        return;
    }
    std::string copy(text);  // the text may be this item's own
    std::vector<std::string>& texts = Texts();
    if (static_cast<size_t>(index) > texts.size()) texts.resize(static_cast<size_t>(index));
    texts[static_cast<size_t>(index) - 1] = std::move(copy);
}

// ---- ListItemRange ----------------------------------------------------------------

ListItemRange::Chunk::Chunk()
    : slots_(static_cast<ListItem*>(::operator new(kChunk * sizeof(ListItem), std::align_val_t(alignof(ListItem))))) {}

ListItemRange::Chunk::~Chunk() {
    while (made_ > 0) slots_[--made_].~ListItem();
    ::operator delete(slots_, std::align_val_t(alignof(ListItem)));
}

ListItem& ListItemRange::Chunk::Emplace() { return *new (slots_ + made_++) ListItem(); }

ListItem* ListItemRange::operator[](size_t i) const { return &(*(*chunks_)[i / kChunk])[i % kChunk]; }

ListItem* ListItemRange::at(size_t i) const {
    if (i >= count_) throw std::out_of_range("ListItemRange::at");
    return (*this)[i];
}

// ---- ListView ---------------------------------------------------------------------

ListItem& ListView::Add(const std::string& text) {
    if (count_ == chunks_.size() * ListItemRange::kChunk) chunks_.push_back(std::make_unique<ListItemRange::Chunk>());
    ListItem& item = chunks_.back()->Emplace();
    ++count_;
    item.Text = text;
    orderDirty_ = true;
    ++revision_;
    return item;
}

void ListView::Clear() {
    chunks_.clear();
    chunks_.shrink_to_fit();
    count_ = 0;
    order_.clear();
    order_.shrink_to_fit();
    focus_ = nullptr;
    orderDirty_ = true;
    ++revision_;
    Notify();
}

void ListView::EnsureOrder() {
    if (!orderDirty_) return;
    orderDirty_ = false;
    orderSorted_ = Sorted;
    order_.clear();
    // Unsorted, the display order is the order of addition and needs no table.
    if (!Sorted) {
        order_.shrink_to_fit();
        return;
    }
    order_.reserve(count_);
    for (ListItem* item : ItemsInAddOrder()) order_.push_back(item);
    const int32_t key = sortKey_;
    auto less = [key](const ListItem* a, const ListItem* b) {
        SubItemBuffer ba, bb;
        return CompareNoCase(a->ColumnText(key, ba), b->ColumnText(key, bb)) < 0;
    };
    if (sortOrder_ == 0) {
        std::stable_sort(order_.begin(), order_.end(), less);
    } else {
        std::stable_sort(order_.begin(), order_.end(), [&](const ListItem* a, const ListItem* b) { return less(b, a); });
    }
}

ListItem& ListView::Item(int32_t index) {
    if (index < 1 || index > Count()) OutOfBounds();
    EnsureOrder();
    return orderSorted_ ? *order_[static_cast<size_t>(index) - 1] : *At(static_cast<size_t>(index) - 1);
}

ListItem* ListView::SelectedItem() {
    if (focus_ != nullptr && focus_->Selected) return focus_;
    for (int32_t i = 1; i <= Count(); ++i) {
        ListItem& item = Item(i);
        if (item.Selected) return &item;
    }
    return nullptr;
}

void ListView::SelectOnly(int32_t index) {
    ListItem& chosen = Item(index);
    for (ListItem* item : ItemsInAddOrder()) item->Selected = false;
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
    if (k < 0 || k >= kMaxSubItems) OutOfBounds();
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
