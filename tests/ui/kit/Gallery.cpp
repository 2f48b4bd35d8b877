// Draws the kit's controls in their states, and all symbols, into pictures to be looked at:
//   ui-gallery FOLDER

#include "support/WidgetTestMain.h"
#include "ui/kit/CompactIconButton.h"
#include "ui/kit/DateField.h"
#include "ui/kit/Field.h"
#include "ui/kit/FooterButton.h"
#include "ui/kit/Palette.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/PrimaryButton.h"
#include "ui/kit/ProgressIndicator.h"
#include "ui/kit/RoundedFrame.h"
#include "ui/kit/Symbols.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"

#include <QAbstractItemView>
#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTextStream>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <vector>

using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

enum class State { Plain, Hovered, Pressed, Focused, Disabled };

constexpr std::array states{State::Plain, State::Hovered, State::Pressed, State::Focused, State::Disabled};

void bringInto(State state, QWidget &control)
{
    switch (state) {
    case State::Plain:
        return;
    case State::Hovered:
        control.setAttribute(Qt::WA_UnderMouse);
        return;
    case State::Pressed:
        if (auto *const button = qobject_cast<QAbstractButton *>(&control))
            button->setDown(true);
        return;
    case State::Focused:
        control.activateWindow();
        control.setFocus(Qt::TabFocusReason);
        return;
    case State::Disabled:
        control.setEnabled(false);
        return;
    }
}

