#pragma once
// The Qt item model over the list view control: one row per item in the
// control's display order, one column per column head. Rows are asked of the
// control when painted, so a list of a hundred thousand members costs no more
// than the rows on screen.
#include <QAbstractTableModel>
#include <QIcon>

class ListView;

class ListViewModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit ListViewModel(ListView& list, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Takes up a new list or a new order of the control; true when the rows
    // were reset.
    bool Reload();
    // Repaints the column heads, whose icons tell the sort order.
    void HeadsChanged();

private:
    ListView& list_;
    int rows_ = 0;
    int columns_ = 0;
    uint64_t revision_ = ~uint64_t{0};
    QIcon ascending_;
    QIcon descending_;
};
