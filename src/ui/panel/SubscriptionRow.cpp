#include "ui/panel/SubscriptionRow.h"

#include "ui/kit/CompactIconButton.h"
#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/ProgressIndicator.h"
#include "ui/kit/TabularText.h"
#include "ui/kit/Typography.h"
#include "ui/panel/BrandLogo.h"
#include "ui/panel/RowMeasures.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QGraphicsOpacityEffect>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

constexpr int motionDuration = 120; // milliseconds

bool moves(const QWidget &widget)
{
    return widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) > 0;
}

} // namespace

SubscriptionRow::SubscriptionRow(RowActions actions, LogoImages *images, QWidget *parent)
    : ButtonBase(parent)
    , m_actions(std::move(actions))
    , m_logo(new BrandLogo(images, this))
    , m_buttons(new QWidget(this))
    , m_open(new CompactIconButton(Symbol::OpenOutside, QString(), u"Open in Web"_s, m_buttons))
    , m_mutation(new CompactIconButton(Symbol::CloseCircle, QString(), QString(), m_buttons))
    , m_progress(new ProgressIndicator(m_buttons))
    , m_fade(new QGraphicsOpacityEffect(m_buttons))
{
    m_fade->setEnabled(false);
    m_buttons->setGraphicsEffect(m_fade);
    m_buttons->hide();
    m_progress->hide();
    // The list brings the keyboard here.
    setFocusPolicy(Qt::ClickFocus);
    for (CompactIconButton *const button : {m_open, m_mutation}) {
        button->setFocusPolicy(Qt::ClickFocus);
        button->installEventFilter(this);
    }
    m_motion.setEasingCurve(QEasingCurve::OutQuad);
    connect(&m_motion, &QVariantAnimation::valueChanged, this,
        [this](const QVariant &value) { setPresence(value.toReal()); });
    connect(this, &SubscriptionRow::clicked, this, [this] { m_actions.openInWeb(m_content.id); });
    connect(m_open, &CompactIconButton::clicked, this, [this] { m_actions.openInWeb(m_content.id); });
    connect(m_mutation, &CompactIconButton::clicked, this, &SubscriptionRow::requestMutation);
}

SubscriptionRow::~SubscriptionRow()
{
    delete m_question;
    delete m_menu;
}

void SubscriptionRow::setContent(const RowContent &content)
{
    const bool isAnother = content.id != m_content.id;
    m_content = content;
    setAccessibleName(content.name);
    setAccessibleDescription(content.accessibleValue + u". "_s + content.accessibleHint);
    m_logo->setContent(content.logo);
    m_open->setAccessibleName(content.openLabel);
    showMutation();
    if (isAnother) {
        delete m_question;
        delete m_menu;
        m_isWorking = false;
        m_motion.stop();
        setPresence(showsActions() ? 1 : 0);
    }
    arrange();
    update();
}

void SubscriptionRow::showMutation()
{
    const bool isUncancel = m_content.mutation == RowContent::Mutation::Uncancel;
    const bool isOffered = m_content.mutation != RowContent::Mutation::None;
    m_mutation->setSymbol(isUncancel ? Symbol::TurnBack : Symbol::CloseCircle);
    m_mutation->setToolTip(isUncancel ? u"Uncancel"_s : u"Cancel"_s);
    m_mutation->setAccessibleName(m_content.mutationLabel);
    // It keeps the keyboard while it works, also while a question is only just closing.
    m_mutation->setVisible(isOffered);
    m_mutation->setBlank(m_isWorking);
    m_progress->setVisible(m_isWorking);
}

bool SubscriptionRow::hasFocusWithin() const
{
    // Also while another window is in front: what is hidden meanwhile would not get it back.
    const QWidget *const focused = window()->focusWidget();
    return focused == this || focused == m_open || focused == m_mutation;
}

bool SubscriptionRow::showsActions() const
{
    return isHovered() || hasFocusWithin() || m_isWorking || isAsking();
}