struct Manner {
    ColorScheme colorScheme;
    qreal ratio;
    qreal textScale = 1;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

QImage pictureOf(QWidget &window, qreal ratio)
{
    QImage image(window.size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    window.render(&image);
    return image;
}

using Maker = std::function<QWidget *(QWidget *parent)>;

/// A window with one control, so that each may have the focus.
QImage sampleOf(const Maker &make, State state, const Manner &manner)
{
    QWidget window;
    applyColorScheme(window, manner.colorScheme);
    applyTextScale(window, manner.textScale);
    auto *const layout = new QHBoxLayout(&window);
    layout->setContentsMargins(8, 8, 8, 8);
    QWidget *const control = make(&window);
    layout->addWidget(control);
    // Away from where the pointer is.
    window.move(200, 200);
    window.show();
    QApplication::setActiveWindow(&window);
    window.setFocus();
    window.setAttribute(Qt::WA_KeyboardFocusChange, state == State::Focused);
    bringInto(state, *control);
    QApplication::processEvents();
    if (state == State::Hovered)
        control->setAttribute(Qt::WA_UnderMouse);
    return pictureOf(window, manner.ratio);
}

QComboBox *comboBox(QWidget *parent)
{
    auto *const box = new QComboBox(parent);
    box->addItems({u"Monthly"_s, u"Yearly"_s});
    return box;
}

DateField *dateField(QWidget *parent)
{
    return new DateField(QDate(2026, 3, 20), parent);
}

const std::vector<Maker> &controls()
{
    static const std::vector<Maker> makers{
        [](QWidget *parent) { return new PrimaryButton(u"Add a subscription"_s, parent); },
        [](QWidget *parent) {
            auto *const button = new PrimaryButton(u"Retry"_s, parent);
            button->setBusy(u"Retrying"_s);
            return button;
        },
        [](QWidget *parent) { return new FooterButton(Symbol::Plus, u"Add"_s, parent); },
        [](QWidget *parent) { return new FooterButton(Symbol::Calendar, u"Full calendar"_s, parent); },
        [](QWidget *parent) { return new FooterButton(Symbol::Gear, QString(), parent); },
        [](QWidget *parent) { return new PlainButton(u"Sign in instead"_s, parent); },
        [](QWidget *parent) { return new PlainButton(u"Cancel"_s, {13, QFont::Medium, Tone::Ink}, parent); },
        [](QWidget *parent) {
            return new CompactIconButton(Symbol::OpenOutside, u"Open in Web"_s, u"Open in Web"_s, parent);
        },
        [](QWidget *parent) {
            return new CompactIconButton(Symbol::CloseCircle, u"Cancel"_s, u"Cancel"_s, parent);
        },
        [](QWidget *parent) {
            auto *const field = new Field(parent);
            field->setText(u"ada@example.com"_s);
            return field;
        },
        [](QWidget *parent) {
            auto *const field = new Field(parent);
            field->setPlaceholderText(u"Password"_s);
            return field;
        },
        comboBox,
        dateField,
        [](QWidget *parent) {
            auto *const box = new QCheckBox(u"Show a badge"_s, parent);
            box->setChecked(true);
            return box;
        },
        [](QWidget *parent) { return new QCheckBox(u"Start at login"_s, parent); },
        [](QWidget *parent) {
            auto *const button = new QRadioButton(u"Dark"_s, parent);
            button->setChecked(true);
            return button;
        },
        [](QWidget *parent) { return new QRadioButton(u"Light"_s, parent); },
        [](QWidget *parent) {
            auto *const box = new QSpinBox(parent);
            box->setSuffix(u" days"_s);
            return box;
        },
        [](QWidget *parent) { return new QPushButton(u"Keep subscription"_s, parent); },
        [](QWidget *parent) { return new ProgressIndicator(parent); },
        [](QWidget *parent) {
            auto *const bar = new QScrollBar(Qt::Horizontal, parent);
            bar->setRange(0, 100);
            bar->setPageStep(30);
            bar->setFixedWidth(140);
            return bar;
        },
    };
    return makers;
}

QImage stacked(const std::vector<QImage> &images, Qt::Orientation orientation, const QColor &ground)
{
    QSize size(0, 0);
    const qreal ratio = images.front().devicePixelRatio();
    for (const QImage &image : images) {
        size = orientation == Qt::Horizontal
            ? QSize(size.width() + image.width(), std::max(size.height(), image.height()))
            : QSize(std::max(size.width(), image.width()), size.height() + image.height());
    }
    QImage sheet(size, QImage::Format_RGB32);
    sheet.setDevicePixelRatio(ratio);
    sheet.fill(ground);
    QPainter painter(&sheet);
    QPointF corner;
    for (const QImage &image : images) {
        painter.drawImage(corner, image);
        (orientation == Qt::Horizontal ? corner.rx() : corner.ry())
            += (orientation == Qt::Horizontal ? image.width() : image.height()) / ratio;
    }
    return sheet;
}

QImage controlSheet(const Manner &manner)
{
    const QColor ground = colorOf(Tone::Paper, manner.colorScheme);
    std::vector<QImage> columns;
    for (const State state : states) {
        std::vector<QImage> samples;
        for (const Maker &make : controls())
            samples.push_back(sampleOf(make, state, manner));
        columns.push_back(stacked(samples, Qt::Vertical, ground));
    }
    return stacked(columns, Qt::Horizontal, ground);
}

QImage symbolSheet(const Manner &manner)
{
    constexpr std::array sizes{12, 14, 16, 20, 24, 28};
    constexpr int cell = 44;
    QImage sheet(
        QSize(cell * int(allSymbols.size()), cell * int(sizes.size())) * manner.ratio, QImage::Format_RGB32);
    sheet.setDevicePixelRatio(manner.ratio);
    sheet.fill(colorOf(Tone::Paper, manner.colorScheme));
    QPainter painter(&sheet);
    for (std::size_t row = 0; row < sizes.size(); ++row) {
        const int size = sizes.at(row);
        const int inset = (cell - size) / 2;
        for (std::size_t column = 0; column < allSymbols.size(); ++column) {
            const QRectF area(int(column) * cell + inset, int(row) * cell + inset, size, size);
            paintSymbol(painter, allSymbols.at(column), area, colorOf(Tone::Ink, manner.colorScheme));
        }
    }
    return sheet;
}

class SymbolView : public QWidget {
public:
    SymbolView(Symbol symbol, qreal side, Tone tone, QWidget *parent)
        : QWidget(parent)
        , m_symbol(symbol)
        , m_tone(tone)
    {
        setFixedSize(scaled(*this, side), scaled(*this, side));
    }

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        QPainter painter(this);
        paintSymbol(painter, m_symbol, rect(), colorOf(m_tone, colorSchemeOf(palette())));
    }

private:
    Symbol m_symbol;
    Tone m_tone;
};

ThemedLabel *label(const QString &text, qreal size, QFont::Weight weight, Tone tone, qreal tracking = 0)
{
    ThemedLabel::Look look;
    look.designSize = size;
    look.weight = weight;
    look.tone = tone;
    look.tracking = tracking;
    look.digits = ThemedLabel::Digits::Tabular;
    return new ThemedLabel(text, look);
}

void addBanner(QVBoxLayout &page, QWidget *parent)
{
    auto *const banner = new RoundedFrame(parent);
    auto *const line = new QHBoxLayout(banner);
    line->setContentsMargins(10, 2, 4, 2);
    line->setSpacing(8);
    line->addWidget(new SymbolView(Symbol::Offline, 14, Tone::Slate, banner));
    auto *const message = label(u"Offline — showing data from 9:41 AM"_s, 11, QFont::Normal, Tone::Ink);
    ThemedLabel::Look look = message->look();
    look.overflow = ThemedLabel::Overflow::Elide;
    message->setLook(look);
    line->addWidget(message, 1);
    line->addWidget(new PlainButton(u"Retry"_s, {11, QFont::DemiBold, Tone::Cyan}, banner));
    page.addWidget(banner);
}

void addAmounts(QVBoxLayout &page)
{
    page.addWidget(label(u"March 2026"_s, 11, QFont::Normal, Tone::Slate));
    auto *const total = new QHBoxLayout;
    total->addWidget(label(u"$184.32"_s, 26, QFont::Bold, Tone::BlackAndWhite, -0.4));
    total->addWidget(label(u"/ month"_s, 12, QFont::Medium, Tone::Slate), 0, Qt::AlignBottom);
    total->addStretch();
    total->addWidget(label(u"$61.47"_s, 14, QFont::DemiBold, Tone::BlackAndWhite), 0, Qt::AlignBottom);
    page.addLayout(total);
    page.addWidget(label(u"LATER THIS MONTH"_s, 10, QFont::Medium, Tone::Slate, 1.7));
    for (const QString &amount :
        {u"$1,111.11"_s, u"$2,808.40"_s, u"\u0661\u0662\u0663\u066B\u0664\u0665 \u20AC"_s}) {
        auto *const line = new QHBoxLayout;
        line->addWidget(label(u"Tidewater Music"_s, 13, QFont::DemiBold, Tone::Ink));
        line->addStretch();
        line->addWidget(label(amount, 12, QFont::DemiBold, Tone::Ink));
        page.addLayout(line);
    }
}

void addForm(QVBoxLayout &page, QWidget *parent)
{
    auto *const mark = new SymbolView(Symbol::Mark, 34, Tone::Cyan, parent);
    page.addWidget(mark, 0, Qt::AlignHCenter);
    page.addWidget(label(u"ORBITLEDGE"_s, 11, QFont::DemiBold, Tone::Ink, 2.2), 0, Qt::AlignHCenter);
    auto *const email = new Field(parent);
    email->setText(u"ada@example.com"_s);
    page.addWidget(email);
    auto *const password = new Field(parent);
    password->setPlaceholderText(u"Password"_s);
    page.addWidget(password);
    page.addWidget(label(u"The e-mail or the password is wrong."_s, 11, QFont::Normal, Tone::Alert));
    page.addWidget(new PrimaryButton(u"Sign in"_s, parent));
    auto *const boxes = new QHBoxLayout;
    boxes->addWidget(comboBox(parent), 1);
    boxes->addWidget(dateField(parent), 1);
    page.addLayout(boxes);
    email->setFocus(Qt::TabFocusReason);
}

QImage specimen(const Manner &manner)
{
    QWidget window;
    applyColorScheme(window, manner.colorScheme);
    applyTextScale(window, manner.textScale);
    window.setLayoutDirection(manner.direction);
    window.setFixedWidth(qRound(360 * manner.textScale));
    auto *const page = new QVBoxLayout(&window);
    page->setContentsMargins(16, 16, 16, 8);
    page->setSpacing(8);
    addAmounts(*page);
    addBanner(*page, &window);
    addForm(*page, &window);
    auto *const footer = new QHBoxLayout;
    footer->setContentsMargins(-8, 0, -8, 0);
    footer->addWidget(new FooterButton(Symbol::Plus, u"Add"_s));
    footer->addWidget(new FooterButton(Symbol::Calendar, u"Full calendar"_s));
    footer->addStretch();
    footer->addWidget(new FooterButton(Symbol::Gear, QString()));
    page->addLayout(footer);
    window.move(200, 200);
    window.show();
    QApplication::setActiveWindow(&window);
    QApplication::processEvents();
    return pictureOf(window, manner.ratio);
}

QImage menuSample(const Manner &manner)
{
    QWidget window;
    applyColorScheme(window, manner.colorScheme);
    applyTextScale(window, manner.textScale);
    window.show();
    QMenu menu(&window);
    QAction *const first = menu.addAction(
        symbolIcon(Symbol::OpenOutside, colorOf(Tone::Ink, manner.colorScheme)), u"Open in Web"_s);
    menu.addAction(u"Cancel…"_s);
    menu.addSeparator();
    menu.addAction(u"Uncancel"_s)->setEnabled(false);
    menu.popup(QPoint(0, 0));
    menu.setActiveAction(first);
    QApplication::processEvents();
    return pictureOf(menu, manner.ratio);
}

QImage tipSample(const Manner &manner)
{
    QWidget window;
    applyColorScheme(window, manner.colorScheme);
    applyTextScale(window, manner.textScale);
    window.show();
    QToolTip::showText(
        QPoint(0, 0), u"Some subscriptions could not be converted to your profile currency."_s, &window);
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto tip = std::ranges::find_if(
        windows, [](const QWidget *widget) { return widget->inherits("QTipLabel") && widget->isVisible(); });
    return tip == windows.end() ? QImage() : pictureOf(**tip, manner.ratio);
}

QImage dialogSample(const Manner &manner)
{
    QWidget window;
    applyColorScheme(window, manner.colorScheme);
    applyTextScale(window, manner.textScale);
    window.show();
    QMessageBox box(&window);
    box.setText(u"Cancel Northlight Video?"_s);
    box.setInformativeText(
        u"This marks the subscription as cancelled in Orbitledge. It does not contact the merchant."_s);
    box.addButton(u"Cancel subscription"_s, QMessageBox::DestructiveRole);
    box.setDefaultButton(
        qobject_cast<QPushButton *>(box.addButton(u"Keep subscription"_s, QMessageBox::RejectRole)));
    box.show();
    DateField date(QDate(2026, 3, 20), &window);
    QCalendarWidget &calendar = *date.calendarWidget();
    date.show();
    QTest::mouseClick(&date, Qt::LeftButton, {}, QPoint(date.width() - 12, date.height() / 2));
    QComboBox *const months = comboBox(&window);
    months->show();
    months->showPopup();
    QToolTip::showText(
        QPoint(0, 0), u"Some subscriptions could not be converted to your profile currency."_s);
    QApplication::processEvents();
    const std::vector<QImage> images{pictureOf(box, manner.ratio), pictureOf(calendar, manner.ratio),
        pictureOf(*months->view()->window(), manner.ratio)};
    return stacked(images, Qt::Vertical, colorOf(Tone::MidGrey, manner.colorScheme));
}

bool saveAll(const QDir &folder)
{
    bool isSaved = true;
    const auto save = [&](const QImage &image, const QString &name) {
        isSaved = image.save(folder.filePath(name + u".png"_s)) && isSaved;
    };
    for (const ColorScheme colorScheme : {ColorScheme::Light, ColorScheme::Dark}) {
        const QString name = colorScheme == ColorScheme::Light ? u"light"_s : u"dark"_s;
        for (const qreal ratio : {1.0, 1.5, 2.0}) {
            const Manner manner{colorScheme, ratio};
            const QString suffix = u"%1@%2"_s.arg(name).arg(ratio);
            save(controlSheet(manner), u"controls-"_s + suffix);
            save(symbolSheet(manner), u"symbols-"_s + suffix);
            save(specimen(manner), u"specimen-"_s + suffix);
            save(menuSample(manner), u"menu-"_s + suffix);
            save(dialogSample(manner), u"dialogs-"_s + suffix);
            save(tipSample(manner), u"tooltip-"_s + suffix);
        }
        save(specimen({colorScheme, 1, 2}), u"specimen-large-text-"_s + name);
        save(specimen({colorScheme, 2, 1, Qt::RightToLeft}), u"specimen-from-the-right-"_s + name);
    }
    return isSaved;
}

/// The platform without a display talks about what it cannot do, at each window.
void passOn(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &message)
{
    if (!message.startsWith(u"This plugin does not support"_s))
        QTextStream(stderr) << message << '\n';
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        QTextStream(stderr) << "usage: ui-gallery FOLDER\n";
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(passOn);
    const orbitledge::testing::WidgetApplication application(argc, argv);
    if (!folder.mkpath(u"."_s) || !saveAll(folder)) {
        QTextStream(stderr) << "The pictures could not be written to " << folder.path() << ".\n";
        return 1;
    }
    return 0;
}
