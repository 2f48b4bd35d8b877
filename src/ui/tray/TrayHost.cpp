#include "ui/tray/TrayHost.h"

#include <QGuiApplication>
#include <QPointer>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

constexpr auto embedderSelection = "_NET_SYSTEM_TRAY_S";

} // namespace

TrayHost::TrayHost(bool hasX11, QObject *parent)
    : QObject(parent)
{
    if (hasX11)
        m_embedder = std::make_unique<X11SelectionWatch>(embedderSelection);
}

bool TrayHost::windowsAreOnX11()
{
    return QGuiApplication::platformName() == "xcb"_L1;
}

std::optional<bool> TrayHost::hasEmbedderNow()
{
    return X11SelectionWatch::isOwnedNow(embedderSelection);
}

void TrayHost::start()
{
    find();
}

QCoro::Task<> TrayHost::find()
{
    const QPointer<TrayHost> self(this);
    // Both at once; whoever comes back first waits for the other, since one host may be of both kinds.
    auto asking = m_notifier.start();
    if (m_embedder) {
        auto looking = m_embedder->start();
        co_await looking;
    }
    co_await asking;
    if (!self)
        co_return;
    m_isKnown = true;
    connect(&m_notifier, &NotifierHostWatch::changed, this, &TrayHost::changed);
    if (m_embedder)
        connect(m_embedder.get(), &X11SelectionWatch::changed, this, &TrayHost::changed);
    Q_EMIT known();
    if (self && kind() != Kind::None)
        Q_EMIT changed();
}

TrayHost::Kind TrayHost::kind() const
{
    if (has(Kind::Notifier))
        return Kind::Notifier;
    return has(Kind::Embedder) ? Kind::Embedder : Kind::None;
}

bool TrayHost::has(Kind kind) const
{
    if (!m_isKnown)
        return false;
    switch (kind) {
    case Kind::None:
        return false;
    case Kind::Notifier:
        return m_notifier.hasHost();
    case Kind::Embedder:
        return m_embedder && m_embedder->isOwned();
    }
    Q_UNREACHABLE();
}

} // namespace orbitledge::ui
