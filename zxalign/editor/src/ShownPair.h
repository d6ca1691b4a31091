#pragma once

#include "LandmarkPalette.h"
#include "SliceViewGeometry.h"
#include "zxalign/SliceInfo.h"

#include <QImage>
#include <QSize>

#include <array>
#include <optional>

/// The two slices that a view shows: borrowed images and records, and the view's own copy of the transforms.
/// Index 0 is the first slice, 1 the second.
struct ShownPair {
  QSize size;                                      ///< of both slices, in pixels
  int bytesPerPixel = 1;                           ///< of the display images
  std::array<const unsigned char*, 2> display{};   ///< borrowed
  std::array<const unsigned char*, 2> grey{};      ///< borrowed
  std::array<SliceInfo*, 2> records{};             ///< borrowed; null as long as there is no pair
  std::array<SliceXForm, 2> transforms;            ///< the flips are the records'
  std::array<std::optional<SliceXForm>, 2> placed; ///< how the slices lie in their images already
  int firstIndex = 0;

  bool isEmpty() const { return !records[0] || !records[1]; }
  /// The copy of the numbers with the flip of the record.
  SliceXForm transform(std::size_t slice) const;
  /// The centre that the slices turn about.
  McVec2f centre() const;
  /// Where a landmark of a slice lies in the zoomed contents.
  McVec2f landmarkInContents(std::size_t slice, QPoint landmark, float zoom) const;
};

/// How the picture of a pair is made.
struct PictureSettings {
  int viewMode;      ///< QxDrawAlignSlices::ViewMode; with any other number nothing is composed
  int shown;         ///< QxDrawAlignSlices::Shown
  int fieldSize;     ///< of the checkerboard
  int selected;      ///< number of the selected landmark, -1 for none
  bool hasLandmarks; ///< whether landmarks are drawn
};

/// Makes the visible part of the pair, with its landmarks, in a picture of the size of the geometry's screen.
/// The highest byte of every pixel is 0.
void composePicture(const ShownPair& pair, const SliceViewGeometry& geometry, const PictureSettings& settings,
                    const LandmarkPalette& palette, QImage& picture);
