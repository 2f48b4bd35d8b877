#pragma once

#include <QWidget>

namespace orbitledge::ui {

/// A part of the panel. Its measures follow the text scale of its window.
class Component : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    /// Brings everything that depends on the text scale in order; to be called once by who derives.
    virtual void measure() = 0;

    void changeEvent(QEvent *event) override;
};

} // namespace orbitledge::ui
