#include "ui/checkdelegate.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionButton>

namespace duomir {

void CheckDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    QStyle *style = opt.widget ? opt.widget->style() : QApplication::style();
    const QVariant state = index.data(Qt::CheckStateRole);
    opt.features &= ~QStyleOptionViewItem::HasCheckIndicator;
    opt.text.clear();
    style->drawControl(QStyle::CE_ItemViewItem, &opt, painter, opt.widget);
    if (!state.isValid())
        return;

    QStyleOptionButton check;
    check.initFrom(opt.widget);
    const int w = style->pixelMetric(QStyle::PM_IndicatorWidth, &check, opt.widget);
    const int h = style->pixelMetric(QStyle::PM_IndicatorHeight, &check, opt.widget);
    check.rect = QRect(opt.rect.left() + (opt.rect.width() - w) / 2,
                       opt.rect.top() + (opt.rect.height() - h) / 2, w, h);
    check.state =
        (opt.state & QStyle::State_Enabled) |
        (state.value<Qt::CheckState>() == Qt::Checked ? QStyle::State_On : QStyle::State_Off);
    style->drawPrimitive(QStyle::PE_IndicatorCheckBox, &check, painter, opt.widget);
}

bool CheckDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
                                const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (!(index.flags() & Qt::ItemIsUserCheckable) || !(index.flags() & Qt::ItemIsEnabled))
        return false;
    const bool click =
        event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton &&
        option.rect.contains(static_cast<QMouseEvent *>(event)->position().toPoint());
    if (event->type() == QEvent::MouseButtonDblClick)
        return true; // a fast second click toggles again through its own release
    if (!click)
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    const bool checked = index.data(Qt::CheckStateRole).value<Qt::CheckState>() == Qt::Checked;
    return model->setData(index, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

} // namespace duomir
