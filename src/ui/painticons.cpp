#include "ui/painticons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <cmath>

namespace duomir {

namespace {

const QColor SourceColour(0x2e, 0x7d, 0x32);      // green: the source sends
const QColor DestinationColour(0xe6, 0x7e, 0x00); // amber: the destination sends
const QColor NeutralColour(0x54, 0x6e, 0x7a);
const QColor DangerColour(0xc6, 0x28, 0x28);

void arrow(QPainter &p, QPointF from, QPointF to, const QColor &colour)
{
    p.setPen(QPen(colour, 2.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawLine(from, to);
    const QPointF dir = (to - from) / std::hypot(to.x() - from.x(), to.y() - from.y());
    const QPointF normal(-dir.y(), dir.x());
    QPainterPath head;
    head.moveTo(to + dir * 1.5);
    head.lineTo(to - dir * 6 + normal * 5);
    head.lineTo(to - dir * 6 - normal * 5);
    head.closeSubpath();
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawPath(head);
}

void page(QPainter &p, QRectF r, const QColor &colour)
{
    QPainterPath path;
    path.moveTo(r.topLeft());
    path.lineTo(r.right() - 4, r.top());
    path.lineTo(r.right(), r.top() + 4);
    path.lineTo(r.bottomRight());
    path.lineTo(r.bottomLeft());
    path.closeSubpath();
    p.setPen(QPen(colour, 1.6));
    p.setBrush(Qt::white);
    p.drawPath(path);
}

void folder(QPainter &p, QRectF r, const QColor &colour, bool filled)
{
    QPainterPath path;
    path.moveTo(r.left(), r.top() + 3);
    path.lineTo(r.left() + r.width() * 0.4, r.top() + 3);
    path.lineTo(r.left() + r.width() * 0.5, r.top() + 6);
    path.lineTo(r.right(), r.top() + 6);
    path.lineTo(r.bottomRight());
    path.lineTo(r.bottomLeft());
    path.closeSubpath();
    p.setPen(QPen(colour.darker(130), 1.6));
    p.setBrush(filled ? colour : QColor(Qt::white));
    p.drawPath(path);
}

// A waste bin whose middle lies at `x`, `scale` of the full glyph's size.
void bin(QPainter &p, qreal x, qreal scale)
{
    p.save();
    p.translate(x, 16);
    p.scale(scale, scale);
    p.translate(-16, -16);
    p.setPen(QPen(DangerColour, 1.8 / scale));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(9, 10, 14, 17));
    p.drawLine(QPointF(6, 8), QPointF(26, 8));
    p.drawLine(QPointF(13, 5), QPointF(19, 5));
    p.drawLine(QPointF(13, 13), QPointF(13, 24));
    p.drawLine(QPointF(19, 13), QPointF(19, 24));
    p.restore();
}

void draw(QPainter &p, Glyph glyph)
{
    switch (glyph) {
    case Glyph::ToDestination:
        arrow(p, {5, 16}, {26, 16}, SourceColour);
        break;
    case Glyph::ToSource:
        arrow(p, {27, 16}, {6, 16}, DestinationColour);
        break;
    case Glyph::BothWays:
        arrow(p, {5, 11}, {26, 11}, SourceColour);
        arrow(p, {27, 21}, {6, 21}, DestinationColour);
        break;
    case Glyph::Identical:
        p.setPen(QPen(NeutralColour, 3, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(8, 12), QPointF(24, 12));
        p.drawLine(QPointF(8, 20), QPointF(24, 20));
        break;
    case Glyph::AllFiles:
        page(p, {9, 4, 16, 20}, NeutralColour);
        page(p, {5, 8, 16, 20}, NeutralColour);
        break;
    case Glyph::OneSide:
        page(p, {4, 7, 11, 16}, NeutralColour);
        p.setPen(QPen(NeutralColour, 1.4, Qt::DashLine));
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRectF(18, 7, 11, 16));
        break;
    case Glyph::BothSides:
        page(p, {4, 7, 11, 16}, NeutralColour);
        page(p, {18, 7, 11, 16}, NeutralColour);
        break;
    case Glyph::EmptyFolder:
        folder(p, {4, 6, 24, 20}, QColor(0xf9, 0xc7, 0x4f), false);
        break;
    case Glyph::Delete:
        bin(p, 16, 1.0);
        break;
    case Glyph::DeleteInSource:
        bin(p, 9, 0.75);
        break;
    case Glyph::DeleteInDestination:
        bin(p, 23, 0.75);
        break;
    case Glyph::Mirror:
        // The sending side's state goes over, and what the receiving side has beyond it goes.
        arrow(p, {3, 16}, {17, 16}, SourceColour);
        bin(p, 25, 0.6);
        break;
    case Glyph::Reverse:
        arrow(p, {26, 11}, {6, 11}, NeutralColour);
        arrow(p, {6, 21}, {26, 21}, NeutralColour);
        break;
    case Glyph::Compare:
        folder(p, {2, 8, 12, 16}, QColor(0xf9, 0xc7, 0x4f), true);
        folder(p, {18, 8, 12, 16}, QColor(0xf9, 0xc7, 0x4f), true);
        p.setPen(QPen(NeutralColour, 2.2, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(14.5, 14), QPointF(17.5, 14));
        p.drawLine(QPointF(14.5, 19), QPointF(17.5, 19));
        break;
    case Glyph::Synchronize:
        arrow(p, {5, 10}, {25, 10}, SourceColour);
        arrow(p, {27, 22}, {7, 22}, DestinationColour);
        break;
    }
}

} // namespace

QIcon glyphIcon(Glyph glyph)
{
    QIcon icon;
    // Each size drawn at its own pixels rather than shrunk from the largest: thin lines stay
    // crisp at 16 pixels.
    for (const int size : {16, 24, 32}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        p.scale(size / 32.0, size / 32.0);
        draw(p, glyph);
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace duomir
