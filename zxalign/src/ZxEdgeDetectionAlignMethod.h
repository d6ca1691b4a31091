#pragma once

#include "RadialProfile.h"
#include "zxalign/SliceXForm.h"
#include "zxalign/ZxAutoAlignMethod.h"

class ZxParamBundle;

/// For slices that each show one object on a plain background: turns the editable slice until the outline of
/// its object fits that of the reference slice, and moves its object's centre into the middle of the image.
///
/// The outline is a radial profile: the radius along rays from the object's centre. Profiles are kept in the
/// parameters of the input, bundle "Objectrotation", so that the next pair finds its reference there; one of
/// another length is measured anew. Transforms stored in the parameters are dropped by every run,
/// deliberately: they would no longer belong to what the run leaves behind. The input then counts as changed.
class ZxEdgeDetectionAlignMethod : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  static constexpr const char* methodName = "EdgeDetectionAlignMethod";
  static const char* getMethodName() { return methodName; }
  static ZxAutoAlignMethod* createMethod(ZxAlignSlices* module)
  {
    return new ZxEdgeDetectionAlignMethod(module);
  }

  /// Leaves the alignment as it is and returns 0, after a message, when a step is 0 or the parameters of the
  /// input do not take the profiles.
  int doLayout() override;

private:
  /// The turn (degrees, before the reference slice's own rotation) and the flip that fit the outlines.
  struct Fit {
    double angle = 0.0;
    bool flip = false; ///< of the editable slice afterwards
  };

  bool hasUsableSteps() const;
  int sample(const unsigned char* editable, const unsigned char* reference);
  /// The bundle that keeps the profiles, after the stored transforms are dropped; null when it cannot be had.
  ZxParamBundle* prepareParameters();
  kernels::ObjectImage image(const unsigned char* pixels) const;
  int threshold(const kernels::ObjectImage& editable) const;
  kernels::PixelPosition calcCenter(const kernels::ObjectImage& image, int slice) const;
  bool readProfile(const ZxParamBundle& profiles, RadialProfile& profile) const;
  void writeProfile(ZxParamBundle& profiles, const RadialProfile& profile) const;
  Fit fit(const RadialProfile& reference, const RadialProfile& editable) const;
  void apply(const Fit& fit, kernels::PixelPosition centre);

  const SliceXForm& reference() const;
  const SliceXForm& editable() const;

  kernels::ObjectTest m_test;
};
