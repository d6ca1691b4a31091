#include "AlignmentStorage.h"

#include "mc/McRound.h"
#include "zx/ZxMessage.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace storage {

namespace {

std::string numbered(const char* stem, std::size_t index)
{
  char text[40];
  std::snprintf(text, sizeof text, "%s%04zu", stem, index);
  return text;
}

struct Scale {
  float x = 1.0f;
  float y = 1.0f;
};

/// From the slice size that stored pixels refer to, to the present one; 1 where none is stored.
Scale scaleFrom(const ZxParamBundle* bundle, const ZxDims& dims)
{
  int size[2] = {0, 0};
  if (!bundle || !bundle->findNums("ImageSize", 2, size) || size[0] <= 0 || size[1] <= 0) return {};
  return {static_cast<float>(dims.width) / static_cast<float>(size[0]),
          static_cast<float>(dims.height) / static_cast<float>(size[1])};
}

void setXForm(SliceInfo& slice, const double* v, Scale scale)
{
  slice.translationX = static_cast<float>(static_cast<double>(scale.x) * v[0]);
  slice.translationY = static_cast<float>(-v[1] * static_cast<double>(scale.y));
  slice.rotation = static_cast<float>(v[2]);
}

/// An entry of exactly four values; a stored 0 counts as flipped. Deliberate: only negative means unflipped.
bool readFour(const ZxParamBundle& bundle, const std::string& name, SliceInfo& slice, Scale scale)
{
  double v[4];
  if (!bundle.findReals(name, 4, v)) return false;
  setXForm(slice, v, scale);
  slice.flip = v[3] >= 0.0;
  return true;
}

/// Five values keep the flip as the sign of a product, three values know no flip.
bool readFiveFourOrThree(const ZxParamBundle& bundle, const std::string& name, SliceInfo& slice, Scale scale)
{
  double v[5];
  if (bundle.findReals(name, 5, v)) {
    setXForm(slice, v, scale);
    slice.flip = v[3] * v[4] < 0.0;
    return true;
  }
  if (readFour(bundle, name, slice, scale)) return true;
  if (!bundle.findReals(name, 3, v)) return false;
  setXForm(slice, v, scale);
  return true;
}

/// A stored pixel position at another scale; far outside every image where a damaged file says so, and far
/// enough from the limits of an integer for sums and differences.
int pixelOf(int stored, float scale)
{
  constexpr float farthest = 1 << 24;
  return mc::truncToInt(std::clamp(static_cast<float>(stored) * scale, -farthest, farthest));
}

void readLandmarks(const ZxParamBundle& bundle, SliceInfo& slice, Scale scale)
{
  slice.landmarks.clear();
  for (int k = 0; k < bundle.getNumEntries(); ++k) {
    int p[2];
    // Written as "point", looked up as "Point": names of a bundle match without regard to case.
    if (!bundle.findNums(numbered("Point", static_cast<std::size_t>(k)), 2, p)) continue;
    slice.landmarks.append(QPoint(pixelOf(p[0], scale.x), pixelOf(p[1], scale.y)));
  }
}

} // namespace

std::string sliceName(std::size_t slice) { return numbered("slice", slice); }

const char* takenName(const ZxParamBundle& target)
{
  for (const char* name : {transformBundle, pointBundle})
    for (const ZxParamBundle::Entry& entry : target.entries())
      if (!strcasecmp(entry.name.c_str(), name) && !target.findBundle(name)) return name;
  return nullptr;
}

bool writeTransforms(ZxParamBundle& target, const McDArray<SliceInfo>& slices, const ZxDims& dims)
{
  ZxParamBundle* bundle = target.getBundle(transformBundle);
  if (!bundle) return false;
  bundle->removeAll();
  for (std::size_t i = 0; i < slices.size(); ++i) {
    const SliceInfo& s = slices[i];
    bundle->setReals(sliceName(i),
                     {s.translationX, -static_cast<double>(s.translationY), s.rotation, s.flip ? 1.0 : -1.0});
  }
  bundle->setNums("ImageSize", {dims.width, dims.height});
  return true;
}

bool writePoints(ZxParamBundle& target, const McDArray<SliceInfo>& slices)
{
  ZxParamBundle* bundle = target.getBundle(pointBundle);
  if (!bundle) return false;
  bundle->removeAll();
  for (std::size_t i = 0; i < slices.size(); ++i) {
    ZxParamBundle* points = bundle->getBundle(sliceName(i));
    for (std::size_t k = 0; k < slices[i].landmarks.size(); ++k)
      points->setNums(numbered("point", k), {slices[i].landmarks[k].x(), slices[i].landmarks[k].y()});
  }
  return true;
}

bool readTransforms(const ZxParamBundle& source, McDArray<SliceInfo>& slices, const ZxDims& dims,
                    Missing missing)
{
  const ZxParamBundle* bundle = source.findBundle(transformBundle);
  if (!bundle) return false;
  const Scale scale = scaleFrom(bundle, dims);
  for (std::size_t i = 0; i < slices.size(); ++i) {
    const std::string name = sliceName(i);
    if (missing == Missing::PassOver)
      readFour(*bundle, name, slices[i], scale);
    else if (!readFiveFourOrThree(*bundle, name, slices[i], scale))
      ZxMessage::getTheMsg()->printf("No transform for slice %d", static_cast<int>(i));
  }
  return true;
}

bool readPoints(const ZxParamBundle& source, McDArray<SliceInfo>& slices, const ZxDims& dims,
                const char* sizeBundle, Missing missing)
{
  const ZxParamBundle* bundle = source.findBundle(pointBundle);
  if (!bundle) return false;
  const Scale scale = scaleFrom(source.findBundle(sizeBundle), dims);
  for (std::size_t i = 0; i < slices.size(); ++i) {
    if (const ZxParamBundle* points = bundle->findBundle(sliceName(i)))
      readLandmarks(*points, slices[i], scale);
    else if (missing == Missing::Tell)
      ZxMessage::getTheMsg()->printf("No landmarks for slice %d", static_cast<int>(i));
  }
  return true;
}

} // namespace storage
