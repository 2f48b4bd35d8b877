#pragma once

#include "logos/LogoLoader.h"
#include "ui/panel/LogoImages.h"

#include <memory>

namespace orbitledge::ui {

/// The pictures that a loader gets.
class LoadedLogoImages final : public LogoImages {
    Q_OBJECT

public:
    explicit LoadedLogoImages(std::shared_ptr<LogoLoader> loader, QObject *parent = nullptr);

    QImage image(const QUrl &url) override;
    void clear() override;

private:
    std::shared_ptr<LogoLoader> m_loader;
};

} // namespace orbitledge::ui
