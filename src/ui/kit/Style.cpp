#include "ui/kit/Style.h"

#include "ui/kit/ControlPainting.h"
#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Symbols.h"
#include "ui/kit/Typography.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleFactory>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace orbitledge::ui {

namespace {

constexpr int scrollBarExtent = 10;
constexpr int shortestThumb = 24;
constexpr qreal listItemHeight = 28;
/// In a field to choose from: before the text, and after it.
constexpr qreal fieldInset = 8;
constexpr qreal chevronRoom = 28;
/// What the toolkit keeps free around the text.
constexpr qreal fieldSlack = 8;
/// Between a label and the ring around it.
constexpr qreal ringRoom = 4;
/// As long as a change of screens takes.
constexpr int animationDuration = 180;

QRect scrollBarRect(const QStyleOptionSlider &bar, QStyle::SubControl part)
{
    const bool isFlat = bar.orientation == Qt::Horizontal;
    const int length = isFlat ? bar.rect.width() : bar.rect.height();
    const qint64 range = qint64{bar.maximum} - bar.minimum;
    const qint64 share
        = range + bar.pageStep > 0 ? qint64{length} * bar.pageStep / (range + bar.pageStep) : length;
    const int thumb = std::clamp(static_cast<int>(share), std::min(shortestThumb, length), length);
    const int start = QStyle::sliderPositionFromValue(
        bar.minimum, bar.maximum, bar.sliderPosition, length - thumb, bar.upsideDown);
    const auto stretch = [&](int from, int to) {
        const QRect rect = isFlat
            ? QRect(bar.rect.left() + from, bar.rect.top(), to - from, bar.rect.height())
            : QRect(bar.rect.left(), bar.rect.top() + from, bar.rect.width(), to - from);
        return QStyle::visualRect(bar.direction, bar.rect, rect);
    };
    switch (part) {
    case QStyle::SC_ScrollBarGroove:
        return bar.rect;
    case QStyle::SC_ScrollBarSlider:
        return stretch(start, start + thumb);
    case QStyle::SC_ScrollBarSubPage:
        return stretch(0, start);
    case QStyle::SC_ScrollBarAddPage:
        return stretch(start + thumb, length);
    default:
        return {};
    }
}

bool asksForField(const QWidget *widget)
{
    return qobject_cast<const QComboBox *>(widget) || qobject_cast<const QAbstractSpinBox *>(widget);
}

} // namespace

Style::Style(Motion motion)
    : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion")))
    , m_motion(motion)
{
}

void Style::setMotion(Motion motion)
{
    if (motion == std::exchange(m_motion, motion))
        return;
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        if (widget->style() != this)
            continue;
        QEvent change(QEvent::StyleChange);
        QApplication::sendEvent(widget, &change);
    }
}

