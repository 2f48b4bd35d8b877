#pragma once

#include "ui/panel/Component.h"

class QVBoxLayout;

namespace orbitledge::ui {

/// A screen whose few things stand below each other in its middle.
class CenteredPanel : public Component {
    Q_OBJECT

public:
    explicit CenteredPanel(QWidget *parent = nullptr);

protected:
    /// `gap` before it, in the design's pixels.
    void add(QWidget *widget, qreal gap);

    void measure() override;

private:
    struct Gap {
        int position = 0;
        qreal measure = 0;
    };

    QVBoxLayout *m_column;
    QList<Gap> m_gaps;
};

} // namespace orbitledge::ui
