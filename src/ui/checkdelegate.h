#pragma once

#include <QStyledItemDelegate>

namespace duomir {

// Draws a cell's check state as a check box in the middle of the cell. For user-checkable cells a
// left click anywhere in the cell toggles it (a small target inside a wide column is hard to hit).
class CheckDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

protected:
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
};

} // namespace duomir
