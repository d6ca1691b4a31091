#include "mc/McDMatrix.h"

#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using Matrix = McDMatrix<float>;

Matrix matrixOf(int rows, int columns, const std::vector<float>& values)
{
  Matrix m(rows, columns);
  std::copy(values.begin(), values.end(), m[0]);
  return m;
}

struct Factors {
  explicit Factors(const Matrix& a) : w(static_cast<std::size_t>(a.nCols()))
  {
    converged = a.SVD(u, w.data(), v, 30);
  }
  Matrix u, v;
  std::vector<float> w;
  bool converged = false;
};

// The columns are orthonormal.
void expectOrthonormal(const Matrix& m)
{
  const Matrix product = m.transposed() * m;
  for (int r = 0; r < product.nRows(); ++r)
    for (int c = 0; c < product.nCols(); ++c) EXPECT_NEAR(product[r][c], r == c ? 1.0f : 0.0f, 2e-6f);
}

// a = u * diag(w) * v^T; the columns of u that belong to singular values of 0 are not asked to be
// orthonormal.
void expectFactors(const Matrix& a, const Factors& f, float size)
{
  ASSERT_TRUE(f.converged);
  expectOrthonormal(f.v);
  for (int r = 0; r < a.nRows(); ++r)
    for (int c = 0; c < a.nCols(); ++c) {
      double sum = 0.0;
      for (int k = 0; k < a.nCols(); ++k) sum += f.u[r][k] * f.w[static_cast<std::size_t>(k)] * f.v[c][k];
      EXPECT_NEAR(sum, a[r][c], 4e-6f * size);
    }
  for (const float w : f.w) EXPECT_GE(w, 0.0f);
}

} // namespace

TEST(McDMatrix, DecomposesMatricesOfAllShapes)
{
  Random random(61);
  for (const auto& [rows, columns] : {std::pair{1, 1}, {2, 2}, {3, 2}, {9, 2}, {5, 5}, {12, 7}})
    for (const float size : {1.0f, 1e-12f, 1e12f}) {
      std::vector<float> values(static_cast<std::size_t>(rows * columns));
      for (float& v : values) v = static_cast<float>(random.real(-1.0, 1.0)) * size;
      const Matrix a = matrixOf(rows, columns, values);
      const Factors f(a);
      expectFactors(a, f, size);
      expectOrthonormal(f.u);
    }
}

// Rank 1 and 0, zeros on the diagonal, and a bidiagonal form with a zero in its middle.
TEST(McDMatrix, DecomposesSingularMatrices)
{
  for (const Matrix& a :
       {matrixOf(2, 2, {1, 2, 2, 4}), matrixOf(2, 2, {0, 1, 0, 0}), matrixOf(2, 2, {0, 0, 0, 0}),
        matrixOf(3, 2, {1, -1, 2, -2, 3, -3}), matrixOf(3, 3, {1, 1, 0, 0, 0, 1, 0, 0, 1}),
        matrixOf(4, 4, {2, 1, 0, 0, 0, 0, 3, 0, 0, 0, 1, 4, 0, 0, 0, 5})})
    expectFactors(a, Factors(a), 4.0f);
}

TEST(McDMatrix, FindsTheSingularValuesOfAShear)
{
  const Factors f(matrixOf(2, 2, {1, 1, 0, 1}));
  const float golden = 1.6180340f;
  EXPECT_NEAR(std::max(f.w[0], f.w[1]), golden, 1e-6f);
  EXPECT_NEAR(std::min(f.w[0], f.w[1]), 1.0f / golden, 1e-6f);
}

TEST(McDMatrix, SaysWhenItDoesNotConverge)
{
  Matrix u, v;
  float w[2] = {-1.0f, -1.0f};
  testing::internal::CaptureStdout();
  EXPECT_FALSE(matrixOf(2, 2, {1, 1, 0, 1}).SVD(u, w, v, 0));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "no convergence in 0 svd iterations \n");
  EXPECT_EQ(u.nRows(), 2);
  EXPECT_EQ(v.nCols(), 2);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(matrixOf(2, 2, {std::nanf(""), 1, 0, 1}).SVD(u, w, v, 30));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "no convergence in 30 svd iterations \n");
}

TEST(McDMatrix, MultipliesRowsByColumns)
{
  const Matrix product = matrixOf(2, 3, {1, 2, 3, 4, 5, 6}) * matrixOf(3, 1, {1, 10, 100});
  ASSERT_EQ(product.nRows(), 2);
  ASSERT_EQ(product.nCols(), 1);
  EXPECT_EQ(product[0][0], 321.0f);
  EXPECT_EQ(product[1][0], 654.0f);
}

TEST(McDMatrix, RefusesToMultiplyUnfittingShapes)
{
  testing::internal::CaptureStderr();
  const Matrix product = Matrix(2, 3) * Matrix(2, 4);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "McDMatrix:operator*: Can not multiply 2x3 matrix by 2x4 matrix.\n");
  EXPECT_EQ(product.nRows(), 0);
}