int Style::styleHint(
    StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *returnData) const
{
    switch (hint) {
    case SH_Widget_Animation_Duration:
        return m_motion == Motion::Reduced ? 0 : animationDuration;
    // Lists drop down under their field rather than over it.
    case SH_ComboBox_Popup:
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_DialogButtonBox_ButtonsHaveIcons:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

int Style::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return scrollBarExtent;
    case PM_ScrollBarSliderMin:
        return shortestThumb;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
        return qRound(atScale(widget, 16));
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return qRound(atScale(widget, 8));
    case PM_FocusFrameHMargin:
        return qRound(atScale(widget, 6));
    case PM_ToolTipLabelFrameWidth:
        return 5;
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuVMargin:
        return qRound(atScale(widget, 4));
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QSize Style::sizeFromContents(
    ContentsType type, const QStyleOption *option, const QSize &size, const QWidget *widget) const
{
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    const int height = qRound(atScale(widget, controlHeight));
    switch (type) {
    case CT_ComboBox:
    case CT_SpinBox:
        result = QSize(size.width() + qRound(atScale(widget, fieldInset + chevronRoom + fieldSlack)),
            std::max(size.height(), height));
        break;
    case CT_LineEdit:
        result.setHeight(std::max(result.height(), height));
        break;
    case CT_PushButton:
        result.setHeight(std::max(result.height(), height));
        result.rwidth() += 2 * qRound(atScale(widget, 8));
        break;
    case CT_ItemViewItem:
        result.setHeight(std::max(result.height(), qRound(atScale(widget, listItemHeight))));
        break;
    case CT_CheckBox:
    case CT_RadioButton:
        result.rwidth() += qRound(atScale(widget, ringRoom));
        break;
    default:
        break;
    }
    return result;
}

QRect Style::subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const
{
    const QRect rect = QProxyStyle::subElementRect(element, option, widget);
    const int room = qRound(atScale(widget, ringRoom));
    return element == SE_CheckBoxFocusRect || element == SE_RadioButtonFocusRect
        ? rect.adjusted(-room, 0, room, 0)
        : rect;
}

QRect Style::subControlRect(
    ComplexControl control, const QStyleOptionComplex *option, SubControl part, const QWidget *widget) const
{
    const bool isEditField = (control == CC_ComboBox && part == SC_ComboBoxEditField)
        || (control == CC_SpinBox && part == SC_SpinBoxEditField);
    if (isEditField && option) {
        const int chevron = qRound(atScale(widget, chevronRoom));
        // What is in a spin box, or in a day that looks like a combo box, has a margin of its own.
        const bool hasMargin = control == CC_SpinBox || qobject_cast<const QAbstractSpinBox *>(widget);
        const int inset = qRound(atScale(widget, fieldInset)) + (hasMargin ? 0 : 1);
        return visualRect(option->direction, option->rect, option->rect.adjusted(inset, 2, -chevron, -2));
    }
    if (control == CC_SpinBox && option && (part == SC_SpinBoxUp || part == SC_SpinBoxDown)) {
        const int steps = qRound(atScale(widget, chevronRoom));
        const int middle = option->rect.height() / 2;
        const QRect all = option->rect.adjusted(option->rect.width() - steps, 2, -2, -2);
        const QRect half
            = part == SC_SpinBoxUp ? all.adjusted(0, 0, 0, 2 - middle) : all.adjusted(0, middle - 2, 0, 0);
        return visualRect(option->direction, option->rect, half);
    }
    const auto *const bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control != CC_ScrollBar || !bar)
        return QProxyStyle::subControlRect(control, option, part, widget);
    return scrollBarRect(*bar, part);
}

void Style::drawPrimitive(
    PrimitiveElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const
{
    switch (element) {
    case PE_PanelLineEdit: {
        const auto *const frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
        // One inside a spin box or a combo box has no frame, and stands on theirs.
        if (frame && frame->lineWidth > 0)
            paintField(*painter, *option, widget, hasFocus(*option));
        return;
    }
    case PE_FrameLineEdit:
        return;
    case PE_FrameFocusRect:
        if (wasReachedByKeyboard(*option))
            paintFrame(*painter, QRectF(option->rect), atScale(widget, smallControlRadius),
                colorOf(Tone::Cyan, colorSchemeOf(*option)), focusRingWidth);
        return;
    case PE_PanelButtonCommand:
        paintPushButton(*painter, *option, widget);
        return;
    case PE_IndicatorCheckBox:
        paintCheckBox(*painter, *option);
        return;
    case PE_IndicatorRadioButton:
        paintRadioButton(*painter, *option);
        return;
    case PE_PanelMenu:
        painter->fillRect(option->rect, option->palette.color(QPalette::Base));
        return;
    case PE_PanelTipLabel:
        painter->fillRect(option->rect, option->palette.color(QPalette::ToolTipBase));
        [[fallthrough]];
    case PE_FrameMenu:
        paintFrame(*painter, QRectF(option->rect), 0, colorOf(Tone::Stroke, colorSchemeOf(*option)), 1);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void Style::drawControl(
    ControlElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const
{
    const auto *const item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (element != CE_MenuItem || !item) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    if (item->menuItemType == QStyleOptionMenuItem::Separator && item->text.isEmpty()) {
        painter->fillRect(QRect(item->rect.left(), item->rect.center().y(), item->rect.width(), 1),
            colorOf(Tone::Stroke, colorSchemeOf(*option)));
        return;
    }
    // A ground as quiet as that of a row, on which a symbol keeps its colour.
    if (item->state.testFlag(State_Selected) && item->state.testFlag(State_Enabled)) {
        const qreal inset = atScale(widget, 4);
        fillRounded(*painter, QRectF(item->rect).adjusted(inset, 0, -inset, 0), atScale(widget, 6),
            colorOf(Tone::Fill, colorSchemeOf(*option)));
    }
    QStyleOptionMenuItem quiet(*item);
    quiet.state.setFlag(State_Selected, false);
    QProxyStyle::drawControl(element, &quiet, painter, widget);
}

void Style::drawComplexControl(
    ComplexControl control, const QStyleOptionComplex *option, QPainter *painter, const QWidget *widget) const
{
    if (const auto *const bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
        bar && control == CC_ScrollBar) {
        paintScrollBar(*painter, *bar, subControlRect(control, option, SC_ScrollBarSlider, widget));
        return;
    }
    if (const auto *const box = qstyleoption_cast<const QStyleOptionComboBox *>(option);
        box && control == CC_ComboBox) {
        if (box->frame)
            paintField(*painter, *option, widget, hasFocus(*option));
        const int side = qRound(atScale(widget, 14));
        const QRect place(option->rect.right() - side - qRound(atScale(widget, 8)),
            option->rect.center().y() - side / 2, side, side);
        const Tone tone = option->state.testFlag(State_Enabled) ? Tone::Slate : Tone::Grey;
        paintSymbol(*painter, Symbol::ChevronDown, visualRect(option->direction, option->rect, place),
            colorOf(tone, colorSchemeOf(*option)));
        return;
    }
    if (const auto *const box = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
        box && control == CC_SpinBox) {
        if (box->frame)
            paintField(*painter, *option, widget, hasFocus(*option));
        if (box->buttonSymbols != QAbstractSpinBox::NoButtons) {
            for (const SubControl part : {SC_SpinBoxUp, SC_SpinBoxDown})
                paintStep(*painter, *box, widget, subControlRect(control, option, part, widget), part);
        }
        return;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

void Style::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    // Menus, dialogs and lists that drop down look like, and are read like, the window they belong to.
    if (widget->isWindow() && widget->parentWidget())
        widget->setAttribute(Qt::WA_WindowPropagation);
    if (asksForField(widget) || qobject_cast<QAbstractButton *>(widget) || qobject_cast<QScrollBar *>(widget)
        || widget->inherits("QLineEdit"))
        widget->setAttribute(Qt::WA_Hover);
}

void Style::unpolish(QWidget *widget)
{
    if (widget->isWindow() && widget->parentWidget())
        widget->setAttribute(Qt::WA_WindowPropagation, false);
    QProxyStyle::unpolish(widget);
}

} // namespace orbitledge::ui
