#include "ui/panel/LoadedLogoImages.h"

namespace orbitledge::ui {

LoadedLogoImages::LoadedLogoImages(std::shared_ptr<LogoLoader> loader, QObject *parent)
    : LogoImages(parent)
    , m_loader(std::move(loader))
{
    connect(m_loader.get(), &LogoLoader::arrived, this, &LogoImages::arrived);
}

QImage LoadedLogoImages::image(const QUrl &url)
{
    return m_loader->image(url);
}

void LoadedLogoImages::clear()
{
    m_loader->clear();
}

} // namespace orbitledge::ui
