#pragma once
// Helpers of the painting tests: a fixture run once per rate, images to paint
// into, colour probes and PNGs written under the build folder.

#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>
#include <functional>
#include <initializer_list>
#include <vector>

#include "panel/paint/panel_colours.h"
#include "skin/skin_fonts.h"

class QPainter;

namespace marrowfin::test {

namespace c = panel_colours;

// Outside the painted item: must stay untouched.
inline const QColor kGround(0xFF, 0x00, 0xFF);

// Sets the rate, its fonts and loads the sheet of its bucket from beside
// the test program; false when the sheet is missing.
bool UsePaintRate(float rate);

// Each TEST_P runs at the rates the suite is instantiated with (see
// PAINT_AT_TWO_RATES), the rate's fonts and sheet loaded.
class RatePaintTest : public ::testing::TestWithParam<float> {
protected:
    void SetUp() override { ASSERT_TRUE(UsePaintRate(GetParam())); }
    float rate() const { return GetParam(); }
    // PNGs of single states are written at the first rate only.
    bool firstRate() const { return GetParam() == 1.0f; }
};

#define PAINT_AT_TWO_RATES(Suite)                           \
    class Suite : public ::marrowfin::test::RatePaintTest {}; \
    INSTANTIATE_TEST_SUITE_P(Rates, Suite, ::testing::Values(1.0f, 1.5f))

// A white RGB32 image of the given size with `paint` run on it.
QImage PaintInto(const QSize& size, const std::function<void(QPainter&)>& paint, QColor ground = Qt::white);
// `text` alone in the skin's `font` and `colour`, placed in `rect` by Qt's own drawText.
QImage TextAlone(const QSize& size, const QRect& rect, const QString& text, SkinFont font, const QColor& colour,
                 int flags = Qt::AlignLeft | Qt::AlignVCenter);
// Same-sized images side by side in `columns`, `gap` pixels apart across, on light grey.
QImage Stacked(const std::vector<QImage>& images, int columns = 1, int gap = 0);
// The client size of the panel at the current rate.
QSize PanelClient();
// Number of pixels in `area` within `tolerance` of `colour` in each channel.
int CountColour(const QImage& image, const QRect& area, const QColor& colour, int tolerance = 0);
bool HasColour(const QImage& image, const QRect& area, const QColor& colour, int tolerance = 0);
// Pixels in `area` that are not `ground`.
int CountNot(const QImage& image, const QRect& area, const QColor& ground);
// Whether two images agree in every pixel of `area`.
bool SameIn(const QImage& a, const QImage& b, const QRect& area);
QColor At(const QImage& image, int x, int y);
// One expected pixel: a table of them checks a frame or an edge exactly.
struct Probe {
    int x, y;
    QColor colour;
};
void ExpectPixels(const QImage& image, std::initializer_list<Probe> probes);
// Writes <test program's folder>/rendered/paint/<name>.
QString SavePng(const QImage& image, const QString& name);

}  // namespace marrowfin::test
