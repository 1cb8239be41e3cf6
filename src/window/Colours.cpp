#include "window/Colours.h"

#include <algorithm>
#include <cmath>

namespace vorn {

namespace {

// Relative luminance and contrast as the Web Content Accessibility Guidelines define them.
double luminance(const QColor &colour)
{
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const auto [low, high] = std::minmax({luminance(one), luminance(other)});
    return (high + 0.05) / (low + 0.05);
}

// `colour`, moved towards `away` until it has a contrast of 4.5 to 1 with `other`.
QColor readable(const QColor &colour, const QColor &other, const QColor &away)
{
    constexpr double kReadable = 4.5;
    constexpr int kSteps = 20;
    QColor result = colour;
    for (int step = 1; step <= kSteps && contrast(result, other) < kReadable; ++step)
        result = vorn::blended(colour, away, qreal(step) / kSteps);
    return result;
}

} // namespace

QColor blended(const QColor &under, const QColor &over, qreal share)
{
    const auto mix = [share](float from, float to) {
        return from + (to - from) * static_cast<float>(share);
    };
    return QColor::fromRgbF(mix(under.redF(), over.redF()), mix(under.greenF(), over.greenF()),
                            mix(under.blueF(), over.blueF()));
}

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightnessF() <
           palette.color(QPalette::WindowText).lightnessF();
}

QColor accentColour(const QPalette &palette)
{
    const QColor text = palette.color(QPalette::HighlightedText);
    return readable(palette.color(QPalette::Highlight), text,
                    luminance(text) > 0.5 ? Qt::black : Qt::white);
}

QColor cardColour(const QPalette &palette)
{
    // A card is lighter than the window. Base is so only in light palettes.
    return isDark(palette)
               ? blended(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.06)
               : palette.color(QPalette::Base);
}

QColor mutedTextColour(const QPalette &palette)
{
    const QColor card = cardColour(palette);
    const QColor text = palette.color(QPalette::WindowText);
    return readable(blended(card, text, 0.7), card, text);
}

} // namespace vorn
