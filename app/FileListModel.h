#pragma once
// The Qt item model over the file list control: one row per file name of the
// control's folder.
#include <QAbstractListModel>
#include <string>
#include <vector>

class FileListBox;

class FileListModel : public QAbstractListModel {
    Q_OBJECT
public:
    explicit FileListModel(FileListBox& list, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    // Takes up the control's folder and names when they changed since the
    // last call; true when the rows were reset.
    bool Reload();

private:
    FileListBox& list_;
    std::string path_;
    std::vector<std::string> names_;
};
