#pragma once

#include "ui/panel/Component.h"

class QHBoxLayout;
class QVBoxLayout;

namespace orbitledge::ui {

class CompactIconButton;
class PlainButton;
class ThemedLabel;

/// There is a newer version of the program.
class PanelUpdateRow : public Component {
    Q_OBJECT

public:
    explicit PanelUpdateRow(QWidget *parent = nullptr);

    void setVersion(const QString &version);

Q_SIGNALS:
    void openRequested();
    void dismissRequested();

protected:
    void measure() final;

private:
    QVBoxLayout *m_around;
    QHBoxLayout *m_row;
    ThemedLabel *m_text;
    PlainButton *m_open;
    CompactIconButton *m_dismiss;
};

} // namespace orbitledge::ui