bool SubscriptionRow::focusNextControl(bool next)
{
    // Who is quicker than the motion that brings the buttons does not wait for its first picture.
    if (hasFocusWithin() && !m_buttons->isVisibleTo(this)) {
        m_motion.stop();
        setPresence(1);
    }
    QList<QWidget *> controls{this, m_open, m_mutation};
    controls.removeIf(
        [this](const QWidget *control) { return control != this && !control->isVisibleTo(this); });
    const qsizetype target = controls.indexOf(QApplication::focusWidget()) + (next ? 1 : -1);
    if (target < 0 || target >= controls.size())
        return false;
    controls[target]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

QSize SubscriptionRow::sizeHint() const
{
    return {scaled(*this, 360), scaled(*this, row::height)};
}

// ---- attention -------------------------------------------------------------------------------------------

bool SubscriptionRow::event(QEvent *event)
{
    const bool isTaken = ButtonBase::event(event);
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverLeave:
    case QEvent::Enter:
    case QEvent::Leave:
        followAttention();
        break;
    case QEvent::FocusIn:
        Q_EMIT entered();
        [[fallthrough]];
    case QEvent::FocusOut:
        followAttention();
        break;
    default:
        break;
    }
    return isTaken;
}

bool SubscriptionRow::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::FocusIn:
        Q_EMIT entered();
        [[fallthrough]];
    case QEvent::FocusOut:
        // When it has come, or gone.
        QMetaObject::invokeMethod(this, "followAttention", Qt::QueuedConnection);
        break;
    case QEvent::KeyPress:
        if (auto *const key = dynamic_cast<QKeyEvent *>(event); key != nullptr && takeKey(*key))
            return true;
        break;
    default:
        break;
    }
    return ButtonBase::eventFilter(watched, event);
}

void SubscriptionRow::followAttention()
{
    const qreal wanted = showsActions() ? 1 : 0;
    m_motion.stop();
    if (qFuzzyCompare(wanted + 1, m_presence + 1))
        return;
    if (!isVisible() || !moves(*this)) {
        setPresence(wanted);
        return;
    }
    m_motion.setStartValue(m_presence);
    m_motion.setEndValue(wanted);
    m_motion.setDuration(static_cast<int>(motionDuration * std::abs(wanted - m_presence)));
    m_motion.start();
}

void SubscriptionRow::setPresence(qreal presence)
{
    m_presence = presence;
    const bool isThere = presence > 0;
    if (m_buttons->isVisibleTo(this) != isThere)
        m_buttons->setVisible(isThere);
    m_fade->setEnabled(isThere && presence < 1);
    m_fade->setOpacity(presence);
    update();
}

// ---- keys ------------------------------------------------------------------------------------------------

bool SubscriptionRow::takeKey(QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        Q_EMIT moveRequested(event.key());
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
        focusNextControl((event.key() == Qt::Key_Right) == (layoutDirection() == Qt::LeftToRight));
        return true;
    case Qt::Key_F10:
        // On keyboards without the other key; here the toolkit leaves it to us.
        if (event.modifiers() != Qt::ShiftModifier)
            return false;
        [[fallthrough]];
    case Qt::Key_Menu:
        openContextMenu(mapToGlobal(rect().center()));
        return true;
    default:
        return false;
    }
}

void SubscriptionRow::keyPressEvent(QKeyEvent *event)
{
    if (!takeKey(*event))
        ButtonBase::keyPressEvent(event);
}

// ---- what can be done ------------------------------------------------------------------------------------

void SubscriptionRow::contextMenuEvent(QContextMenuEvent *event)
{
    openContextMenu(
        event->reason() == QContextMenuEvent::Keyboard ? mapToGlobal(rect().center()) : event->globalPos());
}

