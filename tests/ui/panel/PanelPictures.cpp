// Draws the panel in every state it has into pictures to be looked at:
//   panel-pictures FOLDER [SCENE...]

#include "support/PanelScenes.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"
#include "ui/panel/PanelView.h"
#include "ui/panel/SubscriptionList.h"

#include <QDir>
#include <QPainter>

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
    QByteArray locale = "en_US";
};

QImage pictureOf(const PanelScene &scene, const Manner &manner, bool hovers)
{
    StoreDesk desk;
    scene.prepare(desk);
    PanelView panel(*desk.store, localeNamed(manner.locale), nullptr);
    panel.resize(PanelView::panelSize);
    panel.setAutoFillBackground(true);
    if (manner.locale.startsWith("ar") || manner.locale.startsWith("he"))
        panel.setLayoutDirection(Qt::RightToLeft);
    applyColorScheme(panel, manner.colorScheme);
    applyTextScale(panel, manner.textScale);
    panel.show();
    QApplication::setActiveWindow(&panel);
    QCoreApplication::processEvents();
    if (scene.act) {
        scene.act(panel, desk);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
    if (hovers) {
        const QList<SubscriptionRow *> rows = panel.findChild<SubscriptionList *>()->rows();
        QHoverEvent enter(QEvent::HoverEnter, QPointF(5, 5), QPointF(5, 5), QPointF(-1, -1));
        rows.value(1)->setAttribute(Qt::WA_UnderMouse);
        QCoreApplication::sendEvent(rows.value(1), &enter);
        rows.value(0)->setFocus(Qt::TabFocusReason);
    }
    QImage image(panel.size() * manner.ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(manner.ratio);
    panel.render(&image);
    return image;
}

/// All manners beside each other.
QImage sheetOf(const PanelScene &scene, const std::vector<Manner> &manners, bool hovers)
{
    constexpr int gap = 16;
    int width = gap;
    int height = 0;
    std::vector<QImage> pictures;
    for (const Manner &manner : manners) {
        pictures.push_back(pictureOf(scene, manner, hovers));
        width += pictures.back().width() + gap;
        height = std::max(height, pictures.back().height());
    }
    QImage sheet(width, height + 2 * gap, QImage::Format_RGB32);
    sheet.fill(QColor(0x8a, 0x8f, 0x98));
    QPainter painter(&sheet);
    int left = gap;
    for (QImage &picture : pictures) {
        picture.setDevicePixelRatio(1);
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
    const QStringList arguments = QCoreApplication::arguments();
    const QDir folder(arguments.value(1));
    const QStringList wanted = arguments.mid(2);
    const std::vector<Manner> plain{
        {u"light"_s, ui::ColorScheme::Light},
        {u"dark"_s, ui::ColorScheme::Dark},
    };
    const std::vector<Manner> large{
        {u"light"_s, ui::ColorScheme::Light, 2},
        {u"dark"_s, ui::ColorScheme::Dark, 2},
    };
    const std::vector<Manner> text{
        {u"light"_s, ui::ColorScheme::Light, 1, 1.5},
        {u"dark"_s, ui::ColorScheme::Dark, 1, 2},
    };
    const std::vector<Manner> regions{
        {u"de"_s, ui::ColorScheme::Light, 1, 1, "de_DE"},
        {u"ja"_s, ui::ColorScheme::Dark, 1, 1, "ja_JP"},
        {u"ar"_s, ui::ColorScheme::Light, 1, 1, "ar_EG"},
    };
    const std::vector<Manner> contrast{
        {u"light"_s, ui::ColorScheme::LightHighContrast},
        {u"dark"_s, ui::ColorScheme::DarkHighContrast},
    };
    for (const PanelScene &scene : panelScenes()) {
        if (!wanted.isEmpty() && !wanted.contains(scene.name))
            continue;
        sheetOf(scene, plain, false).save(folder.filePath(scene.name + u".png"_s));
        sheetOf(scene, large, false).save(folder.filePath(scene.name + u"@2x.png"_s));
        sheetOf(scene, text, false).save(folder.filePath(scene.name + u"-text.png"_s));
        sheetOf(scene, contrast, false).save(folder.filePath(scene.name + u"-contrast.png"_s));
        if (scene.name == u"timeline") {
            sheetOf(scene, plain, true).save(folder.filePath(u"hovered.png"_s));
            sheetOf(scene, regions, false).save(folder.filePath(u"regions.png"_s));
        }
    }
    return 0;
}
