#include "RigidFit.h"

#include "mc/McDMatrix.h"
#include "mc/McMath.h"
#include "mc/McRound.h"

#include <algorithm>
#include <cstdint>

namespace {

QPoint centroid(const McDArray<QPoint>& points)
{
  std::int64_t x = 0, y = 0;
  for (const QPoint& p : points) {
    x += p.x();
    y += p.y();
  }
  const auto n = static_cast<double>(points.size());
  return {mc::roundHalfUp(static_cast<double>(x) / n), mc::roundHalfUp(static_cast<double>(y) / n)};
}

McDMatrix<float> centred(const McDArray<QPoint>& points, std::size_t n, QPoint centre)
{
  McDMatrix<float> m(static_cast<int>(n), 2);
  for (std::size_t i = 0; i < n; ++i) {
    m[static_cast<int>(i)][0] = static_cast<float>(points[i].x() - centre.x());
    m[static_cast<int>(i)][1] = static_cast<float>(points[i].y() - centre.y());
  }
  return m;
}

float direction(const float* v) { return static_cast<float>(mc::atan2(v[1], v[0])); }

/// The toolkit's matrix of a rotation by an angle in degrees.
QTransform rotation(double degrees)
{
  double sine = 0, cosine = 0;
  mc::sinCosDegrees(degrees, sine, cosine);
  return {cosine, sine, -sine, cosine, 0.0, 0.0};
}

float determinantOf(const McDMatrix<float>& m) { return m[0][0] * m[1][1] - m[0][1] * m[1][0]; }

void negateColumn(McDMatrix<float>& m, int column)
{
  for (int row = 0; row < 2; ++row) m[row][column] = -m[row][column];
}

/// The rotation R = V * U^T that turns the rows of p onto those of q in the sense of least squares.
McDMatrix<float> leastSquaresRotation(const McDMatrix<float>& p, const McDMatrix<float>& q)
{
  const McDMatrix<float> h = p.transposed() * q;
  const float determinant = determinantOf(h);
  McDMatrix<float> u, v;
  float w[2] = {0.0f, 0.0f};
  h.SVD(u, w, v, 30); // Without convergence the partial factors are used.
  if (determinant < 0.0f) negateColumn(u, 1);
  // Points on a line leave the determinant 0, and the side that no point lies on may come out mirrored.
  if (determinantOf(u) * determinantOf(v) < 0.0f) negateColumn(u, w[0] < w[1] ? 0 : 1);
  return v * u.transposed();
}

} // namespace

QTransform fitRigidMotion(const McDArray<QPoint>& a, const McDArray<QPoint>& b)
{
  const std::size_t n = std::min(a.size(), b.size());
  if (n < 2) return {};
  const QPoint ca = centroid(a);
  const QPoint cb = centroid(b);
  const McDMatrix<float> p = centred(a, n, ca);
  const McDMatrix<float> q = centred(b, n, cb);
  if (n == 2) return rotation(static_cast<double>(direction(p[0]) - direction(q[0])) * (-180.0) / mc::kPi);
  const McDMatrix<float> r = leastSquaresRotation(p, q);
  return {r[0][0],
          r[1][0],
          r[0][1],
          r[1][1],
          static_cast<double>(ca.x() - cb.x()),
          static_cast<double>(ca.y() - cb.y())};
}
