#include "ui/settings/SettingsWindow.h"

#include "ui/kit/Accessibility.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QHideEvent>
#include <QRegularExpression>
#include <QScreen>
#include <QShortcut>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

QRect roomAt(const QPoint &point)
{
    const QScreen *const screen = QGuiApplication::screenAt(point);
    return (screen != nullptr ? screen : QGuiApplication::primaryScreen())->availableGeometry();
}

std::optional<QRect> rectFrom(const QString &placement)
{
    static const QRegularExpression form(u"^(-?\\d{1,5}) (-?\\d{1,5}) (\\d{1,5}) (\\d{1,5})$"_s);
    const QRegularExpressionMatch match = form.match(placement);
    if (!match.hasMatch())
        return std::nullopt;
    return QRect(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt(),
        match.captured(4).toInt());
}

QRect broughtInto(const QRect &room, const QRect &place)
{
    QRect result(place.topLeft(), place.size().boundedTo(room.size()));
    result.moveLeft(std::clamp(result.left(), room.left(), room.right() + 1 - result.width()));
    result.moveTop(std::clamp(result.top(), room.top(), room.bottom() + 1 - result.height()));
    return result;
}

} // namespace

SettingsWindow::SettingsWindow(QWidget *content)
    : m_content(content)
{
    setWindowTitle(u"Orbitledge Settings"_s);
    setAccessibleRole(*this, QAccessible::Window);
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
        | Qt::WindowCloseButtonHint);
    setAttribute(Qt::WA_QuitOnClose, false);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    layout->addWidget(content);
    for (const QKeySequence &keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)})
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::hide);
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), this), &QShortcut::activated, this,
        &SettingsWindow::quitRequested);
}

void SettingsWindow::place(const QString &remembered)
{
    limit();
    const std::optional<QRect> before = rectFrom(remembered);
    if (before && QGuiApplication::screenAt(before->center()) != nullptr) {
        setGeometry(broughtInto(roomAt(before->center()), *before));
        return;
    }
    const QRect room = roomAt(QCursor::pos());
    // The window system's frame needs some of it too.
    constexpr int frame = 48;
    const QSize size = m_content->sizeHint().boundedTo(room.size() - QSize(frame, frame));
    resize(size);
    move(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, room).topLeft());
}

QString SettingsWindow::placement() const
{
    const QRect place = geometry();
    return u"%1 %2 %3 %4"_s.arg(place.x()).arg(place.y()).arg(place.width()).arg(place.height());
}

void SettingsWindow::limit()
{
    setMinimumSize(m_content->minimumSizeHint().boundedTo(roomAt(geometry().center()).size()));
}

void SettingsWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        Q_EMIT activated();
    else if (event->type() == QEvent::FontChange)
        limit();
}

void SettingsWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        Q_EMIT hidden();
}

} // namespace orbitledge::ui
