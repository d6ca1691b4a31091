#pragma once

#include "mc/McDArray.h"
#include "zxalign/ZxAlignmentEvaluator.h"

/// The evaluator over 8-bit images without interpolation, with reduced images of one level at a time.
class ZxDefaultAlignmentEvaluator : public ZxAlignmentEvaluator {
public:
  void setImageStackParams(int width, int height, int channels) override;
  void setImage0(unsigned char* image) override;
  void setImage1(unsigned char* image) override;
  void setMask0(unsigned char* mask) override { m_mask0 = mask; }
  void setMask1(unsigned char* mask) override { m_mask1 = mask; }
  float quality(SliceXForm xform0, SliceXForm xform1, int level) override;
  void releaseSubsampled() override;
  /// Size of one image alone, for images of different sizes.
  virtual void setDimensions0(int width, int height);
  virtual void setDimensions1(int width, int height);

  /// Makes the images reduced by 2^level in each direction the current ones; level 1 or more.
  void createSubsampledImages(int level);
  /// The measure on given images and sizes. The masks of this evaluator apply.
  float computeQuality(unsigned char* image0, unsigned char* image1, int width0, int height0, int width1,
                       int height1, const SliceXForm& xform0, const SliceXForm& xform1) const;

private:
  struct Size {
    int width = 0;
    int height = 0;
  };

  void reduce(unsigned char* image, Size size, int factor, McDArray<unsigned char>& reduced) const;

  Size m_size0, m_size1;
  int m_channels = 1;
  unsigned char* m_image0 = nullptr;
  unsigned char* m_image1 = nullptr;
  unsigned char* m_mask0 = nullptr;
  unsigned char* m_mask1 = nullptr;
  int m_level = 0; ///< of the reduced images; 0 for none
  McDArray<unsigned char> m_reduced0, m_reduced1;
  Size m_reducedSize0, m_reducedSize1;
};
