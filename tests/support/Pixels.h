#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace orbitledge::testing {

/// As WCAG 2 defines it.
inline double luminanceOf(const QColor &color)
{
    const auto linear
        = [](double part) { return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

inline double contrastOf(const QColor &one, const QColor &other)
{
    const auto [darker, lighter] = std::minmax({luminanceOf(one), luminanceOf(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// What is seen of a widget, on its window's ground.
inline QImage pictureOf(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

inline int pixelsOf(const QImage &image, const QColor &color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) == color.rgb() ? 1 : 0;
    }
    return count;
}

inline QColor mostFrequentColor(const QImage &image)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            ++counts[image.pixel(x, y)];
    }
    const auto most = std::max_element(counts.cbegin(), counts.cend());
    return QColor::fromRgb(most.key());
}

/// Of any pixel with the ground: what a text's strokes reach where they are wider than a pixel.
inline double highestContrast(const QImage &image, const QColor &ground)
{
    double highest = 1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            highest = std::max(highest, contrastOf(QColor::fromRgb(image.pixel(x, y)), ground));
    }
    return highest;
}

} // namespace orbitledge::testing
