#pragma once

#include "ui/panel/CenteredPanel.h"

namespace orbitledge::ui {

/// Nothing is tracked yet.
class EmptyPanel : public CenteredPanel {
    Q_OBJECT

public:
    explicit EmptyPanel(QWidget *parent = nullptr);

Q_SIGNALS:
    void addRequested();
};

} // namespace orbitledge::ui
