#pragma once

#include <chrono>

/// How long a test waits for what has to come: longer than it takes on a busy machine under a sanitizer. Only
/// a test that fails waits as long.
constexpr std::chrono::milliseconds patience = std::chrono::minutes(2);

/// The same for functions that take milliseconds.
constexpr int patienceMilliseconds = static_cast<int>(patience.count());