void SubscriptionRow::openContextMenu(QPoint globalPosition)
{
    delete m_menu;
    m_menu = new QMenu(this);
    m_menu->setAttribute(Qt::WA_DeleteOnClose);
    m_menu->addAction(u"Open in Web"_s, this, [this] { m_actions.openInWeb(m_content.id); });
    if (m_content.mutation == RowContent::Mutation::Uncancel)
        m_menu->addAction(u"Uncancel"_s, this, &SubscriptionRow::requestMutation);
    else if (m_content.mutation == RowContent::Mutation::Cancel)
        m_menu->addAction(u"Cancel\u2026"_s, this, &SubscriptionRow::requestMutation);
    connect(m_menu, &QObject::destroyed, this, &SubscriptionRow::followAttention, Qt::QueuedConnection);
    m_menu->popup(globalPosition);
}

void SubscriptionRow::requestMutation()
{
    if (m_isWorking)
        return;
    if (m_content.mutation == RowContent::Mutation::Uncancel)
        run(m_actions.uncancel);
    else if (m_content.mutation == RowContent::Mutation::Cancel)
        askBeforeCancelling();
}

void SubscriptionRow::askBeforeCancelling()
{
    if (m_question && m_question->isVisible())
        return;
    delete m_question; // one that is answered, and would go soon
    const CancellationQuestion question = cancellationQuestion(m_content.name);
    auto *const box = new QMessageBox(window());
    m_question = box;
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(question.title);
    box->setTextFormat(Qt::PlainText);
    box->setText(question.title);
    box->setInformativeText(question.message);
    const QPushButton *const confirm = box->addButton(question.confirm, QMessageBox::DestructiveRole);
    QPushButton *const keep = box->addButton(question.keep, QMessageBox::RejectRole);
    box->setDefaultButton(keep);
    box->setEscapeButton(keep);
    connect(confirm, &QPushButton::clicked, this, [this] { run(m_actions.cancel); });
    connect(box, &QObject::destroyed, this, &SubscriptionRow::followAttention, Qt::QueuedConnection);
    box->open();
}

void SubscriptionRow::run(const std::function<QCoro::Task<void>(QUuid)> &action)
{
    if (m_isWorking)
        return;
    setWorking(true);
    awaitEnd(this, action(m_content.id));
}

QCoro::Task<void> SubscriptionRow::awaitEnd(QPointer<SubscriptionRow> row, QCoro::Task<void> task)
{
    const QUuid id = row->m_content.id;
    co_await task;
    if (row && row->m_content.id == id)
        row->setWorking(false);
}

void SubscriptionRow::setWorking(bool isWorking)
{
    m_isWorking = isWorking;
    showMutation();
    followAttention();
}

// ---- how it looks ----------------------------------------------------------------------------------------

qreal SubscriptionRow::trailingWidth() const
{
    const qreal cost
        = TabularText(m_content.cost, fontOf(*this, row::costSize, QFont::DemiBold)).size().width();
    return std::max<qreal>(scaled(*this, row::trailingWidth), std::ceil(cost));
}

void SubscriptionRow::arrange()
{
    const auto place = [this](QWidget &widget, const QRect &area) {
        widget.setGeometry(QStyle::visualRect(layoutDirection(), rect(), area));
    };
    const QSize logo = m_logo->sizeHint();
    place(*m_logo, QRect(QPoint(scaled(*this, row::logoLeft), (height() - logo.height()) / 2), logo));

    const QSize button = m_open->sizeHint();
    const int gap = scaled(*this, 2);
    const bool hasMutation = m_mutation->isVisibleTo(m_buttons) || m_progress->isVisibleTo(m_buttons);
    const int wide = hasMutation ? 2 * button.width() + gap : button.width();
    place(*m_buttons,
        QRect(width() - scaled(*this, row::trailingInset - 4) - wide, (height() - button.height()) / 2, wide,
            button.height()));
    const auto placeButton = [&](QWidget &widget, int left, const QSize &size) {
        const QRect area(
            QPoint(left + (button.width() - size.width()) / 2, (button.height() - size.height()) / 2), size);
        widget.setGeometry(QStyle::visualRect(layoutDirection(), QRect(QPoint(), m_buttons->size()), area));
    };
    placeButton(*m_open, 0, button);
    placeButton(*m_mutation, button.width() + gap, button);
    placeButton(*m_progress, button.width() + gap, m_progress->sizeHint());
}

