#include "ZxEdgeDetectionAlignMethod.h"

#include "AlignmentStorage.h"
#include "EntropyThreshold.h"
#include "mc/McRound.h"
#include "zx/ZxMessage.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

namespace {

constexpr const char* profileBundle = "Objectrotation";
constexpr int histogramMargin = 10; // pixels at the border that the calculated threshold passes over
// Degrees. Beyond the largest not even four rays are left; the time of the comparison grows with the square
// of their number.
constexpr float smallestStep = 0.01f;
constexpr float largestStep = 90.0f;

} // namespace

int ZxEdgeDetectionAlignMethod::doLayout()
{
  if (!hasUsableSteps()) return 0;
  m_module->mapSlices();
  ZxAlignData& data = m_module->sliceData();
  const int done = data.isColorField() ? sample(data.getEditableColorPtr(), data.getReferenceColorPtr())
                                       : sample(m_module->getComputedEditableSlicePtr(),
                                                m_module->getComputedReferenceSlicePtr());
  if (!done) return 0;
  m_module->setModified(true);
  m_module->updateViews();
  m_module->updateQuality();
  return 1;
}

bool ZxEdgeDetectionAlignMethod::hasUsableSteps() const
{
  const ZxAlignSettings& settings = m_module->alignSettings();
  const int e = m_module->getEditableSlice();
  if (!(settings.angularStep >= smallestStep && settings.angularStep <= largestStep)) {
    ZxMessage::getTheMsg()->printf("The edge detection needs an angular step of 0.01 to 90 degrees, not %g; "
                                   "slice %d stays where it is.",
                                   static_cast<double>(settings.angularStep), e);
    return false;
  }
  if (settings.rasterStep < 1 || settings.imageRasterStep < 1) {
    ZxMessage::getTheMsg()->printf("The edge detection needs raster steps of 1 pixel or more, not %d and %d; "
                                   "slice %d stays where it is.",
                                   settings.rasterStep, settings.imageRasterStep, e);
    return false;
  }
  return true;
}

int ZxEdgeDetectionAlignMethod::sample(const unsigned char* editablePixels,
                                       const unsigned char* referencePixels)
{
  ZxParamBundle* profiles = prepareParameters();
  if (!profiles) return 0;
  const float step = m_module->alignSettings().angularStep;
  const int n = radialProfileLength(step);
  const kernels::ObjectImage editableImage = image(editablePixels);
  const kernels::ObjectImage referenceImage = image(referencePixels);
  m_test = {threshold(editableImage), m_module->alignSettings().brightBackground};

  const kernels::PixelPosition centre = calcCenter(editableImage, m_module->getEditableSlice());
  const RadialProfile editableProfile = measureRadialProfile(editableImage, m_test, centre, n, step);
  RadialProfile referenceProfile(static_cast<std::size_t>(n));
  if (!readProfile(*profiles, referenceProfile))
    referenceProfile = measureRadialProfile(
        referenceImage, m_test, calcCenter(referenceImage, m_module->getReferenceSlice()), n, step);
  writeProfile(*profiles, editableProfile);
  m_module->sliceData().touchInputData();
  apply(fit(referenceProfile, editableProfile), centre);
  return 1;
}

ZxParamBundle* ZxEdgeDetectionAlignMethod::prepareParameters()
{
  ZxAlignData& data = m_module->sliceData();
  ZxParamBundle& parameters = *data.getParameters();
  ZxParamBundle* profiles = parameters.getBundle(profileBundle);
  ZxParamBundle* transforms = parameters.getBundle(storage::transformBundle);
  if (!profiles || !transforms) {
    ZxMessage::getTheMsg()->printf(
        "The edge detection cannot keep its outlines with %s: \"%s\" is taken by a "
        "plain parameter.",
        data.getInputDataName().getString(), profiles ? storage::transformBundle : profileBundle);
    return nullptr;
  }
  transforms->removeAll();
  transforms->setNums("ImageSize", {data.getDims().width, data.getDims().height});
  return profiles;
}

kernels::ObjectImage ZxEdgeDetectionAlignMethod::image(const unsigned char* pixels) const
{
  const ZxAlignData& data = m_module->sliceData();
  return {pixels, data.getDims().width, data.getDims().height, data.isColorField() ? 4 : 1};
}

int ZxEdgeDetectionAlignMethod::threshold(const kernels::ObjectImage& editableImage) const
{
  const ZxAlignSettings& settings = m_module->alignSettings();
  if (!settings.calculatedThreshold) return settings.threshold;
  return entropyThreshold(kernels::greyHistogram(editableImage, histogramMargin));
}

