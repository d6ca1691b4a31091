#pragma once

#include <optional>
#include <string>

namespace io {

/// Length of a unit in metres, by the names that file formats give it ("um", "micron", "nm", "Angstrom" ...);
/// nothing for a name that is none of them.
std::optional<double> metresOf(const std::string& unit);

/// A number as the shortest text that gives it back exactly.
std::string exactText(double value);

/// The voxel size that a file's number stands for: its absolute value, or 1 when it is 0 or not finite.
double voxelSizeOf(double number) noexcept;
/// The number, or 0 when it is not finite.
double finiteOrZero(double number) noexcept;

} // namespace io
