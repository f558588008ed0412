#pragma once

#include <QHeaderView>

namespace duomir {

// A horizontal header whose first section is a check box (the file list's "mark all"). A click on
// that section toggles it and emits toggled(); the other sections sort as usual.
class CheckHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit CheckHeader(QWidget *parent = nullptr);

    bool isChecked() const { return m_checked; }
    void setChecked(bool checked);

Q_SIGNALS:
    void toggled(bool checked);

protected:
    void paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    bool m_checked = true;
};

} // namespace duomir
