#pragma once

#include "mc/McDArray.h"
#include "zx/ZxBox3.h"
#include "zxalign/SliceInfo.h"

/// Where the input frame lies in the output, in pixels: left + width + right is the output width, top +
/// height + bottom the output height. Negative borders cut.
struct OutputBorders {
  int left = 0, right = 0;
  int top = 0, bottom = 0;
};

/// The smallest output that holds every transformed slice whole.
///
/// The corners of the input's box go through the slices' matrices with the translation scaled by the x voxel
/// size; the pixel count is scaled by width / (xmax - xmin), not by that voxel size. Deliberate: changing it
/// changes output sizes; see AlignmentGeometryTest.
void minimalOutputSize(const McDArray<SliceInfo>& slices, const ZxDims& dims, const ZxBox3f& box, int& width,
                       int& height);

/// Borders that centre the input in an output; of an odd difference the extra pixel goes to the left and top.
OutputBorders centredBorders(const ZxDims& dims, int outputWidth, int outputHeight);

/// Borders that place the common box of all transformed slices at the output's first pixel. width and height
/// are the input's where they are 0.
///
/// The formula subtracts a number of pixels from a coordinate; it is exact for boxes that start at 0, as all
/// boxes of the host do.
OutputBorders originBorders(const McDArray<SliceInfo>& slices, const ZxDims& dims, const ZxBox3f& box,
                            int outputWidth, int outputHeight, int width, int height);

/// The box of the output: the maxima scaled by the number of voxel steps, without subtracting the minima.
ZxBox3f outputBox(const ZxDims& dims, const ZxBox3f& box, int outputWidth, int outputHeight);
