#pragma once

#include <string>
#include <vector>

/// A grey slice of 8 bits, row-major.
struct TestSlice {
  int width = 0;
  int height = 0;
  std::vector<unsigned char> pixels;
};

/// A picture of the test data in grey; empty when it is not there.
TestSlice readSlice(const std::string& name);

/// Smooth blobs at random places: like tissue the same in no two places and no two directions.
TestSlice madeSlice(int width, int height, unsigned seed);

/// The slice that shows at v what the given one shows at u = R v + (dx, dy), both counted from the centre
/// (width / 2, height / 2): R v = (v.x cos a + v.y sin a, -v.x sin a + v.y cos a). background fills the rest.
TestSlice movedSlice(const TestSlice& slice, double degrees, double dx, double dy, double background);

/// How far an angle is from another one on the circle, in degrees.
double angleBetween(double a, double b);
