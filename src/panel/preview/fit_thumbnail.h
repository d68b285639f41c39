#pragma once
// Fits a preview picture into a thumbnail cell: a black canvas with a one
// pixel frame, the picture centred with margins and scaled down when it is
// too large.

#include <QImage>

namespace marrowfin {

// Default cell size in base units.
constexpr int kThumbnailWidthUnits = 132;
constexpr int kThumbnailHeightUnits = 80;

// Frame colours: the list's cells (height given as 0) and other users.
constexpr unsigned kThumbnailFrameList = 0xff2975e6u;
constexpr unsigned kThumbnailFrameOther = 0xffd4d3d3u;

// Returns a new RGB32 picture of `width` by `height` pixels; a width or height
// of 0 means the default in units times `rate`, truncated. A null `image`
// gives the bare canvas and frame. Null when a size is negative or comes out as 0.
QImage FitThumbnail(const QImage& image, int width, int height, double rate);

}  // namespace marrowfin
