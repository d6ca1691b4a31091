#include "mc/McTypedElement.h"

#include <cmath>

double McTypedElement::length() const noexcept
{
  return mcVisit(m_type, [this](auto zero) {
    const auto* v = static_cast<const decltype(zero)*>(m_values);
    if (m_numValues == 1) return std::abs(static_cast<double>(v[0]));
    double squares = 0.0;
    for (int i = 0; i < m_numValues; ++i) squares += static_cast<double>(v[i]) * static_cast<double>(v[i]);
    return std::sqrt(squares);
  });
}