void SubscriptionRow::resizeEvent(QResizeEvent *event)
{
    ButtonBase::resizeEvent(event);
    arrange();
}

void SubscriptionRow::changeEvent(QEvent *event)
{
    ButtonBase::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        arrange();
}

void SubscriptionRow::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    QPainter painter(this);
    painter.setOpacity(m_presence);
    painter.fillRect(rect(), colorOf(Tone::Veil, colorScheme));
    if (isDown())
        painter.fillRect(rect(), colorOf(Tone::Veil, colorScheme));
    painter.setOpacity(1);

    if (m_content.urgency != Urgency::None) {
        const int high = scaled(*this, row::barHeight);
        const QRect bar(0, (height() - high) / 2, scaled(*this, row::barWidth), high);
        // Round on the side of the text only: the other end is beyond the edge.
        const int radius = scaled(*this, 2);
        fillRounded(painter, QStyle::visualRect(layoutDirection(), rect(), bar.adjusted(-radius, 0, 0, 0)),
            radius, colorOf(m_content.urgency == Urgency::Urgent ? Tone::Red : Tone::Amber, colorScheme));
    }
    paintTexts(painter);
    if (showsFocusRing())
        paintFrame(painter, QRectF(rect()).adjusted(2, 1, -2, -1), scaled(*this, controlRadius),
            colorOf(Tone::Cyan, colorScheme), focusRingWidth);
}

void SubscriptionRow::paintTexts(QPainter &painter) const
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const Qt::Alignment leading = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeading);
    const auto visual = [this](const QRectF &area) {
        return layoutDirection() == Qt::LeftToRight
            ? area
            : QRectF(width() - area.right(), area.top(), area.width(), area.height());
    };

    const QFont costFont = fontOf(*this, row::costSize, QFont::DemiBold);
    const TabularText cost(m_content.cost, costFont);
    const qreal right = width() - scaled(*this, row::trailingInset);
    painter.setPen(colorOf(m_content.isActive ? Tone::InkAndWhite : Tone::Slate, colorScheme));
    painter.setOpacity(1 - m_presence);
    const QRectF costArea(right - cost.size().width(), (height() - cost.size().height()) / 2,
        cost.size().width(), cost.size().height());
    cost.draw(painter, visual(costArea).topLeft());
    painter.setOpacity(1);

    // The name gives way to whatever stands behind it, and does not move when that changes.
    const qreal buttons = m_buttons->width() - scaled(*this, 4);
    const qreal left = scaled(*this, row::textLeft);
    const qreal room
        = right - std::max(trailingWidth(), m_presence > 0 ? buttons : 0) - scaled(*this, row::gap) - left;
    const QFont nameFont = fontOf(*this, row::nameSize, QFont::DemiBold);
    const QFont subtitleFont = fontOf(*this, row::subtitleSize);
    const QFontMetricsF name(nameFont);
    const QFontMetricsF subtitle(subtitleFont);
    const qreal top = (height() - name.height() - subtitle.height()) / 2;
    const auto draw = [&](const QFont &font, const QFontMetricsF &metrics, qreal lineTop, const QString &text,
                          Tone tone) {
        painter.setFont(font);
        painter.setPen(colorOf(tone, colorScheme));
        painter.drawText(visual(QRectF(left, lineTop, room, metrics.height())),
            static_cast<int>(leading) | Qt::TextSingleLine | Qt::TextDontClip,
            metrics.elidedText(text, Qt::ElideRight, room));
    };
    draw(nameFont, name, top, m_content.name, m_content.isActive ? Tone::InkAndWhite : Tone::Slate);
    draw(subtitleFont, subtitle, top + name.height(), m_content.subtitle, Tone::Slate);
}

} // namespace orbitledge::ui