kernels::PixelPosition ZxEdgeDetectionAlignMethod::calcCenter(const kernels::ObjectImage& image,
                                                              int slice) const
{
  const ZxAlignSettings& settings = m_module->alignSettings();
  kernels::ObjectSquare square;
  square.half = settings.matrixDimension / 2;
  square.step = settings.rasterStep;
  square.raster = settings.imageRasterStep;
  const float perSide = static_cast<float>(square.half) / static_cast<float>(square.step);
  const float share = static_cast<float>(settings.percentage) / 100.0f;
  square.limit = mc::truncToInt(4.0f * perSide * perSide * share);
  const kernels::ObjectPoints points = kernels::objectPoints(image, m_test, square);
  if (points.count > 0)
    return {static_cast<int>(points.sumX / points.count), static_cast<int>(points.sumY / points.count)};
  ZxMessage::getTheMsg()->printf("The edge detection finds no object %s grey value %d on slice %d.",
                                 m_test.dark ? "below" : "above", m_test.threshold, slice);
  return {image.width / 2, image.height / 2};
}

bool ZxEdgeDetectionAlignMethod::readProfile(const ZxParamBundle& profiles, RadialProfile& profile) const
{
  const ZxParamBundle* stored =
      profiles.findBundle(storage::sliceName(static_cast<std::size_t>(m_module->getReferenceSlice())));
  const int n = static_cast<int>(profile.size());
  int length = 0;
  if (!stored || !stored->findNums("Vectorlength", 1, &length) || length != n) return false;
  std::vector<double> values(profile.size());
  if (!stored->findReals("Vector", n, values.data())) return false;
  for (std::size_t i = 0; i < values.size(); ++i) profile[i] = static_cast<float>(values[i]);
  return true;
}

void ZxEdgeDetectionAlignMethod::writeProfile(ZxParamBundle& profiles, const RadialProfile& profile) const
{
  const std::string name = storage::sliceName(static_cast<std::size_t>(m_module->getEditableSlice()));
  if (!profiles.findBundle(name)) profiles.remove(name);
  ZxParamBundle& stored = *profiles.getBundle(name);
  stored.removeAll();
  stored.setReals("Vector", {profile.begin(), profile.end()});
  stored.setNum("Vectorlength", static_cast<int>(profile.size()));
}

ZxEdgeDetectionAlignMethod::Fit ZxEdgeDetectionAlignMethod::fit(const RadialProfile& referenceProfile,
                                                                const RadialProfile& editableProfile) const
{
  const ZxAlignSettings& settings = m_module->alignSettings();
  const ProfileMatch match =
      matchProfiles(referenceProfile, editableProfile, settings.mirror ? MirroredToo::Yes : MirroredToo::No);
  const auto step = static_cast<double>(settings.angularStep);
  // A flip takes a direction phi to 180 - phi, a rotation by a takes phi to phi - a.
  if (!match.mirrored) {
    // The direction r of the reference is r + shift of the editable slice; flipped, both turn the other way.
    return {editable().flip ? -step * match.shift : step * match.shift, editable().flip};
  }
  // The directions of the reference and the editable slice add up to (shift - 1) steps.
  const double turn = 180.0 - step * (match.shift - 1);
  if (reference().flip) return {-turn, editable().flip};
  return {turn, true};
}

void ZxEdgeDetectionAlignMethod::apply(const Fit& fit, kernels::PixelPosition centre)
{
  const ZxDims& dims = m_module->sliceData().getDims();
  const int x = dims.width / 2 - centre.x;
  const int y = dims.height / 2 - centre.y;
  m_module->getSlice(m_module->getEditableSlice()).setXForm(SliceXForm(0.0f, 0.0f, 0.0f, fit.flip));
  m_module->translateAll(static_cast<float>(fit.flip ? -x : x), static_cast<float>(y));
  // About the middle of the image, where the object's centre lies by now.
  m_module->rotateAll(static_cast<float>(fit.angle + static_cast<double>(reference().rotation)), 0.0f, 0.0f);
}

const SliceXForm& ZxEdgeDetectionAlignMethod::reference() const
{
  return m_module->getSlice(m_module->getReferenceSlice());
}

const SliceXForm& ZxEdgeDetectionAlignMethod::editable() const
{
  return m_module->getSlice(m_module->getEditableSlice());
}
