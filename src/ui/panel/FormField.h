#pragma once

#include "ui/panel/Component.h"

class QVBoxLayout;

namespace orbitledge::ui {

/// A control of a form with its caption above it, which is also its accessible name.
class FormField : public Component {
    Q_OBJECT

public:
    FormField(const QString &name, QWidget *control, QWidget *parent = nullptr);

protected:
    void measure() final;

private:
    QVBoxLayout *m_column;
};

} // namespace orbitledge::ui
