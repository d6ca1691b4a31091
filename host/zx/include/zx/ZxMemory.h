#pragma once

#include <cstdint>

/// Bytes that can be allocated now: the free physical memory and what the process's own address-space limit
/// leaves, whichever is less.
std::uint64_t zxAvailableMemory();
