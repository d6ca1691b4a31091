#pragma once

#include "ModuleTest.h"
#include "mc/McRound.h"
#include "zxalign/ZxAutoAlignMethod.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <cmath>
#include <functional>
#include <memory>

/// A module over a stack whose slices show one world through known transforms, so that the result of a method
/// can be compared with the truth.
class MethodTest : public ModuleTest {
protected:
  /// A grey value 0 to 255 at a place of the world.
  using World = std::function<double(double x, double y)>;

  void connectWorld(int width, int height, const World& world, std::vector<SliceXForm> slices,
                    int channels = 1)
  {
    truth = std::move(slices);
    size = {width, height, static_cast<int>(truth.size())};
    field = makeField<std::uint8_t>(size, channels, [&](int x, int y, int k, int c) {
      // The average of 3 x 3 places, so that moments and outlines are those of the world, not of the raster.
      double sum = 0;
      for (int i = 0; i < 9; ++i) {
        const McVec2f at{static_cast<float>(x + (i % 3 - 1) / 3.0),
                         static_cast<float>(y + (i / 3 - 1) / 3.0)};
        const McVec2f place = map(truthOf(k), at);
        sum += world(place.x, place.y);
      }
      return c == 3 ? 17 + k : mc::roundHalfUp(sum / 9);
    });
    connect(module->portData, field);
  }

  void selectPair(int editable, int reference)
  {
    module->setEditableSide(editable - reference);
    module->setReferenceSlice(reference);
    module->setSlice(editable);
  }

  /// What the method itself returns.
  int align(int id)
  {
    const std::unique_ptr<ZxAutoAlignMethod> method(
        ZxAutoAlignMethodFabrique::getInstance()->createAutoAlignMethod(module.get(), id));
    return method->doLayout();
  }

  /// The largest distance in pixels, within `reach` of a place of the world, between where two slices show
  /// the same of it: 0 when they are in register.
  double distance(int a, int b, McVec2f place, float reach)
  {
    double largest = 0;
    for (const McVec2f offset : {McVec2f{0, 0}, {reach, 0}, {0, reach}, {-reach, 0}}) {
      const McVec2f inA = shown(a, place + offset), inB = shown(b, place + offset);
      largest = std::max(largest,
                         std::hypot(static_cast<double>(inA.x - inB.x), static_cast<double>(inA.y - inB.y)));
    }
    return largest;
  }

  /// The angle in degrees between the directions in which two slices show the same direction of the world.
  double turnShown(int a, int b, McVec2f place)
  {
    const auto direction = [&](int k) {
      const McVec2f d = shown(k, place + McVec2f{40, 0}) - shown(k, place);
      return std::atan2(static_cast<double>(d.y), static_cast<double>(d.x)) * 180.0 / 3.14159265358979323846;
    };
    return std::remainder(direction(b) - direction(a), 360.0);
  }

  const SliceXForm& truthOf(int k) const { return truth[static_cast<std::size_t>(k)]; }
  McVec2f map(const SliceXForm& x, McVec2f p) const { return x.map(p, centreX(), centreY()); }
  McVec2f inSlice(int k, McVec2f place) const { return truthOf(k).mapInverse(place, centreX(), centreY()); }
  McVec2f shown(int k, McVec2f place) { return map(module->getSlice(k), inSlice(k, place)); }
  float centreX() const { return static_cast<float>(size.width / 2); }
  float centreY() const { return static_cast<float>(size.height / 2); }

  ZxDims size;
  std::vector<SliceXForm> truth; ///< slice to world
  McHandle<ZxField3> field;
};
