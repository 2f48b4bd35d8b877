// Draws the settings in every state they have into pictures to be looked at:
//   settings-pictures FOLDER

#include "support/SettingsScenes.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"
#include "ui/settings/SettingsView.h"

#include <QComboBox>
#include <QDir>
#include <QPainter>
#include <QScrollArea>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

struct Manner {
    QString name;
    ui::ColorScheme colorScheme = ui::ColorScheme::Light;
    qreal ratio = 1;
    qreal textScale = 1;
    /// Of the window; as it wants to be where it is empty.
    QSize size = {};
    Qt::LayoutDirection direction = Qt::LeftToRight;
    /// As high as all of the form.
    bool isWhole = true;
    /// How often Tab was pressed.
    int tabs = 0;
};

QImage pictureOf(const PanelScene &scene, const Manner &manner)
{
    StoreDesk desk;
    scene.prepare(desk);
    SettingsView view(*desk.store, localeNamed("en_US"), sampleAbout());
    view.setLayoutDirection(manner.direction);
    applyColorScheme(view, manner.colorScheme);
    applyTextScale(view, manner.textScale);
    view.resize(manner.size.isEmpty() ? view.sizeHint() : manner.size);
    view.show();
    view.activateWindow();
    (void)QTest::qWaitForWindowActive(&view);
    QCoreApplication::processEvents();
    if (manner.isWhole) {
        view.resize(view.width(), view.findChild<QScrollArea *>()->widget()->height());
        QCoreApplication::processEvents();
    }
    for (int i = 0; i < manner.tabs; ++i)
        QTest::keyClick(
            QApplication::focusWidget() == nullptr ? &view : QApplication::focusWidget(), Qt::Key_Tab);
    QImage image(view.size() * manner.ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(manner.ratio);
    view.render(&image);
    image.setDevicePixelRatio(1);
    return image;
}

/// All manners beside each other.
QImage sheetOf(const PanelScene &scene, const std::vector<Manner> &manners)
{
    constexpr int gap = 16;
    int width = gap;
    int height = 0;
    std::vector<QImage> pictures;
    for (const Manner &manner : manners) {
        pictures.push_back(pictureOf(scene, manner));
        width += pictures.back().width() + gap;
        height = std::max(height, pictures.back().height());
    }
    QImage sheet(width, height + 2 * gap, QImage::Format_RGB32);
    sheet.fill(QColor(0x8a, 0x8f, 0x98));
    QPainter painter(&sheet);
    int left = gap;
    for (const QImage &picture : pictures) {
        painter.drawImage(left, gap, picture);
        left += picture.width() + gap;
    }
    return sheet;
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    pinEnvironment(home);
    const WidgetApplication application(argc, argv);
    const QDir folder(QCoreApplication::arguments().value(1));
    using enum ui::ColorScheme;
    const std::vector<std::pair<QString, std::vector<Manner>>> sheets{
        {u""_s, {{.name = u"light"_s, .colorScheme = Light}, {.name = u"dark"_s, .colorScheme = Dark}}},
        {u"@2x"_s,
            {{.name = u"light"_s, .colorScheme = Light, .ratio = 2},
                {.name = u"dark"_s, .colorScheme = Dark, .ratio = 2}}},
        {u"-text"_s,
            {{.name = u"light"_s, .colorScheme = Light, .textScale = 1.5},
                {.name = u"narrow"_s, .colorScheme = Dark, .textScale = 2, .size = {640, 700}}}},
        {u"-window"_s,
            {{.name = u"focus"_s, .colorScheme = Light, .isWhole = false, .tabs = 2},
                {.name = u"arabic"_s,
                    .colorScheme = Dark,
                    .direction = Qt::RightToLeft,
                    .isWhole = false,
                    .tabs = 3}}},
    };
    for (const PanelScene &scene : settingsScenes()) {
        for (const auto &[suffix, manners] : sheets)
            sheetOf(scene, manners).save(folder.filePath(scene.name + suffix + u".png"_s));
    }
    return 0;
}
