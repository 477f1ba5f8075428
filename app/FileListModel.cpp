#include "FileListModel.h"

#include <QFile>

#include "controls/FileControls.h"

FileListModel::FileListModel(FileListBox& list, QObject* parent) : QAbstractListModel(parent), list_(list) {
    Reload();
}

bool FileListModel::Reload() {
    // The control tells of a new selection and of a new folder alike; only a
    // new list of names resets the rows, so a click keeps the view in place.
    const int count = list_.ListCount();
    bool same = list_.Path() == path_ && static_cast<size_t>(count) == names_.size();
    for (int i = 0; same && i < count; ++i) same = list_.List(i) == names_[static_cast<size_t>(i)];
    if (same) return false;
    beginResetModel();
    path_ = list_.Path();
    names_.clear();
    names_.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) names_.push_back(list_.List(i));
    endResetModel();
    return true;
}

int FileListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(names_.size());
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole || !index.isValid() || index.row() >= rowCount()) return {};
    // File names are the file system's bytes.
    return QFile::decodeName(QByteArray::fromStdString(names_[static_cast<size_t>(index.row())]));
}
