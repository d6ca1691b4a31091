#pragma once

namespace bench {

/// Prints what the search for the motion between two slices takes at its peak, beyond the slices themselves,
/// for slices of 512, 2048 and 8192 pixels a side, as a table of Markdown. Reads what the kernel says of the
/// process.
void printMemory();

} // namespace bench
