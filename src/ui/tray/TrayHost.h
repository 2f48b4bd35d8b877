#pragma once

#include "ui/tray/NotifierHostWatch.h"
#include "ui/tray/X11SelectionWatch.h"

#include <QCoroTask>
#include <QObject>

#include <memory>
#include <optional>

namespace orbitledge::ui {

/// Tells whether something shows tray icons, and when that comes and goes.
///
/// The toolkit decides once between the two ways to have an icon, the first time that anything of
/// QSystemTrayIcon is used. Before this tells of a host, nothing of it may be.
class TrayHost : public QObject {
    Q_OBJECT

public:
    enum class Kind {
        None,
        /// Draws what it is sent over the session bus (StatusNotifierItem).
        Notifier,
        /// Takes a window of ours into its own (XEmbed).
        Embedder,
    };

    /// `hasX11` is whether windows are shown by X11. XEmbed of the X server within a Wayland session is of no
    /// use to windows that are not its own.
    explicit TrayHost(bool hasX11, QObject *parent = nullptr);

    /// Whether this program's windows are shown by X11.
    static bool windowsAreOnX11();

    /// Whether the X server has one of the kind Embedder, for who has no application object. Waits for the
    /// server; absent where there is none.
    static std::optional<bool> hasEmbedderNow();

    /// Asks, and follows from then on; `known` comes when it is clear whether there is one. Call it once.
    void start();

    [[nodiscard]] bool isKnown() const { return m_isKnown; }
    /// Notifier where there are both. None until it is known.
    [[nodiscard]] Kind kind() const;
    [[nodiscard]] bool has(Kind kind) const;

Q_SIGNALS:
    void known();
    void changed();

private:
    QCoro::Task<> find();

    NotifierHostWatch m_notifier;
    std::unique_ptr<X11SelectionWatch> m_embedder;
    bool m_isKnown = false;
};

} // namespace orbitledge::ui
