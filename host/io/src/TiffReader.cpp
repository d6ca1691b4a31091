#include "TiffReader.h"

#include "ByteStream.h"
#include "FileError.h"
#include "Geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <set>

namespace io {
namespace {

/// What the first page says beside its pixels.
struct FirstPage {
  std::string description;
  double pixelsPerUnit[2] = {0, 0};
  std::uint16_t resolutionUnit = RESUNIT_INCH;

  explicit FirstPage(TIFF* tiff)
  {
    const char* text = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_IMAGEDESCRIPTION, &text) && text) description = text;
    float resolution[2] = {0, 0};
    TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &resolution[0]);
    TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &resolution[1]);
    pixelsPerUnit[0] = resolution[0];
    pixelsPerUnit[1] = resolution[1];
    TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &resolutionUnit);
  }
};

bool isSize(double value) { return std::isfinite(value) && value > 0; }

/// Pixel sizes by the resolution in pixels a unit. The tag is in single precision, so the size is the
/// shortest decimal number that gives this resolution: 0.0046, not 0.004599999885.
void setPixelSizes(ZxFileGeometry& geometry, const FirstPage& page, double unitsLength)
{
  for (int axis = 0; axis < 2; ++axis) {
    const double size = unitsLength / page.pixelsPerUnit[axis];
    if (isSize(page.pixelsPerUnit[axis]) && isSize(size)) geometry.voxelSize[axis] = roundedToFloat(size);
  }
}

ZxFileGeometry geometryByResolution(const FirstPage& page)
{
  ZxFileGeometry geometry;
  if (page.resolutionUnit != RESUNIT_INCH && page.resolutionUnit != RESUNIT_CENTIMETER) return geometry;
  setPixelSizes(geometry, page, page.resolutionUnit == RESUNIT_INCH ? 25.4 : 10.0);
  geometry.unit = "mm";
  return geometry;
}

ZxFileGeometry geometryOf(const FirstPage& page, const ImageJDescription& imageJ)
{
  ZxFileGeometry geometry;
  setPixelSizes(geometry, page, 1.0);
  if (imageJ.spacing) geometry.voxelSize[2] = voxelSizeOf(*imageJ.spacing);
  geometry.unit = imageJ.unit;
  return geometry;
}

/// Sizes with units of their own are brought to the unit of the first.
ZxFileGeometry geometryOf(const OmeDescription& ome)
{
  ZxFileGeometry geometry;
  for (int axis = 0; axis < 3; ++axis) {
    if (isSize(ome.physicalSize[axis])) geometry.voxelSize[axis] = ome.physicalSize[axis];
  }
  geometry.unit = ome.unit;
  return geometry;
}

} // namespace
} // namespace io
