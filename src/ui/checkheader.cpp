#include "ui/checkheader.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionButton>

namespace duomir {

CheckHeader::CheckHeader(QWidget *parent) : QHeaderView(Qt::Horizontal, parent)
{
    setSectionsClickable(true);
}

void CheckHeader::setChecked(bool checked)
{
    if (m_checked == checked)
        return;
    m_checked = checked;
    viewport()->update();
}

void CheckHeader::paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const
{
    painter->save();
    QHeaderView::paintSection(painter, rect, logicalIndex);
    painter->restore();
    if (logicalIndex != 0)
        return;
    QStyleOptionButton option;
    option.initFrom(this);
    const QRect box = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
    option.rect = QRect(rect.left() + (rect.width() - box.width()) / 2,
                        rect.top() + (rect.height() - box.height()) / 2, box.width(), box.height());
    option.state = QStyle::State_Enabled | (m_checked ? QStyle::State_On : QStyle::State_Off);
    style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, painter, this);
}

void CheckHeader::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && logicalIndexAt(event->position().toPoint()) == 0) {
        m_checked = !m_checked;
        viewport()->update();
        Q_EMIT toggled(m_checked);
        return;
    }
    QHeaderView::mousePressEvent(event);
}

} // namespace duomir
