#include "mc/McDMatrix.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

namespace {

// Plane rotation that turns (a, b) into (length, 0).
struct Rotation {
  double cosine, sine, length;
};

Rotation rotationOf(double a, double b)
{
  const double length = std::hypot(a, b);
  if (length == 0.0) return {1.0, 0.0, 0.0};
  return {a / length, b / length, length};
}

// Turns columns i and j of a matrix in their plane.
void rotateColumns(McDMatrix<double>& matrix, int i, int j, double cosine, double sine)
{
  for (int row = 0; row < matrix.nRows(); ++row) {
    const double a = matrix[row][i];
    const double b = matrix[row][j];
    matrix[row][i] = a * cosine + b * sine;
    matrix[row][j] = b * cosine - a * sine;
  }
}

// Length with which a Householder reflection replaces a vector whose squares sum to squares and whose first
// element is first; of the other sign, so that nothing cancels. A vector that is as good as zero gives 0.
double reflectedLength(double squares, double first)
{
  if (squares < std::numeric_limits<double>::min() / std::numeric_limits<double>::epsilon()) return 0.0;
  return first < 0.0 ? std::sqrt(squares) : -std::sqrt(squares);
}

// The decomposition in double; m_u starts as the matrix and holds the reflections until they are accumulated.
// m_w is the diagonal and m_e the superdiagonal of the bidiagonal form: m_e[i] stands above m_w[i].
class GolubReinsch {
public:
  GolubReinsch(const McDMatrix<double>& matrix)
    : m_rows(matrix.nRows()), m_columns(matrix.nCols()), m_u(matrix), m_v(m_columns, m_columns),
      m_w(static_cast<std::size_t>(m_columns)), m_e(static_cast<std::size_t>(m_columns))
  {
  }

  bool decompose(int maxIterations)
  {
    for (int i = 0; i < m_columns; ++i) {
      reflectColumn(i);
      if (i + 1 < m_columns) reflectRow(i);
    }
    for (int i = m_columns - 1; i >= 0; --i) accumulateRight(i);
    for (int i = m_columns - 1; i >= 0; --i) accumulateLeft(i);
    double norm = 0.0;
    for (int i = 0; i < m_columns; ++i) norm = std::max(norm, std::abs(w(i)) + std::abs(e(i)));
    m_negligible = norm * std::numeric_limits<double>::epsilon();
    for (int k = m_columns - 1; k >= 0; --k)
      if (!converge(k, maxIterations)) return false;
    return true;
  }

  const McDMatrix<double>& u() const { return m_u; }
  const McDMatrix<double>& v() const { return m_v; }
  double singularValue(int i) const { return m_w[static_cast<std::size_t>(i)]; }

private:
  double& w(int i) { return m_w[static_cast<std::size_t>(i)]; }
  double& e(int i) { return m_e[static_cast<std::size_t>(i)]; }

  // Makes column i zero below the diagonal.
  void reflectColumn(int i)
  {
    double squares = 0.0;
    for (int row = i; row < m_rows; ++row) squares += m_u[row][i] * m_u[row][i];
    const double length = reflectedLength(squares, m_u[i][i]);
    w(i) = length;
    if (length == 0.0) return;
    const double scale = m_u[i][i] * length - squares;
    m_u[i][i] -= length;
    for (int column = i + 1; column < m_columns; ++column) {
      double product = 0.0;
      for (int row = i; row < m_rows; ++row) product += m_u[row][i] * m_u[row][column];
      for (int row = i; row < m_rows; ++row) m_u[row][column] += product / scale * m_u[row][i];
    }
  }

  // Makes row i zero right of the superdiagonal.
  void reflectRow(int i)
  {
    double squares = 0.0;
    for (int column = i + 1; column < m_columns; ++column) squares += m_u[i][column] * m_u[i][column];
    const double length = reflectedLength(squares, m_u[i][i + 1]);
    e(i + 1) = length;
    if (length == 0.0) return;
    const double scale = m_u[i][i + 1] * length - squares;
    m_u[i][i + 1] -= length;
    for (int row = i + 1; row < m_rows; ++row) {
      double product = 0.0;
      for (int column = i + 1; column < m_columns; ++column) product += m_u[row][column] * m_u[i][column];
      for (int column = i + 1; column < m_columns; ++column)
        m_u[row][column] += product / scale * m_u[i][column];
    }
  }

  // Applies the reflection of row i to the part of v that is complete, columns i + 1 and up.
  void accumulateRight(int i)
  {
    m_v[i][i] = 1.0;
    if (i + 1 == m_columns || e(i + 1) == 0.0) return;
    const double scale = m_u[i][i + 1] * e(i + 1);
    for (int column = i + 1; column < m_columns; ++column) {
      double product = 0.0;
      for (int k = i + 1; k < m_columns; ++k) product += m_u[i][k] * m_v[k][column];
      for (int k = i + 1; k < m_columns; ++k) m_v[k][column] += product / scale * m_u[i][k];
    }
  }

  // Replaces the reflection of column i by the columns of u from i on.
  void accumulateLeft(int i)
  {
    for (int column = i + 1; column < m_columns; ++column) m_u[i][column] = 0.0;
    if (w(i) == 0.0) {
      for (int row = i; row < m_rows; ++row) m_u[row][i] = 0.0;
    } else {
      const double scale = m_u[i][i] * w(i);
      for (int column = i + 1; column < m_columns; ++column) {
        double product = 0.0;
        for (int row = i + 1; row < m_rows; ++row) product += m_u[row][i] * m_u[row][column];
        for (int row = i; row < m_rows; ++row) m_u[row][column] += product / scale * m_u[row][i];
      }
      for (int row = i; row < m_rows; ++row) m_u[row][i] /= w(i);
    }
    m_u[i][i] += 1.0;
  }

