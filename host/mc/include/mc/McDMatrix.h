#pragma once

#include "mc/McDArray.h"

/// Dense matrix of rows x columns values, row-major.
template <class T>
class McDMatrix {
public:
  McDMatrix() = default;
  McDMatrix(int rows, int columns) { resize(rows, columns); }

  /// All values become 0.
  void resize(int rows, int columns)
  {
    m_rows = rows;
    m_columns = columns;
    m_values.clear();
    m_values.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
  }
  int nRows() const noexcept { return m_rows; }
  int nCols() const noexcept { return m_columns; }

  T* operator[](int row) noexcept { return m_values.data() + offset(row); }
  const T* operator[](int row) const noexcept { return m_values.data() + offset(row); }

  McDMatrix transposed() const
  {
    McDMatrix t(m_columns, m_rows);
    for (int r = 0; r < m_rows; ++r)
      for (int c = 0; c < m_columns; ++c) t[c][r] = (*this)[r][c];
    return t;
  }

  /// Singular value decomposition A = u * diag(w) * v^T of this rows x columns matrix, rows >= columns, by
  /// the method of Golub and Reinsch (Numer. Math. 14, 1970, 403-420).
  ///
  /// u becomes rows x columns with orthonormal columns, v columns x columns; w receives the columns()
  /// singular values, which are not negative and not sorted. Returns false after a line on standard output
  /// when one of them has not converged after maxIterations sweeps; the factors are then partial.
  bool SVD(McDMatrix& u, T* w, McDMatrix& v, int maxIterations) const;

private:
  std::size_t offset(int row) const noexcept
  {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns);
  }

  int m_rows = 0;
  int m_columns = 0;
  McDArray<T> m_values;
};

/// The matrix product a * b. When the shapes do not fit it says so on standard error and returns an empty
/// matrix.
McDMatrix<float> operator*(const McDMatrix<float>& a, const McDMatrix<float>& b);
