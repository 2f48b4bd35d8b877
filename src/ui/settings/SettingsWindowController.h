#pragma once

#include "platform/UserDefaults.h"
#include "presentation/SettingsContent.h"
#include "state/AppStore.h"

#include <QObject>

#include <functional>
#include <memory>

namespace orbitledge::ui {

class SettingsView;
class SettingsWindow;

/// The one window of the settings: made when it is first asked for, hidden when it is closed, and where it
/// was when it is shown again, also by the next run.
class SettingsWindowController : public QObject {
    Q_OBJECT

public:
    struct Parts {
        std::shared_ptr<AppStore> store;
        /// May be absent; then nothing is remembered.
        std::shared_ptr<UserDefaults> defaults = nullptr;
        Locale locale;
        AboutProgram about = {};
        /// Gives a window its appearance, now and later.
        std::function<void(QWidget *window)> dress;
    };

    explicit SettingsWindowController(Parts parts);
    ~SettingsWindowController() override;

    /// Also brings it to the front where it is shown already.
    void show();

    /// Absent as long as it was not shown.
    [[nodiscard]] SettingsWindow *window() const { return m_window.get(); }

Q_SIGNALS:
    void quitRequested();

private:
    void make();
    void remember() const;

    Parts m_parts;
    SettingsView *m_view = nullptr;
    std::unique_ptr<SettingsWindow> m_window;
};

} // namespace orbitledge::ui
