#pragma once

#include "ui/panel/Component.h"

class QVBoxLayout;

namespace orbitledge::ui {

/// A screen whose few things stand below each other in its middle, and scroll where there is not room for
/// them.
class CenteredPanel : public Component {
    Q_OBJECT

public:
    explicit CenteredPanel(QWidget *parent = nullptr);

protected:
    /// `gap` before it, and how wide what wraps may be, in the design's pixels.
    void add(QWidget *widget, qreal gap, qreal mostWidth = 320);
    /// As wide as there is room.
    void addWide(QWidget *widget, qreal gap);

    void measure() final;

private:
    struct Gap {
        int position = 0;
        qreal measure = 0;
    };
    struct Limit {
        QWidget *widget = nullptr;
        qreal measure = 0;
    };

    /// Where what comes behind it is to be put.
    int addGap(qreal gap);

    QWidget *m_content;
    QVBoxLayout *m_column;
    QList<Gap> m_gaps;
    QList<Limit> m_limits;
};

} // namespace orbitledge::ui
