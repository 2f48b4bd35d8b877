#pragma once

#include "presentation/SettingsContent.h"
#include "state/AppStore.h"
#include "ui/panel/Component.h"

class QScrollArea;
class QVBoxLayout;

namespace orbitledge::ui {

class SettingsSection;

/// Everything that can be set, as a form that scrolls where there is not room for it.
class SettingsView : public Component {
    Q_OBJECT

public:
    SettingsView(AppStore &store, const Locale &locale, const AboutProgram &about, QWidget *parent = nullptr);

    /// The desktop has a say in some of it, and may have changed its mind.
    void askPlatform();

    /// That of the design, in the text scale of the window.
    QSize sizeHint() const override;
    /// So that nothing is cut off at a side.
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void quitRequested();

protected:
    void measure() override;
    void showEvent(QShowEvent *event) override;

private:
    void add(SettingsSection *section);
    void follow();
    void followAll();
    void reveal(QWidget *note);

    AppStore &m_store;
    QWidget *m_form;
    QVBoxLayout *m_layout;
    QScrollArea *m_scroll;
    QList<SettingsSection *> m_sections;
    bool m_isStale = true;
};

} // namespace orbitledge::ui
