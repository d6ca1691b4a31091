#pragma once

#include "support/Patience.h"

#include <QTest>

/// Handles events until the condition holds. False when it never did.
template <class Condition>
[[nodiscard]] bool waitFor(const Condition& condition)
{
  return QTest::qWaitFor(condition, patienceMilliseconds);
}

[[nodiscard]] inline bool waitForExposed(QWidget* window)
{
  return QTest::qWaitForWindowExposed(window, patienceMilliseconds);
}

[[nodiscard]] inline bool waitForActive(QWidget* window)
{
  return QTest::qWaitForWindowActive(window, patienceMilliseconds);
}
