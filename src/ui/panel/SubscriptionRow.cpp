#include "ui/panel/SubscriptionRow.h"

#include "ui/kit/CompactIconButton.h"
#include "ui/kit/ProgressIndicator.h"
#include "ui/kit/Typography.h"
#include "ui/panel/BrandLogo.h"
#include "ui/panel/RowMeasures.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QGraphicsOpacityEffect>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>

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

bool SubscriptionRow::showsFocusWithin() const
{
    return showsFocusRing() || m_open->showsFocusRing() || m_mutation->showsFocusRing();
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

void SubscriptionRow::withdrawQuestion()
{
    // Perhaps on behalf of one of its own buttons, so that it may not be gone at once.
    if (m_question) {
        m_question->hide();
        m_question->deleteLater();
    }
    if (m_menu)
        m_menu->close();
}

void SubscriptionRow::hideEvent(QHideEvent *event)
{
    ButtonBase::hideEvent(event);
    // With the window the question goes and comes back; without its row there is nothing to ask.
    if (!event->spontaneous() && window()->isVisible())
        withdrawQuestion();
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

} // namespace orbitledge::ui
