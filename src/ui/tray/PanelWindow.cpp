#include "ui/tray/PanelWindow.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/tray/Compositing.h"
#include "ui/tray/DockWindows.h"
#include "ui/tray/TrayHost.h"
#include "ui/tray/WindowActivation.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QShortcut>
#include <QWindow>

#include <chrono>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Focus wanders for a moment when windows come and go.
constexpr auto leaveGrace = 150ms;
/// From closing on loss of focus to the click that caused the loss.
constexpr auto clickGrace = 300ms;

/// Screens begin at the pixel at which they begin for the server, and from there count larger ones.
QRect fromPixels(const QRect &place, const QScreen &screen)
{
    const QPoint origin = screen.geometry().topLeft();
    const qreal ratio = screen.devicePixelRatio();
    const QPointF corner = QPointF(place.topLeft() - origin) / ratio;
    return QRectF(corner + origin, QSizeF(place.size()) / ratio).toAlignedRect();
}

/// Where there is more than one screen, the toolkit knows of no room that bars keep for themselves. So the
/// bar that the panel is asked for at is looked for.
QList<ScreenArea> screenAreas(QPoint askedAt)
{
    const QList<QRect> bars = dockWindows();
    QList<ScreenArea> areas;
    for (const QScreen *screen : QGuiApplication::screens()) {
        QRect available = screen->availableGeometry();
        for (const QRect &pixels : bars) {
            const QRect bar = fromPixels(pixels, *screen);
            if (screen->geometry().contains(askedAt) && bar.contains(askedAt))
                available = beside(bar, available);
        }
        areas.append({.geometry = screen->geometry(), .available = available});
    }
    return areas;
}

} // namespace

/// Lies over the content: takes its corners off where the window can do without them, and draws the line
/// around it.
class PanelWindow::Edge : public QWidget {
public:
    explicit Edge(PanelWindow &window)
        : QWidget(&window)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
    }

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        QPainter painter(this);
        const bool isRound = window()->testAttribute(Qt::WA_TranslucentBackground);
        const qreal radius = isRound ? cornerRadius : 0;
        if (isRound) {
            painter.setRenderHint(QPainter::Antialiasing);
            QPainterPath outside;
            outside.addRect(rect());
            QPainterPath inside;
            inside.addRoundedRect(rect(), radius, radius);
            painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
            painter.fillPath(outside - inside, Qt::black);
            painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        }
        paintFrame(painter, rect(), radius, colorOf(Tone::Stroke, colorSchemeOf(palette())), 1);
    }
};

PanelWindow::PanelWindow(QWidget *content)
    : m_content(content)
    , m_edge(new Edge(*this))
{
    setWindowTitle(u"Orbitledge"_s);
    setAccessibleRole(*this, QAccessible::Window);
    setAttribute(Qt::WA_QuitOnClose, false);
    setFixedSize(panelSize);
    m_content->setParent(this);
    m_edge->raise();

    m_leaveGrace.setSingleShot(true);
    m_leaveGrace.setInterval(leaveGrace);
    connect(&m_leaveGrace, &QTimer::timeout, this, &PanelWindow::closeIfLeft);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &PanelWindow::followFocus);
    connect(new QShortcut(QKeySequence(u"Ctrl+W"_s), this), &QShortcut::activated, this, &QWidget::hide);
    connect(new QShortcut(QKeySequence(u"Ctrl+Q"_s), this), &QShortcut::activated, this,
        &PanelWindow::quitRequested);
}

PanelWindow::Manner PanelWindow::mannerFor(bool isIconShown)
{
    return isIconShown && TrayHost::windowsAreOnX11() ? Manner::Popup : Manner::Window;
}

void PanelWindow::takeManner()
{
    const bool isPopup = m_manner == Manner::Popup;
    const Qt::WindowFlags flags = isPopup ? Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint
                                          : Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint
            | Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;
    const bool isTranslucent = isPopup && isComposited();
    if (m_takenManner == m_manner && testAttribute(Qt::WA_TranslucentBackground) == isTranslucent)
        return;
    m_takenManner = m_manner;
    setAttribute(Qt::WA_TranslucentBackground, isTranslucent);
    // The system's window is another one from here on, since only a new one can be translucent.
    destroy();
    setWindowFlags(flags);
}

void PanelWindow::showAt(const PanelAnchor &anchor, const QString &activationToken)
{
    m_leaveGrace.stop();
    const bool isOpened = !isVisible() || isMinimized();
    if (!isVisible()) {
        m_hadFocus = false;
        m_hadPointer = false;
        takeManner();
        if (m_manner == Manner::Popup)
            move(placePanel(anchor, screenAreas(spotOf(anchor).center()), panelSize));
        show();
    }
    if (isMinimized())
        showNormal();
    if (isOpened)
        Q_EMIT shown();
    bringForward(*this, activationToken);
}

void PanelWindow::toggle(const PanelAnchor &anchor)
{
    const bool wasClosedByThisClick = m_sinceLeft.isValid() && !m_sinceLeft.hasExpired(clickGrace.count());
    m_sinceLeft.invalidate();
    if (isVisible() && !isMinimized())
        hide();
    else if (!wasClosedByThisClick)
        showAt(anchor);
}

void PanelWindow::followFocus()
{
    if (isActiveWindow())
        m_hadFocus = true;
    if (isLeft())
        m_leaveGrace.start();
    else
        m_leaveGrace.stop();
}

bool PanelWindow::isLeft() const
{
    return m_takenManner == Manner::Popup && isVisible() && m_hadFocus && m_hadPointer && !isActiveWindow()
        && QApplication::activePopupWidget() == nullptr && QApplication::activeModalWidget() == nullptr;
}

void PanelWindow::closeIfLeft()
{
    if (!isLeft())
        return;
    hide();
    m_sinceLeft.start();
}

void PanelWindow::paintEvent(QPaintEvent * /*event*/)
{
    QPainter(this).fillRect(rect(), colorOf(Tone::Paper, colorSchemeOf(palette())));
}

void PanelWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape || event->modifiers() != Qt::NoModifier) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (!m_takesEscape || !m_takesEscape())
        hide();
}

void PanelWindow::enterEvent(QEnterEvent *event)
{
    QWidget::enterEvent(event);
    m_hadPointer = true;
}

void PanelWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange)
        followFocus();
}

void PanelWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_leaveGrace.stop();
    if (event->spontaneous())
        return;
    m_hadFocus = false;
    m_hadPointer = false;
    Q_EMIT hidden();
}

void PanelWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_content->setGeometry(rect());
    m_edge->setGeometry(rect());
}

} // namespace orbitledge::ui