  // Sweeps until the superdiagonal element of the k-th singular value is negligible.
  bool converge(int k, int maxIterations)
  {
    for (int iteration = 0;; ++iteration) {
      const int first = split(k);
      if (first == k) break;
      if (iteration >= maxIterations) return false;
      sweep(first, k);
    }
    if (w(k) < 0.0) {
      w(k) = -w(k);
      for (int row = 0; row < m_columns; ++row) m_v[row][k] = -m_v[row][k];
    }
    return true;
  }

  // Start of the block that ends at k and has no negligible superdiagonal element.
  int split(int k)
  {
    for (int first = k; first > 0; --first) {
      if (std::abs(e(first)) <= m_negligible) return first;
      if (std::abs(w(first - 1)) <= m_negligible) {
        cancel(first, k);
        return first;
      }
    }
    return 0;
  }

  // Above a negligible diagonal element: turns the superdiagonal element e(first) away, along the row.
  void cancel(int first, int k)
  {
    double f = e(first);
    e(first) = 0.0;
    for (int i = first; i <= k && std::abs(f) > m_negligible; ++i) {
      const Rotation r = rotationOf(w(i), f);
      w(i) = r.length;
      rotateColumns(m_u, first - 1, i, r.cosine, -r.sine);
      if (i == k) break;
      f = -r.sine * e(i + 1);
      e(i + 1) *= r.cosine;
    }
  }

  // First element of the shifted block: the shift is the eigenvalue of its last 2 x 2 minor.
  double shifted(int first, int k)
  {
    const double x = w(first);
    const double y = w(k - 1);
    const double z = w(k);
    const double g = e(k - 1);
    const double h = e(k);
    const double f = ((y - z) * (y + z) + (g - h) * (g + h)) / (2.0 * h * y);
    const double length = std::hypot(f, 1.0);
    return ((x - z) * (x + z) + h * (y / (f < 0.0 ? f - length : f + length) - h)) / x;
  }

  // One implicitly shifted QR sweep over the block first ... k.
  void sweep(int first, int k)
  {
    double f = shifted(first, k);
    double x = w(first);
    Rotation r{1.0, 1.0, 0.0};
    for (int i = first + 1; i <= k; ++i) {
      double g = r.cosine * e(i);
      r = rotationOf(f, r.sine * e(i));
      e(i - 1) = r.length;
      f = x * r.cosine + g * r.sine;
      g = g * r.cosine - x * r.sine;
      rotateColumns(m_v, i - 1, i, r.cosine, r.sine);
      const double y = w(i) * r.cosine;
      r = rotationOf(f, w(i) * r.sine);
      w(i - 1) = r.length;
      f = r.cosine * g + r.sine * y;
      x = r.cosine * y - r.sine * g;
      rotateColumns(m_u, i - 1, i, r.cosine, r.sine);
    }
    e(first) = 0.0;
    e(k) = f;
    w(k) = x;
  }

  int m_rows;
  int m_columns;
  McDMatrix<double> m_u;
  McDMatrix<double> m_v;
  std::vector<double> m_w;
  std::vector<double> m_e;
  double m_negligible = 0.0;
};

// Copies the first rows of `from` that `to` has.
template <class From, class To>
void copyValues(const McDMatrix<From>& from, McDMatrix<To>& to, int rows)
{
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < from.nCols(); ++column)
      to[row][column] = static_cast<To>(from[row][column]);
}

} // namespace

template <class T>
bool McDMatrix<T>::SVD(McDMatrix& u, T* w, McDMatrix& v, int maxIterations) const
{
  // Rows of zeros below a matrix that is wider than high change nothing and keep the reduction within it.
  McDMatrix<double> work(std::max(m_rows, m_columns), m_columns);
  copyValues(*this, work, m_rows);
  const int rows = m_rows;
  const int columns = m_columns; // u or v may be this matrix
  GolubReinsch factors(work);
  const bool converged = factors.decompose(maxIterations);
  u.resize(rows, columns);
  v.resize(columns, columns);
  copyValues(factors.u(), u, rows);
  copyValues(factors.v(), v, columns);
  for (int i = 0; i < columns; ++i) w[i] = static_cast<T>(factors.singularValue(i));
  if (!converged) std::printf("no convergence in %d svd iterations \n", maxIterations);
  return converged;
}

template bool McDMatrix<float>::SVD(McDMatrix<float>&, float*, McDMatrix<float>&, int) const;

McDMatrix<float> operator*(const McDMatrix<float>& a, const McDMatrix<float>& b)
{
  if (a.nCols() != b.nRows()) {
    std::fprintf(stderr, "McDMatrix:operator*: Can not multiply %dx%d matrix by %dx%d matrix.\n", a.nRows(),
                 a.nCols(), b.nRows(), b.nCols());
    return {};
  }
  McDMatrix<float> product(a.nRows(), b.nCols());
  for (int row = 0; row < a.nRows(); ++row)
    for (int column = 0; column < b.nCols(); ++column) {
      double sum = 0.0;
      for (int k = 0; k < a.nCols(); ++k) sum += static_cast<double>(a[row][k]) * b[k][column];
      product[row][column] = static_cast<float>(sum);
    }
  return product;
}
