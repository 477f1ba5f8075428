#include "ListViewModel.h"

#include "Icons.h"
#include "Text1252.h"
#include "controls/ListView.h"

ListViewModel::ListViewModel(ListView& list, QObject* parent)
    : QAbstractTableModel(parent),
      list_(list),
      ascending_(Icons::SortArrow(false)),
      descending_(Icons::SortArrow(true)) {
    Reload();
}

bool ListViewModel::Reload() {
    const int columns = static_cast<int>(list_.ColumnHeaders.size());
    if (list_.Revision() == revision_ && columns == columns_) return false;
    beginResetModel();
    revision_ = list_.Revision();
    rows_ = list_.Count();
    columns_ = columns;
    endResetModel();
    return true;
}

void ListViewModel::HeadsChanged() {
    if (columns_ > 0) emit headerDataChanged(Qt::Horizontal, 0, columns_ - 1);
}

int ListViewModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int ListViewModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : columns_; }

QVariant ListViewModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
    // Items may have been added to the control since the last reset; the rows
    // announced to Qt are the ones that stood then, and only those are asked.
    if (!index.isValid() || index.row() >= rows_ || index.row() >= list_.Count()) return {};
    const ListItem& item = list_.Item(index.row() + 1);
    const std::string& text = index.column() == 0 ? item.Text : item.SubItems(index.column());
    return FromBytes(text);
}

QVariant ListViewModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columns_ ||
        section >= static_cast<int>(list_.ColumnHeaders.size()))
        return {};
    const ColumnHeader& head = list_.ColumnHeaders[static_cast<size_t>(section)];
    switch (role) {
        case Qt::DisplayRole: return FromBytes(head.Text);
        case Qt::DecorationRole:
            if (head.Icon == "ASC") return ascending_;
            if (head.Icon == "DESC") return descending_;
            return {};
        default: return {};
    }
}

Qt::ItemFlags ListViewModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}
